#include <velmora/math/xpr/NoMemoryFunctionImpl.h>
#include <velmora/math/xpr/NoParamFunctionImpl.h>
#include <velmora/math/xpr/SingleVariableFunctionImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>

namespace Velmora::Math::Xpr {

class FunctionSizeOf : public SingleVariableFunctionImpl,
                       public NoParamFunctionImpl,
                       public NoMemoryFunctionImpl {
public:
    FunctionSizeOf() : SingleVariableFunctionImpl("sizeOf", "x") {}

    bool calculate(const ArgumentMap& in_ArgNameToDomain, DoubleVector& out) override {
        const DoubleVector* const pInput = firstArgument(in_ArgNameToDomain);
        if (pInput == nullptr) {
            return false;
        }
        out.push_back(static_cast<double>(pInput->size()));
        return true;
    }
};

[[maybe_unused]] static const bool s_bRegistered = UserFunctionImpl<FunctionSizeOf>::registerIn(
    Registry::getInstance(), "the number of elements, one value");

} // namespace Velmora::Math::Xpr
