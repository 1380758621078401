#pragma once

#include "app/base/fixed_nodes.h"

#include <QString>

#include <memory>

namespace quillon
{

/// What operations below the windows ask of the main window.
class MainWindowPort
{
public:
    virtual ~MainWindowPort() = default;

    /// What the main window has shown until another database is opened.
    class Shown
    {
    public:
        Shown() = default;
        virtual ~Shown() = default;
        Shown(const Shown&) = delete;
        Shown& operator=(const Shown&) = delete;
        /// Shows it again: the rows of the data list and the status texts, as they were.
        virtual void showAgain() = 0;
    };
    /// Removes every row of the data list. Whoever wants to put it back keeps the answer.
    virtual std::unique_ptr<Shown> clearDataList() = 0;
    /// Sets the text of a status bar panel; panels count from 1.
    virtual void setStatus(int panel, const QString& text) = 0;
    /// Enables the menu entries that need a database; nothing ever disables them again.
    virtual void enableDatabaseMenus() = 0;
    /// Rebuilds the category tree from the open database.
    virtual void rebuildCategoryTree() = 0;

    /// The position (from 1) of the node selected in the category tree, 0 when none is.
    virtual int selectedNodeIndex() const = 0;
    /// The number of nodes of the category tree.
    virtual int nodeCount() const = 0;
    /// Key, text and parent's key of the node at a position (from 1). Error 35600 outside the tree.
    virtual QString nodeKey(int index) const = 0;
    virtual QString nodeText(int index) const = 0;
    virtual QString nodeParentKey(int index) const = 0;
};

} // namespace quillon
