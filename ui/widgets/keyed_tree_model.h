#pragma once

#include "ui/widgets/key_index.h"
#include <QAbstractItemModel>
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

        /// Makes room for so many more nodes beforehand.
        void expect(qsizetype nodes);

    private:
        KeyedTreeModel& m_model;
    };

private:
    struct Node;
    struct Stock;
    struct KeyOfNode {
        const KeyedTreeModel* model;
        QStringView operator()(quint32 number) const;
    };

    Node* find(QStringView key) const;
    Node* nodeOf(quint32 number) const; // null for 0
    Node* nodeAt(int position) const;
    Node* nodeOf(const QModelIndex& index) const;
    QModelIndex indexFor(Node* node) const;
    int positionOf(const Node* node) const;
    /// All children of a node, or the top nodes, by row.
    const std::vector<Node*>& childrenOf(Node* node) const;
    int childCountOf(const Node* node) const;

    std::unique_ptr<Stock> m_stock;
    std::vector<std::unique_ptr<Stock>> m_retired; // emptied while views are not told yet
    std::vector<Node*> m_nodes;                    // in the order of creation
    std::vector<Node*> m_roots;
    KeyIndex<KeyOfNode> m_byKey;         // nodes without a key are not in it
    mutable Node* m_lastFound = nullptr; // neighbours mostly share what is above them
    mutable int m_numbered = 0;          // the nodes up to this position know it
    int m_rebuilding = 0;
};

} // namespace quillon
