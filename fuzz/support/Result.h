#pragma once

#include <vector>

#include <velmora/math/xpr/Expression.h>

namespace Velmora::Fuzz {

/// What an expression gave.
struct Result {
    bool m_bSuccess = false;
    std::vector<double> m_vElements;

    static Result of(Math::Xpr::Expression& inout_Expression);

    /// The same bits; a NaN is equal to any other.
    bool operator==(const Result& in_Other) const;
    bool operator!=(const Result& in_Other) const { return !(*this == in_Other); }
};

/// Ends the process, which libFuzzer reports with the input, if what must hold doesn't.
void check(bool in_bHolds, const char* in_szWhat);

/// The nearest float, an infinity where there is none.
float toFloat(double in_dNumber);

} // namespace Velmora::Fuzz
