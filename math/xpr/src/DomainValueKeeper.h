#pragma once

#include <unordered_map>

#include <velmora/Handle.h>
#include <velmora/math/xpr/DomainValueNoCopyImpl.h>

namespace Velmora::Math::Xpr {

class Dictionnary;

/// Keeps the inputs of a graph where they are while the graph is copied.
///
/// A copied input shares the domain value of its source at first, and turns it to the copy's own
/// initial value. For the life of the keeper the domain values count as not current, so that this
/// invalidates nothing above them; its end gives them back their vectors and their validity. Nobody
/// may evaluate the graph in between.
class DomainValueKeeper {
public:
    DomainValueKeeper() = default;
    ~DomainValueKeeper();
    DomainValueKeeper(const DomainValueKeeper&) = delete;
    DomainValueKeeper& operator=(const DomainValueKeeper&) = delete;

    /// Keeps the domain value of every `DomainVariableImpl` that the dictionary reaches. Reads no
    /// vector.
    void keepInputsOf(const Dictionnary& in_Dictionnary);

    bool isKept(const ExpressionBaseImpl& in_Expression) const;

private:
    struct State {
        Handle<DomainValueNoCopyImpl> m_pDomainValue;
        LimitedObjPtr<const DoubleVector> m_pVector;
        bool m_bValid;
    };

    void keep(const Handle<DomainValueNoCopyImpl>& in_pDomainValue);

    std::unordered_map<unsigned long, State> m_mapStates;
};

} // namespace Velmora::Math::Xpr
