#pragma once

#include <velmora/math/xpr/Expression.h>

namespace Velmora::Math::Xpr {

/// An expression that stands for a vector outside the graph.
class VELMORA_EXPORT DomainValue : public virtual Expression {
public:
    /// From now on the value is that vector. It isn't copied: the caller keeps it alive and
    /// unchanged until evaluation has finished.
    virtual bool setValue(const DoubleVector& in_vValue) = 0;

    /// Would take a copy instead of a pointer. No implementation offers it: an assertion, and
    /// false.
    virtual bool setValueCopy(const DoubleVector& in_vValue) = 0;
};

} // namespace Velmora::Math::Xpr
