#include <velmora/ParameterTrie.h>
#include <velmora/math/xpr/Xpr.h>

#include <cstdlib>
#include <iostream>
#include <sstream>

using namespace Velmora;
using namespace Velmora::Math;
using namespace Velmora::Math::Xpr;

/// Feeds one frame to a script and looks at what comes out.
int main() {
    ParameterValue scriptsDir(".");
    ParameterTrie config;
    config.setParameter("quillmark.math.xpr.scriptLoader.scriptsDir", scriptsDir);

    Evaluator evaluator;
    std::istringstream script("inputvar frame\n"
                              "level = sum(frame) * 2\n");
    if (!evaluator.configure(config, TSHandle<VirtualFileSystem>()) ||
        !evaluator.addScript(script, "outside") || !evaluator.link(true) ||
        !evaluator.reconfigureExpressions()) {
        return EXIT_FAILURE;
    }
    DoubleVector frame;
    frame.push_back(1.0);
    frame.push_back(2.5);
    DoubleVector level;
    evaluator.getVariable("outside.frame")->setValue(frame);
    if (!evaluator.getExpression("outside.level")->evaluate(level) || level.size() != 1 ||
        level.at(0) != 7.0) {
        return EXIT_FAILURE;
    }
    std::cout << "level = " << level.at(0) << '\n';
    return EXIT_SUCCESS;
}
