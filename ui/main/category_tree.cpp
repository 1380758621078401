#include "ui/main/category_tree.h"

#include "app/base/ports/main_window_port.h"
#include "app/base/reporting.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "store/session.h"
#include "ui/main/fill_progress.h"
#include "ui/widgets/keyed_tree.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

constexpr int DivisionNode = 1;
const QString CategoryKey = u"CATEGORY"_s;

void addFixedNodes(KeyedTreeModel& nodes)
{
    nodes.add({}, u"DIV"_s, u"形式別(全データ)"_s);
    nodes.add(u"DIV"_s, u"M_DIV"_s, u"定義データ"_s);
    nodes.add(u"M_DIV"_s, u"M_DIV_NOCATEGORY"_s, u"未分類データ"_s);
    nodes.add(u"M_DIV"_s, u"M_DIV_NODIF"_s, u"未定義データ"_s);
    nodes.add(u"DIV"_s, u"R_DIV"_s, u"文献データ"_s);
    nodes.add(u"R_DIV"_s, u"R_DIV_NOCATEGORY"_s, u"未分類データ"_s);
    nodes.add(u"DIV"_s, u"F_DIV"_s, u"ファイルデータ"_s);
    nodes.add(u"F_DIV"_s, u"F_DIV_NOCATEGORY"_s, u"未分類データ"_s);
    nodes.add({}, CategoryKey, u"分類別"_s);
}

void addCategory(KeyedTreeModel& nodes, QStringView identifier, QStringView name)
{
    // An identifier that no table of ours could hold is damage; its ancestors alone could fill the memory.
    if (identifier.size() > schema::Category_ID().fields[0].width)
        throw Error(errors::FieldTooSmall);
    // Mostly the category above is there, and then so is every one above that.
    const QStringView above = identifier.first(std::max<qsizetype>(identifier.lastIndexOf(u'-'), 0));
    if (nodes.contains(above)) {
        nodes.add(above, identifier, name);
        return;
    }
    QStringView parent = CategoryKey;
    for (qsizetype step = identifier.indexOf(u'-'); step >= 0; step = identifier.indexOf(u'-', step + 1)) {
        const QStringView ancestor = identifier.first(step);
        if (GetNodeIndex(nodes, ancestor) == 0)
            nodes.add(parent, ancestor, name); // sic: the missing ancestor takes the descendant's name
        parent = ancestor;
    }
    nodes.add(parent.isEmpty() ? QStringView(CategoryKey) : parent, identifier, name);
}

} // namespace

void BuildCategoryTree(Session& session, KeyedTree& tree, FillProgress& progress)
{
    // The tree is a part of opening a database and reports under its name.
    guarded(session.reporting, u"OpenDbFile"_s, [&] {
        KeyedTreeModel& nodes = tree.nodes();
        {
            const KeyedTreeModel::Rebuild rebuild(nodes);
            nodes.clear();
            addFixedNodes(nodes);
            RecordSet& categories = required(session.RsCategoryID);
            if (categories.hasRows()) {
                const qsizetype count = categories.recordCount();
                progress.start(count);
                categories.forEachRow({0, 1}, [&](const RecordSet::Row& row) {
                    progress.advance();
                    addCategory(nodes, row.text(0), row.text(1));
                });
            }
        }
        tree.expandNode(LastFixedNode);
        tree.expandNode(DivisionNode);
        tree.select(DivisionNode);
        progress.finish();
    });
}

int GetNodeIndex(const KeyedTreeModel& nodes, QStringView key)
{
    return nodes.position(key);
}

} // namespace quillon
