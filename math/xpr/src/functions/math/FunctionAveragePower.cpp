#include <velmora/LogSite.h>
#include <velmora/math/Reductions.h>
#include <velmora/math/xpr/NoMemoryFunctionImpl.h>
#include <velmora/math/xpr/NoParamFunctionImpl.h>
#include <velmora/math/xpr/SingleVariableFunctionImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>

namespace Velmora::Math::Xpr {

class FunctionAveragePower : public SingleVariableFunctionImpl,
                             public NoParamFunctionImpl,
                             public NoMemoryFunctionImpl {
public:
    FunctionAveragePower() : SingleVariableFunctionImpl("averagePower", "x") {}

    bool calculate(const ArgumentMap& in_ArgNameToDomain, DoubleVector& out) override {
        const DoubleVector* const pInput = firstArgument(in_ArgNameToDomain);
        if (pInput == nullptr) {
            return false;
        }
        double dAveragePower = 0.0;
        if (!pInput->averagePower(dAveragePower)) {
            VELMORA_ASSERT_FAIL("in_ArgNameToDomain.begin()->second->averagePower(dAveragePower)");
            return false;
        }
        out.push_back(dAveragePower);
        return true;
    }

    static Reductions::Kind reductionOf(const FunctionAveragePower&) {
        return Reductions::Kind::AveragePower;
    }
};

[[maybe_unused]] static const bool s_bRegistered =
    UserFunctionImpl<FunctionAveragePower>::registerIn(Registry::getInstance(),
                                                       "the mean of the squares, one value");

} // namespace Velmora::Math::Xpr
