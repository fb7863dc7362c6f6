#pragma once

#include <velmora/math/DoubleVector.h>

#include <memory>

namespace Velmora::Testing {

/// A vector of a host, which the host frees while a graph still points at it: whoever reads it from
/// then on is caught by the address sanitizer.
class HostVector {
public:
    explicit HostVector(double in_dValue) : m_pVector(new Math::DoubleVector{in_dValue}) {}

    const Math::DoubleVector& operator*() const { return *m_pVector; }
    void free() { m_pVector.reset(); }

private:
    std::unique_ptr<Math::DoubleVector> m_pVector;
};

} // namespace Velmora::Testing
