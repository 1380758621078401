#pragma once

#include <QString>

namespace quillon
{

class FillProgress;
class KeyedTree;
class KeyedTreeModel;
class Session;

/// Rebuilds the tree: the nine fixed nodes, then one node per category, each below the category that its identifier
/// names. A missing ancestor is added under the name of the first descendant. A failure, for example a key that is
/// taken already, is reported as "OpenDbFile" and ends the build where it is.
void BuildCategoryTree(Session& session, KeyedTree& tree, FillProgress& progress);

/// The position of the first node with this key, 0 when there is none.
int GetNodeIndex(const KeyedTreeModel& nodes, QStringView key);

} // namespace quillon
