#include "app/base/one_line.h"
#include "app/cli/columns.h"
#include "app/cli/found.h"
#include "app/cli/run.h"
#include "app/cli/verb_functions.h"
#include "core/categories.h"
#include "core/category_entry.h"
#include "store/record_set.h"
#include "store/schema.h"

#include <QHash>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon::cli
{

namespace
{

struct ListedCategory {
    QString identifier;
    QString name;
    qint64 members = 0;
};

/// The identifier of the category above; empty at the top level.
QStringView above(QStringView identifier)
{
    return identifier.first(std::max<qsizetype>(identifier.lastIndexOf(u'-'), 0));
}

/// All categories in the order of a tree: each before those below it.
std::vector<ListedCategory> allCategories(Session& session)
{
    QHash<QString, qint64> members;
    required(session.RsCategory).forEachRow({0}, [&](const RecordSet::Row& row) {
        ++members[row.text(0).toString()];
    });
    std::vector<ListedCategory> categories;
    required(session.RsCategoryID)
        .forEachRow({category_field::Category_ID, category_field::Name}, [&](const RecordSet::Row& row) {
            const QString identifier = row.text(0).toString();
            categories.push_back({.identifier = identifier,
                                  .name = row.text(1).toString(),
                                  .members = members.value(identifier)});
        });
    const auto treeOrder = [](const ListedCategory& a, const ListedCategory& b) {
        return a.identifier.split(u'-') < b.identifier.split(u'-');
    };
    std::stable_sort(categories.begin(), categories.end(), treeOrder);
    return categories;
}

void requireName(const QString& name)
{
    if (name.isEmpty())
        throw Refusal{Status::Refused, u"カテゴリ名が入力されていません。"_s};
}

} // namespace

Status categories(Run& run)
{
    Output& output = run.output;
    const std::optional<char> identifierEnd = run.identifierEnd();
    const auto all = allCategories(run.session);
    int widest = 0;
    for (const ListedCategory& category : all)
        widest = std::max(widest, columnsOf(onePrintedLine(category.identifier)));
    for (const ListedCategory& category : all) {
        if (identifierEnd) {
            output.write(category.identifier);
            output.write(*identifierEnd);
        } else if (run.isJson()) {
            output.write("{\"identifier\":");
            output.writeJson(category.identifier);
            output.write(",\"name\":");
            output.writeJson(category.name);
            output.write(",\"parent\":");
            if (const QStringView parent = above(category.identifier); parent.isEmpty())
                output.write("null");
            else
                output.writeJson(parent);
            output.write(",\"members\":");
            output.writeNumber(category.members);
            output.write("}\n");
        } else {
            constexpr int MemberColumns = 7;
            const QString indent(2 * category.identifier.count(u'-'), u' ');
            output.write(padded(onePrintedLine(category.identifier), widest) +
                         QString::number(category.members).rightJustified(MemberColumns) + u"  "_s + indent +
                         onePrintedLine(category.name) + u'\n');
        }
        if (output.isFull())
            output.flush();
        if (!output.goesOn())
            break;
    }
    run.goOn();
    if (!all.empty())
        return Status::Done;
    complain(u"カテゴリはありません。"_s);
    return Status::NothingFound;
}

Status addCategory(Run& run)
{
    const QString name = onOneLine(run.arguments.words.first());
    requireName(name);
    std::optional<CategoryRow> parent;
    if (run.arguments.has(u"--under"_s))
        parent = foundCategory(run.session, run.arguments.value(u"--under"_s));
    const QString identifier = RegisterNewCategory(
        run.session, parent ? parent->identifier + u'-' : QString(), [](const QString&) { return false; },
        name, parent ? &*parent : nullptr);
    if (run.isJson()) {
        run.output.write("{\"identifier\":");
        run.output.writeJson(identifier);
        run.output.write("}\n");
    } else {
        run.output.write(identifier + u'\n');
    }
    return Status::Done;
}

Status renameCategory(Run& run)
{
    const CategoryRow category = foundCategory(run.session, run.arguments.words[0]);
    const QString name = onOneLine(run.arguments.words[1]);
    requireName(name);
    if (name == category.name) {
        complain(u"変更するところはありません。"_s);
        return Status::NothingFound;
    }
    RenameCategory(run.session, category, name);
    return Status::Done;
}

Status deleteCategory(Run& run)
{
    const CategoryRow category = foundCategory(run.session, run.arguments.words.first());
    if (HasSubcategories(run.session, category.identifier))
        throw Refusal{Status::Refused, u"サブカテゴリが存在します。先にサブカテゴリを削除して下さい。"_s};
    constexpr qint16 AsksAndTells = 3;
    const bool isDeleted = DeleteCategory(run.session, category.identifier, AsksAndTells);
    return isDeleted ? Status::Done : run.log.takeStatus(run.dialogs.statusOfNo());
}

} // namespace quillon::cli
