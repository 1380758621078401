#pragma once

#include <QAbstractItemModel>
#include <QHash>
#include <QString>
#include <QStringView>

#include <memory>
#include <vector>

namespace quillon
{

/// A tree whose nodes have keys and positions: positions count from 1 in the order of creation and close up when a
/// node is removed. Keys compare exactly; an empty key is no key and may stand more than once.
class KeyedTreeModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    explicit KeyedTreeModel(QObject* parent = nullptr);
    ~KeyedTreeModel() override;
    KeyedTreeModel(const KeyedTreeModel&) = delete;
    KeyedTreeModel& operator=(const KeyedTreeModel&) = delete;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    int nodeCount() const;
    /// The position of the first node with this key, 0 when there is none.
    int position(QStringView key) const;
    /// Whether a node has this key; none has an empty one.
    bool contains(QStringView key) const;
    /// The position of a model index, 0 for an invalid one.
    int position(const QModelIndex& index) const;
    /// Key, text, position of the parent (0: root). Error 35600 for a position outside the tree.
    QString key(int position) const;
    QString text(int position) const;
    int parentPosition(int position) const;
    bool hasChildren(int position) const;
    using QAbstractItemModel::hasChildren;
    QModelIndex indexOf(int position) const;

    void clear();
    /// Adds a node as the last child of the node with `parentKey` (an empty one: a root node).
    /// Errors: 35601 no such parent, 35602 the key is taken.
    void add(QStringView parentKey, QStringView key, QStringView text);
    void setText(int position, QStringView text);
    /// Removes a node with everything below it.
    void remove(int position);

    /// While it lives nodes may be added or removed freely; views are told once, when it ends. Until then a view
    /// may paint what it showed before; select and expand nodes afterwards.
    class Rebuild
    {
    public:
        explicit Rebuild(KeyedTreeModel& model);
        ~Rebuild();
        Rebuild(const Rebuild&) = delete;
        Rebuild& operator=(const Rebuild&) = delete;

    private:
        KeyedTreeModel& m_model;
    };

private:
    struct Node;
    using Nodes = std::vector<std::unique_ptr<Node>>;

    Node& nodeAt(int position) const;
    /// The node of an index; the root of all for an invalid one.
    Node& nodeOf(const QModelIndex& index) const;
    QModelIndex indexFor(const Node& node) const;

    std::unique_ptr<Node> m_root;      // above the top nodes; not a node of the tree itself
    Nodes m_nodes;                     // in the order of creation
    QHash<QStringView, Node*> m_byKey; // the keys are the nodes' own; nodes without one are not in it
    Nodes m_removed;                   // views may still look at them while they are not told yet
    int m_rebuilding = 0;
};

} // namespace quillon
