#pragma once

#include <cstddef>
#include <memory_resource>
#include <unordered_map>

#include <velmora/Export.h>
#include <velmora/Handle.h>
#include <velmora/MemAccounting.h>
#include <velmora/Object.h>

namespace Velmora::Math::Xpr {

class ExpressionBaseImpl;
class ParameterImpl;

/// The memory of one copying operation: which node and which parameter has which copy, so that
/// what was shared in the source is shared in the copy.
///
/// Serves one operation, which may span many roots, and is destroyed after it. Holds the copies
/// alive until then.
class VELMORA_EXPORT ExpressionImplCopier : public virtual Object {
public:
    VELMORA_MEM_ACCOUNT_NO_SIZE("ExpressionImplCopier")

    ExpressionImplCopier();

    /// For who knows about how many nodes there are to copy.
    explicit ExpressionImplCopier(std::size_t in_uiNodes);
    ~ExpressionImplCopier() override;

    /// The copy that was registered for the node; null if there is none.
    Handle<ExpressionBaseImpl> getCopy(const ExpressionBaseImpl& in_Source) const;

    /// The copy that was registered for the parameter; null if there is none.
    Handle<ParameterImpl> getParameterCopy(const ParameterImpl& in_Source) const;

    /// Remembers a copy. False for a null copy, and for a node that has one already: the first
    /// stays.
    bool registerCopy(const ExpressionBaseImpl& in_Source,
                      const Handle<ExpressionBaseImpl>& in_pCopy);
    bool registerParameter(const ParameterImpl& in_Source, const Handle<ParameterImpl>& in_pCopy);

private:
    /// Entries come by the thousand and go together.
    std::pmr::monotonic_buffer_resource m_Memory;
    /// Room that is made for the first copy: there may be none.
    std::size_t m_uiExpected = 0;
    /// Two maps, since expressions and parameters are numbered independently.
    std::pmr::unordered_map<unsigned long, Handle<ExpressionBaseImpl>> m_mapExpressions;
    std::pmr::unordered_map<unsigned long, Handle<ParameterImpl>> m_mapParameters;
};

} // namespace Velmora::Math::Xpr
