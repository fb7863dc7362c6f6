#include <velmora/math/IndexOfMaxFeature.h>
#include <velmora/math/xpr/SignalFeatureToFunctionAdaptorImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>

namespace Velmora::Math::Xpr {

class FunctionIndexOfMax : public SignalFeatureToFunctionAdaptorImpl<IndexOfMaxFeature> {
public:
    FunctionIndexOfMax() : SignalFeatureToFunctionAdaptorImpl("indexOfMax") {}
};

[[maybe_unused]] static const bool s_bRegistered = UserFunctionImpl<FunctionIndexOfMax>::registerIn(
    Registry::getInstance(), "the index of the largest element, counted from 0, one value");

} // namespace Velmora::Math::Xpr
