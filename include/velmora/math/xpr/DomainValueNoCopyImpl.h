#pragma once

#include <velmora/math/xpr/DomainValueBase.h>

namespace Velmora::Math::Xpr {

/// A domain value that points at the host's vector.
///
/// The vector is neither copied nor owned: whoever sets it keeps it alive for as long as it is
/// used. It is read by evaluation, and by a name or a dump that somebody asks for; by nothing else.
class VELMORA_EXPORT DomainValueNoCopyImpl : public virtual DomainValue, public DomainValueBase {
public:
    /// Points at that vector.
    explicit DomainValueNoCopyImpl(const DoubleVector& in_vValue);

    /// Invalidates what depends on the node, if the node is valid, and points at the new vector.
    /// Allocates nothing.
    bool setValue(const DoubleVector& in_vValue) override;
    bool setValueCopy(const DoubleVector& in_vValue) override;

    const DoubleVector& getValue() const override;
    DomainValueBase* createNew(const DoubleVector& in_vValue) const override;

    /// Does the node point at that very vector? Doesn't read it.
    bool pointsAt(const DoubleVector& in_vValue) const { return &*m_pVector == &in_vValue; }

protected:
    /// Goes past `getValue`, whose log line reads the vector.
    Handle<ExpressionBaseImpl> copy_i(ExpressionImplCopier& inout_Copier) const override;

private:
    friend class DomainValueKeeper;
    friend class SealedPlan;

    /// Does anybody read the lines of `getValue`?
    static bool areReadsLogged();

    LimitedObjPtr<const DoubleVector> m_pVector;
};

} // namespace Velmora::Math::Xpr
