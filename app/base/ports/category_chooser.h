#pragma once

#include "app/base/ports/windows.h"

#include <QString>

#include <vector>

namespace quillon
{

/// A node for the category chooser.
struct ChooserNode {
    QString parentKey; // empty for a root
    QString key;
    QString text;
};

/// What the core operations ask of the window in which the person chooses a category.
class CategoryChooser : public virtual LoadedWindow
{
public:
    /// Replaces the nodes; parents stand before their children. Errors: 35601 no such parent, 35602 a key twice.
    virtual void setNodes(const std::vector<ChooserNode>& nodes) = 0;
    /// Opens the node at a position (from 1). Error 35600 outside the tree.
    virtual void expandNode(int position) = 0;
};

} // namespace quillon
