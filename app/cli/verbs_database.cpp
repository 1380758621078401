#include "app/cli/columns.h"
#include "app/cli/run.h"
#include "app/cli/verb_functions.h"
#include "store/creation.h"
#include "store/data_kinds.h"
#include "store/keeper.h"
#include "store/record_set.h"

#include <array>

using namespace Qt::Literals::StringLiterals;

namespace quillon::cli
{

Status create(Run& run)
{
    const auto refuse = [](const Error& error) {
        // What stands there already may be of use; anything else cannot.
        const bool isThere = error.number == errors::DatabaseExists;
        throw Refusal{isThere ? Status::Refused : Status::NoDatabase, error.description};
    };
    guardedBy(refuse, [&] { createDatabaseFile(run.database); });
    if (run.session.keeper != nullptr)
        run.session.keeper->databaseCreated(run.database);
    tell(u"Quillon 用のデータベースを作成しました。"_s);
    return Status::Done;
}

Status stats(Run& run)
{
    const Session& session = run.session;
    struct Count {
        QString label;
        QByteArrayView name;
        const std::shared_ptr<RecordSet>& rows;
    };
    const std::array counts = {Count{u"定義データ"_s, "definitions", session.RsMain},
                               Count{u"文献データ"_s, "documents", session.RsRefDoc},
                               Count{u"ファイルデータ"_s, "files", session.RsRefFile},
                               Count{u"リンク"_s, "links", session.RsLink},
                               Count{u"カテゴリ"_s, "categories", session.RsCategoryID},
                               Count{u"分類"_s, "memberships", session.RsCategory}};
    Output& output = run.output;
    for (const Count& count : counts) {
        const qint64 number = required(count.rows).recordCount();
        if (run.isJson()) {
            output.write(&count == counts.data() ? "{\"" : ",\"");
            output.write(count.name);
            output.write("\":");
            output.writeNumber(number);
        } else {
            constexpr int LabelColumns = 16;
            constexpr int NumberColumns = 9;
            output.write(padded(count.label, LabelColumns) +
                         QString::number(number).rightJustified(NumberColumns) + u'\n');
        }
    }
    if (run.isJson())
        output.write("}\n");
    return Status::Done;
}

} // namespace quillon::cli
