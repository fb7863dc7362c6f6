#include <velmora/math/SignalFeature.h>

namespace Velmora::Math {

const char* SignalFeature::getFeatureTypeString(FeatureType in_type) {
    switch (in_type) {
    case SlidingWindow:
        return "SlidingWindow";
    case TappedDelay:
        return "TappedDelay";
    case Debounce:
        return "Debounce";
    case DebounceOnOff:
        return "DebounceOnOff";
    }
    return "";
}

} // namespace Velmora::Math
