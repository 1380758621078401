#pragma once

#include <QAccessible>
#include <QPersistentModelIndex>
#include <QPointer>

class QAbstractItemView;

namespace quillon
{

class AccessibleRows;

/// A cell of a list or a node of a tree as assistive technology sees it. Its name is its whole text, however little of
/// it there is room for.
class AccessibleCell : public QAccessibleInterface,
                       public QAccessibleTableCellInterface,
                       public QAccessibleActionInterface
{
public:
    /// `index`: an invalid one makes a cell that there is not.
    AccessibleCell(AccessibleRows& rows, const QModelIndex& index);

    const QPersistentModelIndex& index() const { return m_index; }

    bool isValid() const override;
    QObject* object() const override { return nullptr; }
    QWindow* window() const override;
    void* interface_cast(QAccessible::InterfaceType type) override;
    QAccessibleInterface* parent() const override;
    QAccessibleInterface* child(int /*index*/) const override { return nullptr; }
    QAccessibleInterface* childAt(int /*x*/, int /*y*/) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface* /*child*/) const override { return -1; }
    QString text(QAccessible::Text kind) const override;
    void setText(QAccessible::Text /*kind*/, const QString& /*text*/) override {} // no cell can be edited
    QRect rect() const override;
    QAccessible::Role role() const override;
    QAccessible::State state() const override;

    bool isSelected() const override;
    QList<QAccessibleInterface*> columnHeaderCells() const override;
    QList<QAccessibleInterface*> rowHeaderCells() const override { return {}; }
    int columnIndex() const override;
    int rowIndex() const override;
    int columnExtent() const override { return 1; }
    int rowExtent() const override { return 1; }
    QAccessibleInterface* table() const override { return parent(); }

    QStringList actionNames() const override;
    void doAction(const QString& action) override;
    QStringList keyBindingsForAction(const QString& /*action*/) const override { return {}; }

private:
    bool isNode() const;

    AccessibleRows& m_rows;
    QPointer<QAbstractItemView> m_view;
    QPersistentModelIndex m_index;
};

/// The header of a column; pressing it sorts.
class AccessibleHeader : public QAccessibleInterface, public QAccessibleActionInterface
{
public:
    AccessibleHeader(AccessibleRows& rows, int column);

    int column() const { return m_column; }

    bool isValid() const override;
    QObject* object() const override { return nullptr; }
    QWindow* window() const override;
    void* interface_cast(QAccessible::InterfaceType type) override;
    QAccessibleInterface* parent() const override;
    QAccessibleInterface* child(int /*index*/) const override { return nullptr; }
    QAccessibleInterface* childAt(int /*x*/, int /*y*/) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface* /*child*/) const override { return -1; }
    QString text(QAccessible::Text kind) const override;
    void setText(QAccessible::Text /*kind*/, const QString& /*text*/) override {}
    QRect rect() const override;
    QAccessible::Role role() const override { return QAccessible::ColumnHeader; }
    QAccessible::State state() const override;

    QStringList actionNames() const override;
    void doAction(const QString& action) override;
    QStringList keyBindingsForAction(const QString& /*action*/) const override { return {}; }

private:
    AccessibleRows& m_rows;
    QPointer<QAbstractItemView> m_view;
    int m_column;
};

} // namespace quillon
