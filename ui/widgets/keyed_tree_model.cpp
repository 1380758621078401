#include "ui/widgets/keyed_tree_model.h"

#include "app/base/error.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace quillon
{

struct KeyedTreeModel::Node {
    QString key;
    QString text;
    Node* parent = nullptr;
    std::vector<Node*> children;
    int row = 0;      // among its siblings
    int position = 0; // 0: no longer in the tree
};

KeyedTreeModel::KeyedTreeModel(QObject* parent) : QAbstractItemModel(parent), m_root(std::make_unique<Node>())
{
}

KeyedTreeModel::~KeyedTreeModel() = default;

KeyedTreeModel::Node& KeyedTreeModel::nodeOf(const QModelIndex& index) const
{
    return index.isValid() ? *static_cast<Node*>(index.internalPointer()) : *m_root;
}

KeyedTreeModel::Node& KeyedTreeModel::nodeAt(int position) const
{
    if (position < 1 || position > nodeCount())
        throw Error(errors::IndexOutOfBounds);
    return *m_nodes[static_cast<std::size_t>(position) - 1];
}

QModelIndex KeyedTreeModel::indexFor(const Node& node) const
{
    return &node == m_root.get() ? QModelIndex() : createIndex(node.row, 0, &node);
}

QModelIndex KeyedTreeModel::index(int row, int column, const QModelIndex& parent) const
{
    if (row < 0 || column != 0 || row >= rowCount(parent))
        return {};
    return indexFor(*nodeOf(parent).children[static_cast<std::size_t>(row)]);
}

QModelIndex KeyedTreeModel::parent(const QModelIndex& child) const
{
    return child.isValid() ? indexFor(*nodeOf(child).parent) : QModelIndex();
}

int KeyedTreeModel::rowCount(const QModelIndex& parent) const
{
    return static_cast<int>(nodeOf(parent).children.size());
}

int KeyedTreeModel::columnCount(const QModelIndex& /*parent*/) const
{
    return 1;
}

QVariant KeyedTreeModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || role != Qt::DisplayRole)
        return {};
    return nodeOf(index).text;
}

Qt::ItemFlags KeyedTreeModel::flags(const QModelIndex& index) const
{
    return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable : Qt::NoItemFlags;
}

int KeyedTreeModel::nodeCount() const
{
    return static_cast<int>(m_nodes.size());
}

bool KeyedTreeModel::contains(QStringView key) const
{
    return m_byKey.contains(key);
}

int KeyedTreeModel::position(QStringView key) const
{
    if (!key.isEmpty()) {
        const Node* node = m_byKey.value(key);
        return node == nullptr ? 0 : node->position;
    }
    const auto node = std::find_if(m_nodes.begin(), m_nodes.end(),
                                   [](const auto& candidate) { return candidate->key.isEmpty(); });
    return node == m_nodes.end() ? 0 : (*node)->position;
}

int KeyedTreeModel::position(const QModelIndex& index) const
{
    return nodeOf(index).position;
}

QString KeyedTreeModel::key(int position) const
{
    return nodeAt(position).key;
}

QString KeyedTreeModel::text(int position) const
{
    return nodeAt(position).text;
}

int KeyedTreeModel::parentPosition(int position) const
{
    return nodeAt(position).parent->position;
}

bool KeyedTreeModel::hasChildren(int position) const
{
    return !nodeAt(position).children.empty();
}

QModelIndex KeyedTreeModel::indexOf(int position) const
{
    return indexFor(nodeAt(position));
}

void KeyedTreeModel::clear()
{
    const Rebuild rebuild(*this);
    for (std::unique_ptr<Node>& node : m_nodes)
        node->position = 0;
    std::move(m_nodes.begin(), m_nodes.end(), std::back_inserter(m_removed));
    m_nodes.clear();
    m_root->children.clear();
    m_byKey.clear();
}

void KeyedTreeModel::add(QStringView parentKey, QStringView key, QStringView text)
{
    Node* parent = parentKey.isEmpty() ? m_root.get() : m_byKey.value(parentKey);
    if (parent == nullptr)
        throw Error(errors::ElementNotFound);
    auto added = std::make_unique<Node>();
    Node& node = *added;
    node.key = key.toString();
    node.text = text.toString();
    node.parent = parent;
    node.row = static_cast<int>(parent->children.size());
    node.position = nodeCount() + 1;
    if (!key.isEmpty()) {
        Node*& place = m_byKey[node.key];
        if (place != nullptr)
            throw Error(errors::KeyNotUnique);
        place = &node;
    }

    if (m_rebuilding == 0)
        beginInsertRows(indexFor(*parent), node.row, node.row);
    parent->children.push_back(&node);
    m_nodes.push_back(std::move(added));
    if (m_rebuilding == 0)
        endInsertRows();
}

void KeyedTreeModel::setText(int position, QStringView text)
{
    Node& node = nodeAt(position);
    node.text = text.toString();
    if (m_rebuilding == 0)
        Q_EMIT dataChanged(indexFor(node), indexFor(node), {Qt::DisplayRole});
}

void KeyedTreeModel::remove(int position)
{
    const Node& top = nodeAt(position);
    if (m_rebuilding == 0)
        beginRemoveRows(indexFor(*top.parent), top.row, top.row);
    std::vector<Node*>& siblings = top.parent->children;
    siblings.erase(siblings.begin() + top.row);
    for (auto row = static_cast<std::size_t>(top.row); row < siblings.size(); ++row)
        siblings[row]->row = static_cast<int>(row);

    std::vector<Node*> pending{m_nodes[static_cast<std::size_t>(position) - 1].get()};
    while (!pending.empty()) {
        Node& gone = *pending.back();
        pending.pop_back();
        gone.position = 0;
        m_byKey.remove(gone.key);
        pending.insert(pending.end(), gone.children.begin(), gone.children.end());
    }
    // A node is younger than everything above it, so the first of those that go is the top itself.
    const auto first = m_nodes.begin() + (position - 1);
    auto place = first;
    for (auto node = first; node != m_nodes.end(); ++node) {
        if ((*node)->position == 0) {
            m_removed.push_back(std::move(*node));
        } else {
            (*node)->position = static_cast<int>(place - m_nodes.begin()) + 1;
            *place++ = std::move(*node);
        }
    }
    m_nodes.erase(place, m_nodes.end());

    if (m_rebuilding == 0) {
        endRemoveRows();
        m_removed.clear();
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
    m_model.m_removed.clear();
}

} // namespace quillon
