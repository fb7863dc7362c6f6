#pragma once

#include <cstddef>
#include <memory_resource>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include <velmora/Handle.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>

namespace Velmora::Math::Xpr {

/// Makes the copy that each use of a resolved expression gets.
///
/// A copy shares the variables of the linked graph with its prototype and with all other copies, so
/// that a function reads the input that the host sets. It shares nothing else.
///
/// Copies of functions that call functions multiply: one that calls another twice, which calls a
/// third twice, and so on through forty definitions, would fill any memory.
class PrototypeCopier {
public:
    /// The nodes that one run may make by copying; far above what a script for a frame loop can
    /// need, and some hundred megabytes.
    static constexpr std::size_t MaxNodes = 500000;

    /// Copies share this variable from now on.
    void share(const ExpressionBaseImpl& in_Variable);
    bool isShared(const ExpressionBaseImpl& in_Variable) const {
        return m_SharedIds.count(in_Variable.getId()) != 0;
    }

    /// A copy of the prototype, which doesn't change any more. Null if it would exceed the limit,
    /// and where the prototype can't be copied.
    Handle<ExpressionBaseImpl> copy(const Handle<ExpressionBaseImpl>& in_pPrototype);

    /// Would a copy of the prototype stay within the limit?
    bool fits(const Handle<ExpressionBaseImpl>& in_pPrototype);

private:
    struct Extent {
        std::size_t m_uiNodes = 0;
        std::vector<Handle<ExpressionBaseImpl>> m_vShared;
    };

    const Extent& extentOf(const Handle<ExpressionBaseImpl>& in_pPrototype);
    Extent measure(const Handle<ExpressionBaseImpl>& in_pPrototype) const;

    std::pmr::monotonic_buffer_resource m_Memory;
    std::pmr::unordered_set<unsigned long> m_SharedIds{&m_Memory};
    std::unordered_map<unsigned long, Extent> m_Extents;
    std::size_t m_uiCopiedNodes = 0;
};

} // namespace Velmora::Math::Xpr
