#include <velmora/math/xpr/Xpr.h>

#include <boost/archive/polymorphic_text_iarchive.hpp>
#include <boost/archive/polymorphic_text_oarchive.hpp>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <sstream>

namespace {

using namespace Velmora;
using namespace Velmora::Math::Xpr;
using Velmora::Math::DoubleVector;

/// Feeds one frame to a script and looks at what comes out.
bool evaluatesAScript() {
    ParameterValue scriptsDir(".");
    ParameterTrie config;
    config.setParameter("quillmark.math.xpr.scriptLoader.scriptsDir", scriptsDir);

    Evaluator evaluator;
    std::istringstream script("inputvar frame\n"
                              "level = sum(frame) * 2\n");
    if (!evaluator.configure(config, TSHandle<VirtualFileSystem>()) ||
        !evaluator.addScript(script, "outside") || !evaluator.link(true) ||
        !evaluator.reconfigureExpressions()) {
        return false;
    }
    DoubleVector frame;
    frame.push_back(1.0);
    frame.push_back(2.5);
    DoubleVector level;
    evaluator.getVariable("outside.frame")->setValue(frame);
    if (!evaluator.getExpression("outside.level")->evaluate(level) || level.size() != 1 ||
        level.at(0) != 7.0) {
        return false;
    }
    return true;
}

/// Writes a computer through a pointer to the base class and reads it back. It waits for a shared
/// evaluator, so that it needs no script.
bool archivesAComputer() {
    std::stringstream stream;
    {
        Velmora::Math::Xpr::FeatureComputer computer("level");
        if (!computer.setEvaluator(nullptr) ||
            !computer.setXprFilename("outside", TSHandle<VirtualFileSystem>())) {
            return false;
        }
        boost::archive::polymorphic_text_oarchive archive(stream);
        Velmora::Math::FeatureComputer* const pComputer = &computer;
        archive << pComputer;
    }
    boost::archive::polymorphic_text_iarchive archive(stream);
    Velmora::Math::FeatureComputer* pComputer = nullptr;
    archive >> pComputer;
    const std::unique_ptr<Velmora::Math::FeatureComputer> pOwner(pComputer);
    return dynamic_cast<Velmora::Math::Xpr::FeatureComputer*>(pComputer) != nullptr;
}

} // namespace

int main() {
    const bool bEvaluates = evaluatesAScript();
    const bool bArchives = archivesAComputer();
    std::cout << "evaluates a script: " << bEvaluates << "\narchives a computer: " << bArchives
              << '\n';
    return bEvaluates && bArchives ? EXIT_SUCCESS : EXIT_FAILURE;
}
