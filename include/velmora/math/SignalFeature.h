#pragma once

#include <velmora/Cloneable.h>
#include <velmora/Export.h>

namespace Velmora::Math {

class DoubleVector;

/// A computation that turns a vector of doubles, such as the samples of a frame, into another.
///
/// A copy and a clone carry the configuration and the memory between frames: a clone goes on where
/// its source stood, and the two are independent from then on. The caller owns a clone. One thread
/// at a time uses a feature. The result of a computation has the same bits on every processor.
class VELMORA_EXPORT SignalFeature : public virtual Cloneable {
public:
    /// The features whose parameters bear a prefix of their type. The values never change, and no
    /// value is used twice.
    enum FeatureType : int {
        SlidingWindow = 17,
        TappedDelay = 18,
        Debounce = 19,
        DebounceOnOff = 21,
    };

    /// The text that names the type: "SlidingWindow", "TappedDelay", "Debounce", "DebounceOnOff",
    /// and an empty text for any other value. In lower case and followed by "." it is the prefix of
    /// the feature's parameter keys, as in "slidingwindow.WindowSize".
    static const char* getFeatureTypeString(FeatureType in_type);

    /// Computes the result of one frame. Returns true, and the result replaces what the output
    /// held; or returns false and leaves the output alone. The output may be the input itself.
    /// Keeps no reference to either. Allocates nothing once the output and the feature have seen a
    /// frame of that size.
    virtual bool compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) = 0;
};

} // namespace Velmora::Math
