#include "exchange/coming_files.h"

#include "app/base/platform/files.h"
#include "app/base/ports/files.h"
#include "app/base/titles.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "store/session.h"

#include <QDir>

#include <algorithm>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

OwnFiles::OwnFiles(Session& session, ComingFiles coming, Tell tell)
    : m_session(session), m_coming(std::move(coming)), m_tell(std::move(tell)),
      m_folder(session.inCurrentFolder(titles::FileFolder))
{
    if (m_coming.present == ComingFiles::Present::MayBeTheirs)
        readRegistered();
}

void OwnFiles::readRegistered()
{
    required(m_session.RsRefFile)
        .forEachRow({data_field::Name, data_field::Explanation}, [&](const RecordSet::Row& row) {
            for (const int field : {0, 1})
                m_registered << platform::nameKey(row.text(field).toString());
        });
}

bool OwnFiles::isTheirs(const QString& name) const
{
    switch (m_coming.present) {
    case ComingFiles::Present::Strange:
        return false;
    case ComingFiles::Present::MayBeTheirs:
        return !m_registered.contains(platform::nameKey(name));
    case ComingFiles::Present::Theirs:
        break;
    }
    return true;
}

void OwnFiles::keepApart(StoredRow& row, const QString& where)
{
    // As they are looked for when the file is opened.
    for (const int field : {data_field::Explanation, data_field::Name}) {
        std::optional<QString>& text = row[static_cast<std::size_t>(field)];
        if (!text || text->isEmpty())
            continue;
        if (m_coming.names.contains(platform::nameKey(*text)))
            return;
        if (!m_session.files.storedFile(m_folder, *text))
            continue;
        if (isTheirs(*text)) {
            if (m_coming.present == ComingFiles::Present::MayBeTheirs)
                m_tell(where, u"フォルダにあるファイル「%1」を、このデータのファイルとします。"_s.arg(*text));
            return;
        }
        const QString name = freeName(*text);
        m_tell(where, u"同じ名前の別のファイルがあるため、ファイルの名前「%1」を「%2」としました。"_s.arg(
                          *text, name));
        text = name;
    }
    ++m_lacking;
}

QString OwnFiles::freeName(const QString& name)
{
    QString& renamed = m_renamed[platform::nameKey(name)];
    for (int number = 2; renamed.isEmpty(); ++number) {
        const QString candidate = numberedName(name, number);
        if (!m_coming.names.contains(platform::nameKey(candidate)) &&
            !m_session.files.entryExists(m_folder + QDir::separator() + candidate))
            renamed = candidate;
    }
    return renamed;
}

QString numberedName(const QString& name, int number)
{
    const auto width = schema::RefFile().fields[data_field::Name].width;
    const qsizetype dot = name.lastIndexOf(u'.');
    const qsizetype stem = dot > 0 ? dot : name.size();
    const QString ending = u" (%1)"_s.arg(number) + name.sliced(stem);
    qsizetype kept = std::clamp(width - ending.size(), qsizetype(1), stem);
    if (kept < stem && name[kept].isLowSurrogate())
        --kept;
    return name.first(kept) + ending;
}

} // namespace quillon::exchange
