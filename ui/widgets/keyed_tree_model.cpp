#include "ui/widgets/keyed_tree_model.h"

#include "app/base/error.h"

#include <algorithm>
#include <deque>
#include <memory>
#include <utility>

namespace quillon
{

// With tens of thousands of nodes most of the time goes into finding them in memory: what is looked at in finding a node
// and in adding one below it stands in one cache line.
struct alignas(64) KeyedTreeModel::Node {
    static constexpr qsizetype ShortKey = 12; // characters of a category six levels deep

    QStringView key;
    char16_t shortKey[ShortKey]; // what `key` shows unless it is longer
    Node* youngest = nullptr;    // child
    int childCount = 0;
    int position = 0; // right as long as it is before the first stale one
    int row = 0;      // among its siblings
    bool removed = false;

    QStringView text;
    Node* parent = nullptr;
    Node* older = nullptr;                  // the sibling that was the youngest child when this one came
    std::vector<Node*>* children = nullptr; // by row, up to those that nobody has asked for yet
};

namespace
{

/// Keeps keys and names one behind the other: with tens of thousands of them, each in a place of its own, most of the
/// time would go into finding them in memory again.
class Texts
{
public:
    QStringView keep(QStringView text)
    {
        constexpr qsizetype BlockSize = 32 * 1024; // UTF-16 code units
        if (text.isEmpty())
            return {};
        if (m_size - m_used < text.size()) {
            m_size = std::max(BlockSize, text.size());
            m_blocks.push_back(std::make_unique_for_overwrite<char16_t[]>(static_cast<std::size_t>(m_size)));
            m_used = 0;
        }
        char16_t* place = m_blocks.back().get() + m_used;
        std::copy_n(text.utf16(), text.size(), place);
        m_used += text.size();
        return {place, text.size()};
    }

private:
    std::vector<std::unique_ptr<char16_t[]>> m_blocks;
    qsizetype m_used = 0; // of the last block
    qsizetype m_size = 0;
};

} // namespace

/// What a tree is made of; everything stays where it is as long as a view may look at it.
struct KeyedTreeModel::Stock {
    static constexpr quint32 BlockSize = 1024;

    /// A further node; its number is that of the nodes made so far, removed ones included.
    Node& make()
    {
        if (count % BlockSize == 0)
            blocks.push_back(std::make_unique<Node[]>(BlockSize));
        return node(++count);
    }
    Node& node(quint32 number) const { return blocks[(number - 1) / BlockSize][(number - 1) % BlockSize]; }

    std::vector<std::unique_ptr<Node[]>> blocks;
    quint32 count = 0;
    std::deque<std::vector<Node*>> lists; // of children; not the nodes' own, which can so be dropped unseen
    Texts texts;
};

QStringView KeyedTreeModel::KeyOfNode::operator()(quint32 number) const
{
    return model->m_stock->node(number).key;
}

KeyedTreeModel::KeyedTreeModel(QObject* parent)
    : QAbstractItemModel(parent), m_stock(std::make_unique<Stock>()), m_byKey(KeyOfNode{this})
{
}

KeyedTreeModel::~KeyedTreeModel() = default;

KeyedTreeModel::Node* KeyedTreeModel::nodeOf(const QModelIndex& index) const
{
    return index.isValid() ? static_cast<Node*>(index.internalPointer()) : nullptr;
}

KeyedTreeModel::Node* KeyedTreeModel::nodeOf(quint32 number) const
{
    return number == 0 ? nullptr : &m_stock->node(number);
}

KeyedTreeModel::Node* KeyedTreeModel::nodeAt(int position) const
{
    if (position < 1 || position > nodeCount())
        throw Error(errors::IndexOutOfBounds);
    return m_nodes[static_cast<std::size_t>(position) - 1];
}

QModelIndex KeyedTreeModel::indexFor(Node* node) const
{
    return node == nullptr ? QModelIndex() : createIndex(node->row, 0, node);
}

const std::vector<KeyedTreeModel::Node*>& KeyedTreeModel::childrenOf(Node* node) const
{
    if (node == nullptr)
        return m_roots;
    // Made when they are first shown: most branches never are, and adding to a list of each takes longer than all else.
    if (node->children == nullptr)
        node->children = &m_stock->lists.emplace_back();
    std::vector<Node*>& children = *node->children;
    const auto known = static_cast<int>(children.size());
    children.resize(static_cast<std::size_t>(node->childCount));
    for (Node* child = node->youngest; child != nullptr && child->row >= known; child = child->older)
        children[static_cast<std::size_t>(child->row)] = child;
    return children;
}

int KeyedTreeModel::childCountOf(const Node* node) const
{
    return node != nullptr ? node->childCount : static_cast<int>(m_roots.size());
}

QModelIndex KeyedTreeModel::index(int row, int column, const QModelIndex& parent) const
{
    if (row < 0 || column != 0 || row >= rowCount(parent))
        return {};
    return createIndex(row, 0, childrenOf(nodeOf(parent))[static_cast<std::size_t>(row)]);
}

QModelIndex KeyedTreeModel::parent(const QModelIndex& child) const
{
    const Node* node = nodeOf(child);
    return node == nullptr ? QModelIndex() : indexFor(node->parent);
}

int KeyedTreeModel::rowCount(const QModelIndex& parent) const
{
    return childCountOf(nodeOf(parent));
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
    return node->text.toString();
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
    // While the tree is made anew a view may still ask for a node that it had before.
    const auto place = static_cast<std::size_t>(node->position) - 1;
    return place < m_nodes.size() && m_nodes[place] == node ? node->position : 0;
}

bool KeyedTreeModel::contains(QStringView key) const
{
    return !key.isEmpty() && find(key) != nullptr;
}

KeyedTreeModel::Node* KeyedTreeModel::find(QStringView key) const
{
    if (m_lastFound == nullptr || m_lastFound->key != key)
        m_lastFound = nodeOf(m_byKey.find(key));
    return m_lastFound;
}

int KeyedTreeModel::position(QStringView key) const
{
    if (!key.isEmpty())
        return positionOf(find(key));
    for (const Node* node : m_nodes) {
        if (node->key.isEmpty())
            return positionOf(node);
    }
    return 0;
}

int KeyedTreeModel::position(const QModelIndex& index) const
{
    return positionOf(nodeOf(index));
}

QString KeyedTreeModel::key(int position) const
{
    return nodeAt(position)->key.toString();
}

QString KeyedTreeModel::text(int position) const
{
    return nodeAt(position)->text.toString();
}

int KeyedTreeModel::parentPosition(int position) const
{
    return positionOf(nodeAt(position)->parent);
}

bool KeyedTreeModel::hasChildren(int position) const
{
    return childCountOf(nodeAt(position)) > 0;
}

QModelIndex KeyedTreeModel::indexOf(int position) const
{
    return indexFor(nodeAt(position));
}

void KeyedTreeModel::clear()
{
    const Rebuild rebuild(*this);
    m_retired.push_back(std::exchange(m_stock, std::make_unique<Stock>()));
    m_nodes.clear();
    m_roots.clear();
    m_byKey.clear();
    m_lastFound = nullptr;
    m_numbered = 0;
}

void KeyedTreeModel::add(QStringView parentKey, QStringView key, QStringView text)
{
    Node* parent = nullptr;
    if (!parentKey.isEmpty()) {
        parent = find(parentKey);
        if (parent == nullptr)
            throw Error(errors::ElementNotFound);
    }
    if (!key.isEmpty() && m_byKey.find(key) != 0)
        throw Error(errors::KeyNotUnique);

    const int row = childCountOf(parent);
    const QStringView ownText = m_stock->texts.keep(text);
    if (m_rebuilding == 0)
        beginInsertRows(indexFor(parent), row, row);
    Node& node = m_stock->make();
    node.key =
        key.size() <= Node::ShortKey
            ? QStringView(node.shortKey, std::copy(key.utf16(), key.utf16() + key.size(), node.shortKey))
            : m_stock->texts.keep(key);
    node.text = ownText;
    node.parent = parent;
    node.row = row;
    if (parent != nullptr) {
        node.older = std::exchange(parent->youngest, &node);
        ++parent->childCount;
    } else {
        m_roots.push_back(&node);
    }
    if (!key.isEmpty())
        m_byKey.insert(m_stock->count);
    m_nodes.push_back(&node);
    if (m_numbered == nodeCount() - 1)
        node.position = ++m_numbered;
    if (m_rebuilding == 0)
        endInsertRows();
}

void KeyedTreeModel::setText(int position, QStringView text)
{
    Node* node = nodeAt(position);
    node->text = m_stock->texts.keep(text);
    if (m_rebuilding == 0)
        Q_EMIT dataChanged(indexFor(node), indexFor(node), {Qt::DisplayRole});
}

void KeyedTreeModel::remove(int position)
{
    Node* node = nodeAt(position);
    if (m_rebuilding == 0)
        beginRemoveRows(indexFor(node->parent), node->row, node->row);
    childrenOf(node->parent); // all of them are listed from now on
    std::vector<Node*>& siblings = node->parent != nullptr ? *node->parent->children : m_roots;
    siblings.erase(siblings.begin() + node->row);
    for (auto row = static_cast<std::size_t>(node->row); row < siblings.size(); ++row)
        siblings[row]->row = static_cast<int>(row);
    if (node->parent != nullptr) {
        --node->parent->childCount;
        node->parent->youngest = siblings.empty() ? nullptr : siblings.back();
    }

    std::vector<Node*> pending{node};
    while (!pending.empty()) {
        Node* gone = pending.back();
        pending.pop_back();
        gone->removed = true;
        if (!gone->key.isEmpty())
            m_byKey.remove(gone->key);
        const std::vector<Node*>& below = childrenOf(gone);
        pending.insert(pending.end(), below.begin(), below.end());
    }
    m_lastFound = nullptr;
    // A node is younger than everything above it, so the first of those that go is the node itself.
    const auto first = m_nodes.begin() + (position - 1);
    m_nodes.erase(std::remove_if(first, m_nodes.end(), [](const Node* other) { return other->removed; }),
                  m_nodes.end());
    m_numbered = std::min(m_numbered, position - 1);

    if (m_rebuilding == 0)
        endRemoveRows();
}

KeyedTreeModel::Rebuild::Rebuild(KeyedTreeModel& model) : m_model(model)
{
    if (m_model.m_rebuilding++ == 0)
        m_model.beginResetModel();
}

void KeyedTreeModel::Rebuild::expect(qsizetype nodes)
{
    m_model.m_byKey.reserve(m_model.m_byKey.size() + static_cast<std::size_t>(nodes));
    m_model.m_nodes.reserve(m_model.m_nodes.size() + static_cast<std::size_t>(nodes));
}

KeyedTreeModel::Rebuild::~Rebuild()
{
    if (--m_model.m_rebuilding > 0)
        return;
    m_model.endResetModel();
    m_model.m_retired.clear();
}

} // namespace quillon
