#include "ui/main/category_tree.h"

#include "app/base/fixed_nodes.h"
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
    QStringView parent = keyOf(FixedNode::Categories);
    for (qsizetype step = identifier.indexOf(u'-'); step >= 0; step = identifier.indexOf(u'-', step + 1)) {
        const QStringView ancestor = identifier.first(step);
        if (GetNodeIndex(nodes, ancestor) == 0)
            nodes.add(parent, ancestor, name); // sic: the missing ancestor takes the descendant's name
        parent = ancestor;
    }
    nodes.add(parent.isEmpty() ? keyOf(FixedNode::Categories) : parent, identifier, name);
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
            for (const FixedNodeDesign& design : FixedNodes)
                nodes.add(keyOf(design.parent), design.key, design.text);
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
        tree.expandNode(positionOf(FixedNode::Categories));
        tree.expandNode(positionOf(FixedNode::AllData));
        tree.select(positionOf(FixedNode::AllData));
        progress.finish();
    });
}

int GetNodeIndex(const KeyedTreeModel& nodes, QStringView key)
{
    return nodes.position(key);
}

} // namespace quillon
