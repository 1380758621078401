#pragma once

#include "ui/widgets/accessible_view.h"
#include "ui/widgets/keyed_tree_model.h"
#include "ui/widgets/pressed_keys.h"

#include <QHash>
#include <QPersistentModelIndex>
#include <QTimer>
#include <QTreeView>

#include <vector>

namespace quillon
{

class CompositionField;

/// A tree view over keyed nodes. What the person selects is told apart from a change of the selection by the program.
/// The selected node is never hidden: a branch that is closed over it is selected in its place. When the selected
/// node is removed, no other one is selected for it.
class KeyedTree : public QTreeView, public AccessibleRows
{
    Q_OBJECT

public:
    explicit KeyedTree(QWidget* parent = nullptr);

    KeyedTreeModel& nodes() const { return *m_model; }

    /// The position of the selected node, 0 when none is.
    int selectedPosition() const;
    /// Selects a node without a node click.
    void select(int position);
    void expandNode(int position);
    /// The node marked while something is dragged over the tree, 0 for none.
    int dropHighlight() const { return m_model->position(m_dropHighlight); }
    void setDropHighlight(int position);

    QAbstractItemView& viewOfRows() override { return *this; }
    QHeaderView* shownHeader() const override { return nullptr; }
    int shownColumnCount() const override { return 1; }
    int modelColumn(int shownColumn) const override { return shownColumn; }
    int shownRowCount() const override { return static_cast<int>(shownNodes().size()); }
    QModelIndex shownIndex(int row, int column) const override;
    int shownRow(const QModelIndex& index) const override;
    bool isOpen(const QModelIndex& index) const override;
    bool canOpen(const QModelIndex& index) const override { return m_model->hasChildren(index); }
    bool chooseRow(int row) override;
    bool releaseRow(int /*row*/) override { return false; } // there is always a selected node
    void goToRow(int row) override;
    void pressRow(int row) override;
    void turnBranch(int row) override;
    void openMenuOf(int row) override;

Q_SIGNALS:
    /// A node was clicked with the left mouse button, the selected one or another.
    void nodeClicked(int position);
    /// The person has selected another node by anything but a click: by keys, typed text, a right click, a press that
    /// was dragged off the node, by closing a branch or through assistive technology. Told when the key or the button
    /// is up again, a held one once, and at the latest when the focus leaves the tree.
    void nodeChosen(int position);
    /// A key was pressed; the tree has not acted on it yet. A held key is told once.
    void keyPressed(int key, Qt::KeyboardModifiers modifiers);
    /// A key that had been pressed in the tree was released; the tree has already acted on it.
    void keyReleased(int key, Qt::KeyboardModifiers modifiers);
    /// The right mouse button was pressed, or the keyboard's menu key; `position` is global.
    void menuRequested(const QPoint& position);
    void mouseMoved();
    /// The key for pasting was pressed.
    void pasteRequested();
    /// Text was dropped on the node that is highlighted, and the drag has ended; the receiver ends the highlight.
    void textDropped(const QString& text);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
    void initViewItemOption(QStyleOptionViewItem* option) const override;
    void paintEvent(QPaintEvent* event) override;
    void rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) override;
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                         const QEvent* event) const override;

private:
    QModelIndex selectedNode() const;
    const std::vector<QModelIndex>& shownNodes() const;
    void forgetShownNodes();
    bool selectsCurrentNode(const QKeyEvent& event) const;
    void selectInsteadOfHidden(const QModelIndex& closed);
    void tellChoice();
    void selectForMenu(const QModelIndex& index);
    bool isOnBranchArrow(const QModelIndex& index, const QPoint& position) const;
    void hoverAt(const QPoint& position);
    void scrollWhileHovering();
    void endHovering();

    KeyedTreeModel* m_model;
    CompositionField* m_composition;
    PressedKeys m_pressedKeys;
    QPersistentModelIndex m_pressedNode;
    bool m_buttonIsDown = false;
    bool m_byProgram = false;    // whether it is the program that changes the selection now
    bool m_choiceToTell = false; // the person has selected another node and that has not been told yet
    QPersistentModelIndex m_dropHighlight;
    // The nodes that no closed branch hides, from top to bottom, and their rows; empty until somebody asks.
    mutable std::vector<QModelIndex> m_shownNodes;
    mutable QHash<QModelIndex, int> m_shownRows;
    QPoint m_hoverPosition;
    QTimer m_expandTimer;
    QTimer m_scrollTimer;
};

} // namespace quillon
