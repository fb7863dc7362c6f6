// A module of a host's that uses the library, and that the host loads and unloads.

#include <sstream>

#include <velmora/ParameterTrie.h>
#include <velmora/math/xpr/Evaluator.h>

using namespace Velmora;
using namespace Velmora::Math;
using namespace Velmora::Math::Xpr;

/// Loads, links and evaluates a script that doubles a number and adds up the last two; a negative
/// number if that fails.
extern "C" __attribute__((visibility("default"))) double runPlugin(double in_dNumber) {
    ParameterTrie configuration;
    configuration.setParameter("quillmark.math.xpr.scriptLoader.scriptsDir",
                               ParameterValue("/nonexistent"));
    std::istringstream stream("inputvar x\ny = sum(slidingWindow<2>(x * 2))\n");
    Evaluator evaluator;
    if (!evaluator.configure(configuration, TSHandle<VirtualFileSystem>()) ||
        !evaluator.addScript(stream, "s") || !evaluator.link(true) ||
        !evaluator.reconfigureExpressions()) {
        return -1.0;
    }
    const DoubleVector vNumber{in_dNumber};
    DoubleVector vSum;
    for (int iFrame = 0; iFrame != 3; ++iFrame) {
        if (!evaluator.getVariable("s.x")->setValue(vNumber) ||
            !evaluator.getExpression("s.y")->evaluate(vSum)) {
            return -1.0;
        }
    }
    return vSum[0];
}
