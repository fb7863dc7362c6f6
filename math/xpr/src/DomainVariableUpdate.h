#pragma once

#include <velmora/CachedLLLogger.h>
#include <velmora/Handle.h>
#include <velmora/math/xpr/DomainValueBase.h>

namespace Velmora::Math::Xpr {

class Dictionnary;
class DomainValueKeeper;
class DomainVariableImpl;
class ExpressionImplCopier;

/// Gives the inputs of a copied graph domain values of their own, which they shared with the source
/// up to here. Inputs of the copy that shared one share one again.
class DomainVariableUpdate {
public:
    DomainVariableUpdate(const CachedLLLogger& in_Logger, ExpressionImplCopier& inout_Copier,
                         const DomainValueKeeper& in_SourceInputs);

    /// Updates the inputs among the entries, in order, and then those that only the graph below
    /// the entries holds.
    void run(const Dictionnary& in_Copy);

private:
    void update(DomainVariableImpl& inout_Variable);
    /// Moves every parent that isn't the source's from the old value to the new one. The variable
    /// that is being updated gets its value set by the caller.
    void moveParents(const DomainVariableImpl& in_Variable, DomainValueBase& inout_OldValue,
                     const Handle<DomainValueBase>& in_pNewValue);
    void logParent(const ExpressionBaseImpl& in_Parent) const;

    const CachedLLLogger& m_Logger;
    ExpressionImplCopier& m_Copier;
    const DomainValueKeeper& m_SourceInputs;
};

} // namespace Velmora::Math::Xpr
