#include <velmora/math/LogFeature.h>
#include <velmora/math/xpr/SignalFeatureToFunctionAdaptorImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>

namespace Velmora::Math::Xpr {

class FunctionLog : public SignalFeatureToFunctionAdaptorImpl<LogFeature> {
public:
    FunctionLog() : SignalFeatureToFunctionAdaptorImpl("log") {}
};

[[maybe_unused]] static const bool s_bRegistered = UserFunctionImpl<FunctionLog>::registerIn(
    Registry::getInstance(), "the natural logarithm of each element");

} // namespace Velmora::Math::Xpr
