#include "exchange/registered_files.h"

#include "app/base/platform/files.h"
#include "app/base/ports/files.h"
#include "app/base/titles.h"
#include "exchange/refused.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "store/session.h"

#include <QDir>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

RegisteredFiles::RegisteredFiles(Session& session)
{
    const QString path = session.inCurrentFolder(titles::FileFolder);
    const RecordSet& rows = required(session.RsRefFile);
    if (!session.files.folderExists(path)) {
        if (rows.hasRows())
            throw Refused(
                u"ファイルデータがありますが、フォルダ「%1」がありません。フォルダの場所を確かめてください。"
                u"ファイルなしで書き出すには、空のフォルダを作成してください。"_s.arg(
                    QDir::toNativeSeparators(path)));
        return;
    }
    const QStringList entries = platform::namesOfFiles(path);
    for (const QString& name : entries) {
        if (!name.startsWith(u".quillon-"_s)) // copies that are on their way
            m_names << name;
    }
    std::sort(m_names.begin(), m_names.end());
    rows.forEachRow({data_field::Name, data_field::Object_ID, data_field::Explanation},
                    [&](const RecordSet::Row& row) {
                        const QString name = row.text(0).toString();
                        const QString other = row.text(2).toString();
                        m_named << platform::nameKey(name) << platform::nameKey(other);
                        if (!session.files.storedFile(path, other) && !session.files.storedFile(path, name))
                            m_lacking.push_back({.identifier = row.text(1).toString(), .name = name});
                    });
}

bool RegisteredFiles::isNamed(const QString& name) const
{
    return m_named.contains(platform::nameKey(name));
}

} // namespace quillon::exchange
