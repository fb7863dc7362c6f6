#pragma once

#include <velmora/Export.h>
#include <velmora/math/DoubleVector.h>
#include <velmora/math/SlidingWindowFeature.h>

namespace Velmora::Math {

/// A tape: a sliding window whose result has the full length from the first frame on.
///
/// A place that no value has reached yet, counted from the oldest at index 0, holds the padding
/// value of its index modulo their number; the unfilled places stand in front, where the oldest
/// are. Without padding values only the used places come out. If so configured, the number of used
/// places comes first, ahead of the tape. Otherwise as SlidingWindowFeature.
class VELMORA_EXPORT TappedDelayFeature : public SlidingWindowFeature {
public:
    TappedDelayFeature();
    Cloneable* clone() const override;
    bool compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) override;

    /// Reads "tappeddelay.TapeSize", an integer above 0, the number of places, of which a new value
    /// empties the tape; "tappeddelay.IncludeUsedTapeSizeInOutput", a boolean; and
    /// "tappeddelay.PaddingValues", a number, or a text of numbers with blanks or commas between
    /// them, which may be empty. The last two act from the next frame on.
    bool configure(const ROConfiguration& in_config) override;

private:
    bool m_bIncludeUsedTapeSizeInOutput = false;
    DoubleVector m_vPaddingValues;
};

} // namespace Velmora::Math
