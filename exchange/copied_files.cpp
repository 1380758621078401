#include "exchange/copied_files.h"

#include "app/base/platform/files.h"
#include "app/base/ports/files.h"
#include "app/base/titles.h"
#include "exchange/output.h"
#include "exchange/progress.h"
#include "exchange/refused.h"
#include "store/session.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

std::optional<QString> CopiedFiles::copy(const AllData::Datum& datum, const QString& text, Progress* progress)
{
    const QString folder = m_session.inCurrentFolder(titles::FileFolder);
    // As they are looked for when the file is opened.
    for (const QString& name : {text, datum.name}) {
        const QString key = platform::nameKey(name);
        // As it lies there: the export may be read where case tells files apart.
        if (const auto copied = m_copied.constFind(key); copied != m_copied.cend())
            return *copied;
        const auto path = m_session.files.storedFile(folder, name);
        if (!path)
            continue;
        if (m_copied.isEmpty())
            m_output.makeFolder(titles::FileFolder);
        const auto goesOn = [&](qint64, qint64) { return progress == nullptr || !progress->cancelled(); };
        const auto copy = m_session.files.stageCopy(*path, m_output.inside(titles::FileFolder), name, goesOn);
        if (!copy)
            throw Cancelled();
        copy->place({});
        copy->keep();
        m_copied.insert(key, name);
        ++m_report.files;
        return name;
    }
    m_report.notes.push_back(
        {.where = datum.identifier, .text = u"登録されたファイル「%1」がありません。"_s.arg(datum.name)});
    return std::nullopt;
}

} // namespace quillon::exchange
