#pragma once

#include <cstddef>

#include <velmora/Handle.h>

namespace Velmora::Math::Xpr {

/// A node that a rule of the grammar has built, how many operators lie between it and the deepest
/// leaf below it, and how many indices it joins if it is a list of several.
template <class T>
struct ParsedNode {
    Handle<T> m_pNode;
    std::size_t m_uiDepth = 0;
    std::size_t m_uiIndices = 0;

    ParsedNode() = default;
    ParsedNode(Handle<T> in_pNode, std::size_t in_uiDepth = 0)
        : m_pNode(std::move(in_pNode)), m_uiDepth(in_uiDepth) {}

    template <class U>
    ParsedNode(const ParsedNode<U>& in_Other)
        : m_pNode(in_Other.m_pNode), m_uiDepth(in_Other.m_uiDepth) {}
};

} // namespace Velmora::Math::Xpr
