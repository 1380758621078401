#include "exchange/registered_files.h"

#include "app/base/titles.h"
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
    const QDir folder(session.inCurrentFolder(titles::FileFolder));
    if (!folder.exists())
        return;
    const QStringList entries = folder.entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::NoSort);
    for (const QString& name : entries) {
        if (!name.startsWith(u".quillon-"_s)) // copies that are on their way
            m_names << name;
    }
    std::sort(m_names.begin(), m_names.end());
    required(session.RsRefFile)
        .forEachRow({data_field::Name, data_field::Explanation}, [&](const RecordSet::Row& row) {
            m_named.insert(row.text(0).toString());
            m_named.insert(row.text(1).toString());
        });
}

} // namespace quillon::exchange
