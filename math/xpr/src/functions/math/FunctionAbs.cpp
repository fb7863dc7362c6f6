#include <velmora/math/AbsFeature.h>
#include <velmora/math/xpr/SignalFeatureToFunctionAdaptorImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>

namespace Velmora::Math::Xpr {

class FunctionAbs : public SignalFeatureToFunctionAdaptorImpl<AbsFeature> {
public:
    FunctionAbs() : SignalFeatureToFunctionAdaptorImpl("abs") {}
};

[[maybe_unused]] static const bool s_bRegistered = UserFunctionImpl<FunctionAbs>::registerIn(
    Registry::getInstance(), "the absolute value of each element");

} // namespace Velmora::Math::Xpr
