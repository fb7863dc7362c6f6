// Adds a built-in function of the host's own and calls it from a script.

#include <cstdlib>
#include <iostream>
#include <sstream>

#include <velmora/ParameterTrie.h>
#include <velmora/math/xpr/Evaluator.h>
#include <velmora/math/xpr/NoMemoryFunctionImpl.h>
#include <velmora/math/xpr/NoParamFunctionImpl.h>
#include <velmora/math/xpr/SingleVariableFunctionImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>

namespace {

using namespace Velmora::Math::Xpr;
using Velmora::Math::DoubleVector;

/// `zeroCrossings(x)`: how often the signal changes its sign, one value. The three bases answer for
/// a function of one argument, without parameters and without memory between frames.
class ZeroCrossings : public SingleVariableFunctionImpl,
                      public NoParamFunctionImpl,
                      public NoMemoryFunctionImpl {
public:
    ZeroCrossings() : SingleVariableFunctionImpl("zeroCrossings", "x") {}

    bool calculate(const ArgumentMap& in_ArgNameToDomain, DoubleVector& out) override {
        const DoubleVector* const pSignal = findArgument(in_ArgNameToDomain);
        if (pSignal == nullptr) {
            return false;
        }
        double dCrossings = 0.0;
        for (std::size_t i = 1; i < pSignal->size(); ++i) {
            dCrossings += ((*pSignal)[i - 1] < 0.0) != ((*pSignal)[i] < 0.0) ? 1.0 : 0.0;
        }
        out.push_back(dCrossings);
        return true;
    }
};

} // namespace

int main() {
    // Ahead of every evaluator and thread. False would mean that the name is taken.
    if (!UserFunctionImpl<ZeroCrossings>::registerIn(
            Registry::getInstance(), "how often the sign of x changes, one value")) {
        return EXIT_FAILURE;
    }

    Velmora::ParameterTrie configuration;
    configuration.setParameter("quillmark.math.xpr.scriptLoader.scriptsDir",
                               Velmora::ParameterValue("."));
    std::istringstream script("inputvar frame\n"
                              "rate = zeroCrossings(frame) / sizeOf(frame)\n");
    Evaluator evaluator;
    if (!evaluator.configure(configuration, Velmora::TSHandle<Velmora::VirtualFileSystem>()) ||
        !evaluator.addScript(script, "noise") || !evaluator.link(true) ||
        !evaluator.reconfigureExpressions()) {
        return EXIT_FAILURE;
    }
    const DoubleVector vFrame{0.5, -0.5, 0.25, 0.75};
    DoubleVector vRate;
    evaluator.getVariable("noise.frame")->setValue(vFrame);
    if (!evaluator.getExpression("noise.rate")->evaluate(vRate)) {
        return EXIT_FAILURE;
    }
    std::cout << "rate = " << vRate << '\n';
    return EXIT_SUCCESS;
}
