#include "ui/widgets/keyed_tree.h"

#include "ui/widgets/composition_field.h"
#include "ui/widgets/key_kinds.h"
#include "ui/widgets/one_line_delegate.h"
#include "ui/widgets/text_drops.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QScopedValueRollback>
#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace quillon
{

namespace
{

constexpr int ExpandDelay = 700; // milliseconds over a closed node until it opens
constexpr int ScrollInterval = 80;
constexpr int ScrollMargin = 16;

bool isAtOrBelow(QModelIndex index, const QModelIndex& top)
{
    while (index.isValid() && index != top)
        index = index.parent();
    return index.isValid();
}

/// Shows the node under something that is dragged as if it were selected, in the colours of the palette.
class NodeDelegate : public OneLineDelegate
{
public:
    explicit NodeDelegate(KeyedTree* tree) : OneLineDelegate(tree), m_tree(tree) {}

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override
    {
        OneLineDelegate::initStyleOption(option, index);
        if (m_tree->dropHighlight() != 0 && m_tree->nodes().position(index) == m_tree->dropHighlight())
            option->state |= QStyle::State_Selected | QStyle::State_Active;
    }

private:
    KeyedTree* m_tree;
};

} // namespace

KeyedTree::KeyedTree(QWidget* parent)
    : QTreeView(parent), m_model(new KeyedTreeModel(this)), m_composition(new CompositionField(*this))
{
    setModel(m_model);
    setItemDelegate(new NodeDelegate(this));
    setHeaderHidden(true);
    setUniformRowHeights(true);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setMouseTracking(true);
    viewport()->setMouseTracking(true);
    setAcceptDrops(true);
    // Long names and deep branches scroll sideways instead of being cut off.
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(QHeaderView::ResizeToContents);

    m_expandTimer.setSingleShot(true);
    m_expandTimer.setInterval(ExpandDelay);
    connect(&m_expandTimer, &QTimer::timeout, this, [this] {
        if (m_dropHighlight.isValid())
            expand(m_dropHighlight);
    });
    m_scrollTimer.setInterval(ScrollInterval);
    connect(&m_scrollTimer, &QTimer::timeout, this, &KeyedTree::scrollWhileHovering);
    connect(m_model, &QAbstractItemModel::modelReset, this, [this] { m_choiceToTell = false; });
    connect(this, &QTreeView::collapsed, this, &KeyedTree::selectInsteadOfHidden);
}

QModelIndex KeyedTree::selectedNode() const
{
    const QModelIndexList selected = selectionModel()->selectedIndexes();
    return selected.isEmpty() ? QModelIndex() : selected.first();
}

int KeyedTree::selectedPosition() const
{
    return m_model->position(selectedNode());
}

void KeyedTree::select(int position)
{
    const QScopedValueRollback byProgram(m_byProgram, true);
    m_choiceToTell = false;
    setCurrentIndex(m_model->indexOf(position));
}

void KeyedTree::expandNode(int position)
{
    expand(m_model->indexOf(position));
}

void KeyedTree::setDropHighlight(int position)
{
    if (dropHighlight() == position)
        return;
    m_dropHighlight = position == 0 ? QModelIndex() : m_model->indexOf(position);
    viewport()->update();
}

bool KeyedTree::isOnBranchArrow(const QModelIndex& index, const QPoint& position) const
{
    if (!m_model->hasChildren(index))
        return false;
    const QRect item = visualRect(index);
    if (isRightToLeft())
        return position.x() > item.right() && position.x() <= item.right() + indentation();
    return position.x() < item.left() && position.x() >= item.left() - indentation();
}

QItemSelectionModel::SelectionFlags KeyedTree::selectionCommand(const QModelIndex& index,
                                                                const QEvent* event) const
{
    // Whether Ctrl is held makes no difference: there is always one selected node, never none.
    if (!index.isValid() || (event != nullptr && event->type() == QEvent::MouseButtonRelease))
        return QItemSelectionModel::NoUpdate;
    return QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows;
}

void KeyedTree::mousePressEvent(QMouseEvent* event)
{
    const QPoint position = event->position().toPoint();
    const QModelIndex index = indexAt(position);
    m_pressedNode = QModelIndex();
    if (event->button() == Qt::LeftButton) {
        if (index.isValid() && !isOnBranchArrow(index, position))
            m_pressedNode = index;
        m_buttonIsDown = true;
        QTreeView::mousePressEvent(event);
        return;
    }
    if (event->button() == Qt::RightButton)
        selectForMenu(index);
    event->accept();
}

void KeyedTree::selectForMenu(const QModelIndex& index)
{
    if (!index.isValid() || m_model->position(index) == selectedPosition())
        return;
    setCurrentIndex(index);
    // Before the menu opens: what it acts on must be what is shown for the node.
    tellChoice();
}

void KeyedTree::mouseMoveEvent(QMouseEvent* event)
{
    // A press that wanders over the nodes is no click and must not take the selection with it.
    if (event->buttons() == Qt::NoButton)
        QTreeView::mouseMoveEvent(event);
    Q_EMIT mouseMoved();
}

void KeyedTree::mouseReleaseEvent(QMouseEvent* event)
{
    const QPoint position = event->position().toPoint();
    QTreeView::mouseReleaseEvent(event);
    if (event->button() != Qt::LeftButton)
        return;
    m_buttonIsDown = false;
    const QModelIndex pressed = std::exchange(m_pressedNode, QPersistentModelIndex());
    const bool clicked = viewport()->rect().contains(position) && indexAt(position) == pressed;
    // A key may have taken the selection elsewhere while the button was down.
    if (pressed.isValid() && clicked && selectionModel()->isSelected(pressed)) {
        m_choiceToTell = false;
        Q_EMIT nodeClicked(m_model->position(pressed));
    } else if (!m_pressedKeys.any()) {
        tellChoice();
    }
}

void KeyedTree::keyPressEvent(QKeyEvent* event)
{
    m_pressedKeys.press(*event);
    if (!event->isAutoRepeat())
        Q_EMIT keyPressed(event->key(), event->modifiers());
    if (event->matches(QKeySequence::Paste)) {
        event->accept();
        if (!event->isAutoRepeat())
            Q_EMIT pasteRequested();
        return;
    }
    if (typesControlCharacter(*event)) {
        event->ignore();
        return;
    }
    if (selectsCurrentNode(*event)) {
        setCurrentIndex(currentIndex());
        scrollTo(currentIndex());
        event->accept();
        return;
    }
    QTreeView::keyPressEvent(event);
    const bool goesToAnEnd = event->key() == Qt::Key_Home || event->key() == Qt::Key_End;
    if (goesToAnEnd && currentIndex().isValid() && !selectionModel()->hasSelection())
        setCurrentIndex(currentIndex()); // it stood there already
}

bool KeyedTree::selectsCurrentNode(const QKeyEvent& event) const
{
    // Where a node was removed its neighbour is where the keyboard stands. Moving on from it would leave it out.
    if (!currentIndex().isValid() || selectionModel()->hasSelection())
        return false;
    switch (event.key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        return true;
    default:
        return false;
    }
}

void KeyedTree::keyReleaseEvent(QKeyEvent* event)
{
    const bool pressedHere = m_pressedKeys.release(*event);
    QTreeView::keyReleaseEvent(event);
    if (pressedHere)
        Q_EMIT keyReleased(event->key(), event->modifiers());
    if (!event->isAutoRepeat() && !m_buttonIsDown)
        tellChoice();
}

void KeyedTree::inputMethodEvent(QInputMethodEvent* event)
{
    if (!m_composition->takes(*event))
        QTreeView::inputMethodEvent(event);
}

void KeyedTree::focusInEvent(QFocusEvent* event)
{
    QTreeView::focusInEvent(event);
    setAttribute(Qt::WA_InputMethodEnabled);
}

void KeyedTree::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    QTreeView::currentChanged(current, previous);
    // Names are Japanese: an input method must be able to type what is searched, although no node can be edited.
    setAttribute(Qt::WA_InputMethodEnabled);
}

void KeyedTree::focusOutEvent(QFocusEvent* event)
{
    m_pressedKeys.forget();
    m_buttonIsDown = false;
    QTreeView::focusOutEvent(event);
    // What is up again now is told to somebody else. The change of the focus comes to its end first: what is told may
    // show a box.
    QMetaObject::invokeMethod(this, &KeyedTree::tellChoice, Qt::QueuedConnection);
}

void KeyedTree::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected)
{
    QTreeView::selectionChanged(selected, deselected);
    if (m_byProgram)
        return;
    m_choiceToTell = true;
    if (!m_buttonIsDown && !m_pressedKeys.any())
        tellChoice();
}

void KeyedTree::tellChoice()
{
    const int chosen = selectedPosition();
    if (std::exchange(m_choiceToTell, false) && chosen != 0)
        Q_EMIT nodeChosen(chosen);
}

void KeyedTree::selectInsteadOfHidden(const QModelIndex& closed)
{
    const QModelIndex selected = selectedNode();
    if (selected != closed && isAtOrBelow(selected, closed))
        setCurrentIndex(closed);
}

void KeyedTree::rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last)
{
    const QScopedValueRollback byProgram(m_byProgram, true);
    const QModelIndex selected = selectedNode();
    bool goes = false;
    for (int row = first; row <= last; ++row)
        goes = goes || isAtOrBelow(selected, m_model->index(row, 0, parent));
    // The keyboard goes on from the neighbour, but nobody has selected that.
    QTreeView::rowsAboutToBeRemoved(parent, first, last);
    if (goes)
        selectionModel()->clearSelection();
}

void KeyedTree::contextMenuEvent(QContextMenuEvent* event)
{
    event->accept();
    QPoint position = event->globalPos();
    if (event->reason() == QContextMenuEvent::Mouse) {
        selectForMenu(indexAt(event->pos()));
    } else {
        QPoint inside(0, 0);
        if (currentIndex().isValid()) {
            scrollTo(currentIndex());
            const QRect node = visualRect(currentIndex());
            inside = QPoint(std::max(node.left(), 0), node.bottom());
        }
        position = viewport()->mapToGlobal(inside);
    }
    Q_EMIT menuRequested(position);
}

void KeyedTree::hoverAt(const QPoint& position)
{
    m_hoverPosition = position;
    const QModelIndex index = indexAt(position);
    const int hovered = m_model->position(index);
    if (hovered != dropHighlight()) {
        setDropHighlight(hovered);
        if (index.isValid() && m_model->hasChildren(index) && !isExpanded(index))
            m_expandTimer.start();
        else
            m_expandTimer.stop();
    }
    if (!m_scrollTimer.isActive())
        m_scrollTimer.start();
}

void KeyedTree::scrollWhileHovering()
{
    const int step = m_hoverPosition.y() < ScrollMargin                           ? -1
                     : m_hoverPosition.y() >= viewport()->height() - ScrollMargin ? 1
                                                                                  : 0;
    if (step == 0)
        return;
    verticalScrollBar()->triggerAction(step < 0 ? QAbstractSlider::SliderSingleStepSub
                                                : QAbstractSlider::SliderSingleStepAdd);
    hoverAt(m_hoverPosition);
}

void KeyedTree::endHovering()
{
    m_expandTimer.stop();
    m_scrollTimer.stop();
}

void KeyedTree::dragEnterEvent(QDragEnterEvent* event)
{
    dragMoveEvent(event);
}

void KeyedTree::dragMoveEvent(QDragMoveEvent* event)
{
    if (takesText(*event))
        hoverAt(event->position().toPoint());
}

void KeyedTree::dragLeaveEvent(QDragLeaveEvent* event)
{
    endHovering();
    setDropHighlight(0);
    event->accept();
}

void KeyedTree::dropEvent(QDropEvent* event)
{
    if (!takesText(*event))
        return;
    hoverAt(event->position().toPoint());
    endHovering();
    afterDrop(*this, *event, [this](const QString& text) { Q_EMIT textDropped(text); });
}

} // namespace quillon
