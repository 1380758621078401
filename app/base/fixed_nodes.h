#pragma once

#include <QStringView>

#include <array>

namespace quillon
{

/// The nodes that stand at the top of the category tree before any category. The value of each is its position.
enum class FixedNode {
    None, // in place of a node: nothing is above it, nothing is selected
    AllData,
    Definitions,
    UncategorisedDefinitions,
    UndefinedDefinitions,
    Documents,
    UncategorisedDocuments,
    Files,
    UncategorisedFiles,
    Categories, // the root of the user's categories
};

/// How a fixed node is built.
struct FixedNodeDesign {
    FixedNode node = FixedNode::None;
    QStringView key;
    QStringView text;
    FixedNode parent = FixedNode::None; // None: a root of the tree
};

/// The fixed nodes in their order.
inline constexpr std::array<FixedNodeDesign, 9> FixedNodes{{
    {FixedNode::AllData, u"DIV", u"形式別(全データ)", FixedNode::None},
    {FixedNode::Definitions, u"M_DIV", u"定義データ", FixedNode::AllData},
    {FixedNode::UncategorisedDefinitions, u"M_DIV_NOCATEGORY", u"未分類データ", FixedNode::Definitions},
    {FixedNode::UndefinedDefinitions, u"M_DIV_NODIF", u"未定義データ", FixedNode::Definitions},
    {FixedNode::Documents, u"R_DIV", u"文献データ", FixedNode::AllData},
    {FixedNode::UncategorisedDocuments, u"R_DIV_NOCATEGORY", u"未分類データ", FixedNode::Documents},
    {FixedNode::Files, u"F_DIV", u"ファイルデータ", FixedNode::AllData},
    {FixedNode::UncategorisedFiles, u"F_DIV_NOCATEGORY", u"未分類データ", FixedNode::Files},
    {FixedNode::Categories, u"CATEGORY", u"分類別", FixedNode::None},
}};

/// The position (from 1) of a fixed node in the tree, 0 for none.
constexpr int positionOf(FixedNode node)
{
    return static_cast<int>(node);
}

/// The key of a fixed node; none has an empty one.
constexpr QStringView keyOf(FixedNode node)
{
    return node == FixedNode::None ? QStringView() : FixedNodes[static_cast<std::size_t>(node) - 1].key;
}

/// A node beyond this position is a user category, whatever its key.
inline constexpr int LastFixedNode = static_cast<int>(FixedNodes.size());

static_assert(
    [] {
        int position = 0;
        for (const FixedNodeDesign& design : FixedNodes) {
            if (positionOf(design.node) != ++position || positionOf(design.parent) >= position)
                return false;
        }
        return position == positionOf(FixedNode::Categories);
    }(),
    "each stands at its position, after its parent, and the root of the categories is the last");

} // namespace quillon
