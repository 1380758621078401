#pragma once

#include "ui/widgets/keyed_tree_model.h"
#include "ui/widgets/pressed_keys.h"

#include <QPersistentModelIndex>
#include <QTimer>
#include <QTreeView>

namespace quillon
{

/// A tree view over keyed nodes. A node click is told apart from a change of the selection by the program.
/// Once a node is selected, only choosing another one changes that.
class KeyedTree : public QTreeView
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
    int dropHighlight() const { return m_dropHighlight; }
    void setDropHighlight(int position);

Q_SIGNALS:
    /// A node was clicked with the left mouse button, or the mouse selected it in another way: by a right click, or
    /// by a press that was then dragged off the node.
    void nodeClicked(int position);
    /// A key was pressed; the tree has not acted on it yet. A held key is told once.
    void keyPressed(int key, Qt::KeyboardModifiers modifiers);
    /// A key that had been pressed in the tree was released; the tree has already acted on it.
    void keyReleased(int key, Qt::KeyboardModifiers modifiers);
    /// The right mouse button was pressed, or the keyboard's menu key; `position` is global.
    void menuRequested(const QPoint& position);
    void mouseMoved();
    /// Text was dropped on the node that is highlighted, and the drag has ended; the receiver ends the highlight.
    void textDropped(const QString& text);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                         const QEvent* event) const override;

private:
    void selectForMenu(const QModelIndex& index);
    bool isOnBranchArrow(const QModelIndex& index, const QPoint& position) const;
    void hoverAt(const QPoint& position);
    void scrollWhileHovering();
    void endHovering();

    KeyedTreeModel* m_model;
    PressedKeys m_pressedKeys;
    QPersistentModelIndex m_pressedNode;
    bool m_selectedByPress = false; // the press that is under way has changed the selection
    int m_dropHighlight = 0;
    QPoint m_hoverPosition;
    QTimer m_expandTimer;
    QTimer m_scrollTimer;
};

} // namespace quillon
