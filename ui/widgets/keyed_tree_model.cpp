#include "ui/widgets/keyed_tree_model.h"

#include "app/base/error.h"

#include <algorithm>
#include <iterator>

namespace quillon
{

struct KeyedTreeModel::Node {
    QString key;
    QString text;
    Node* parent = nullptr;
    std::vector<Node*> children;
    int row = 0;      // among its siblings
    int position = 0; // right as long as it is before the first stale one
    bool removed = false;
};

KeyedTreeModel::KeyedTreeModel(QObject* parent) : QAbstractItemModel(parent) {}

KeyedTreeModel::~KeyedTreeModel() = default;

KeyedTreeModel::Node* KeyedTreeModel::nodeOf(const QModelIndex& index) const
{
    return index.isValid() ? static_cast<Node*>(index.internalPointer()) : nullptr;
}

KeyedTreeModel::Node* KeyedTreeModel::nodeAt(int position) const
{
    if (position < 1 || position > nodeCount())
        throw Error(errors::IndexOutOfBounds);
    return m_nodes[static_cast<std::size_t>(position) - 1].get();
}

QModelIndex KeyedTreeModel::indexFor(Node* node) const
{
    return node == nullptr ? QModelIndex() : createIndex(node->row, 0, node);
}

QModelIndex KeyedTreeModel::index(int row, int column, const QModelIndex& parent) const
{
    if (row < 0 || column != 0 || row >= rowCount(parent))
        return {};
    const Node* above = nodeOf(parent);
    return createIndex(row, 0, (above != nullptr ? above->children : m_roots)[static_cast<std::size_t>(row)]);
}

QModelIndex KeyedTreeModel::parent(const QModelIndex& child) const
{
    const Node* node = nodeOf(child);
    return node == nullptr ? QModelIndex() : indexFor(node->parent);
}

int KeyedTreeModel::rowCount(const QModelIndex& parent) const
{
    const Node* node = nodeOf(parent);
    return static_cast<int>((node != nullptr ? node->children : m_roots).size());
}

int KeyedTreeModel::columnCount(const QModelIndex& /*parent*/) const
{
    return 1;
}

QVariant KeyedTreeModel::data(const QModelIndex& index, int role) const
{
    const Node* node = nodeOf(index);
    if (node == nullptr || role != Qt::DisplayRole)
        return {};
    return node->text;
}

Qt::ItemFlags KeyedTreeModel::flags(const QModelIndex& index) const
{
    return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable : Qt::NoItemFlags;
}

int KeyedTreeModel::nodeCount() const
{
    return static_cast<int>(m_nodes.size());
}

int KeyedTreeModel::positionOf(const Node* node) const
{
    if (node == nullptr || node->removed)
        return 0;
    if (node->position > m_numbered || node->position == 0) {
        for (int number = m_numbered + 1; number <= nodeCount(); ++number)
            m_nodes[static_cast<std::size_t>(number) - 1]->position = number;
        m_numbered = nodeCount();
    }
    return node->position;
}

int KeyedTreeModel::position(const QString& key) const
{
    if (!key.isEmpty())
        return positionOf(m_byKey.value(key, nullptr));
    for (const std::unique_ptr<Node>& node : m_nodes) {
        if (node->key.isEmpty())
            return positionOf(node.get());
    }
    return 0;
}

int KeyedTreeModel::position(const QModelIndex& index) const
{
    return positionOf(nodeOf(index));
}

QString KeyedTreeModel::key(int position) const
{
    return nodeAt(position)->key;
}

QString KeyedTreeModel::text(int position) const
{
    return nodeAt(position)->text;
}

int KeyedTreeModel::parentPosition(int position) const
{
    return positionOf(nodeAt(position)->parent);
}

bool KeyedTreeModel::hasChildren(int position) const
{
    return !nodeAt(position)->children.empty();
}

QModelIndex KeyedTreeModel::indexOf(int position) const
{
    return indexFor(nodeAt(position));
}

void KeyedTreeModel::clear()
{
    const Rebuild rebuild(*this);
    for (std::unique_ptr<Node>& node : m_nodes) {
        node->removed = true;
        m_retired.push_back(std::move(node));
    }
    m_nodes.clear();
    m_roots.clear();
    m_byKey.clear();
    m_numbered = 0;
}

void KeyedTreeModel::add(const QString& parentKey, const QString& key, const QString& text)
{
    Node* parent = nullptr;
    if (!parentKey.isEmpty()) {
        parent = m_byKey.value(parentKey, nullptr);
        if (parent == nullptr)
            throw Error(errors::ElementNotFound);
    }
    if (!key.isEmpty() && m_byKey.contains(key))
        throw Error(errors::KeyNotUnique);

    std::vector<Node*>& siblings = parent != nullptr ? parent->children : m_roots;
    const auto row = static_cast<int>(siblings.size());
    auto node = std::make_unique<Node>();
    node->key = key;
    node->text = text;
    node->parent = parent;
    node->row = row;
    if (m_rebuilding == 0)
        beginInsertRows(indexFor(parent), row, row);
    siblings.push_back(node.get());
    if (!key.isEmpty())
        m_byKey.insert(key, node.get());
    m_nodes.push_back(std::move(node));
    if (m_rebuilding == 0)
        endInsertRows();
}

void KeyedTreeModel::setText(int position, const QString& text)
{
    Node* node = nodeAt(position);
    node->text = text;
    if (m_rebuilding == 0)
        Q_EMIT dataChanged(indexFor(node), indexFor(node), {Qt::DisplayRole});
}

void KeyedTreeModel::remove(int position)
{
    Node* node = nodeAt(position);
    if (m_rebuilding == 0)
        beginRemoveRows(indexFor(node->parent), node->row, node->row);
    std::vector<Node*>& siblings = node->parent != nullptr ? node->parent->children : m_roots;
    siblings.erase(siblings.begin() + node->row);
    for (auto row = static_cast<std::size_t>(node->row); row < siblings.size(); ++row)
        siblings[row]->row = static_cast<int>(row);

    std::vector<Node*> pending{node};
    while (!pending.empty()) {
        Node* gone = pending.back();
        pending.pop_back();
        gone->removed = true;
        if (!gone->key.isEmpty())
            m_byKey.remove(gone->key);
        pending.insert(pending.end(), gone->children.begin(), gone->children.end());
    }
    // A node is younger than everything above it, so the first of those that go is the node itself.
    const auto first = m_nodes.begin() + (position - 1);
    const auto kept =
        node->children.empty()
            ? std::rotate(first, first + 1, m_nodes.end())
            : std::stable_partition(first, m_nodes.end(), [](const auto& other) { return !other->removed; });
    std::move(kept, m_nodes.end(), std::back_inserter(m_retired));
    m_nodes.erase(kept, m_nodes.end());
    m_numbered = std::min(m_numbered, position - 1);

    if (m_rebuilding == 0) {
        endRemoveRows();
        m_retired.clear();
    }
}

KeyedTreeModel::Rebuild::Rebuild(KeyedTreeModel& model) : m_model(model)
{
    if (m_model.m_rebuilding++ == 0)
        m_model.beginResetModel();
}

KeyedTreeModel::Rebuild::~Rebuild()
{
    if (--m_model.m_rebuilding > 0)
        return;
    m_model.endResetModel();
    m_model.m_retired.clear();
}

} // namespace quillon
