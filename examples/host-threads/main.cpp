// Evaluates one script on several threads at a time: each has a clone of the evaluator.

#include <cmath>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <sstream>
#include <thread>
#include <vector>

#include <velmora/ParameterTrie.h>
#include <velmora/math/xpr/Evaluator.h>

namespace {

using namespace Velmora::Math::Xpr;
using Velmora::Handle;
using Velmora::Math::DoubleVector;

constexpr int Channels = 4;
constexpr int Frames = 500;
constexpr std::size_t FrameSize = 160;

/// Parsed, linked and configured once, on one thread.
std::unique_ptr<Evaluator> makeEvaluator() {
    Velmora::ParameterTrie configuration;
    configuration.setParameter("quillmark.math.xpr.scriptLoader.scriptsDir",
                               Velmora::ParameterValue("."));
    std::istringstream script("inputvar frame\n"
                              "power = averagePower(frame)\n"
                              "level = sum(slidingWindow<10>(power)) / 10\n");
    auto pEvaluator = std::make_unique<Evaluator>();
    if (!pEvaluator->configure(configuration, Velmora::TSHandle<Velmora::VirtualFileSystem>()) ||
        !pEvaluator->addScript(script, "channel") || !pEvaluator->link(true) ||
        !pEvaluator->reconfigureExpressions()) {
        return nullptr;
    }
    return pEvaluator;
}

/// The level behind the last frame of a tone that grows, at a frequency of the channel's own; not a
/// number if a frame fails. Everything that it touches belongs to the evaluator.
double computeLevel(Evaluator& inout_Evaluator, int in_iChannel) {
    const Handle<Variable> pFrame = inout_Evaluator.getVariable("channel.frame");
    const Handle<Expression> pLevel = inout_Evaluator.getExpression("channel.level");
    DoubleVector vFrame;
    vFrame.resize(FrameSize);
    DoubleVector vLevel;
    for (int iFrame = 0; iFrame != Frames; ++iFrame) {
        for (std::size_t i = 0; i != FrameSize; ++i) {
            vFrame[i] = iFrame * std::sin(0.1 * (in_iChannel + 1) * static_cast<double>(i));
        }
        pFrame->setValue(vFrame);
        if (!pLevel->evaluate(vLevel) || vLevel.empty()) {
            return std::nan("");
        }
    }
    return vLevel[0];
}

} // namespace

int main() {
    const std::unique_ptr<Evaluator> pEvaluator = makeEvaluator();
    if (!pEvaluator) {
        return EXIT_FAILURE;
    }

    // Cloned here, ahead of the threads: an evaluator belongs to one thread at a time, also while
    // it is copied.
    std::vector<std::unique_ptr<Evaluator>> vClones;
    for (int iChannel = 0; iChannel != Channels; ++iChannel) {
        vClones.push_back(std::make_unique<Evaluator>(*pEvaluator));
    }
    std::vector<double> vLevels(Channels);
    std::vector<std::thread> vThreads;
    for (int iChannel = 0; iChannel != Channels; ++iChannel) {
        const auto uiChannel = static_cast<std::size_t>(iChannel);
        vThreads.emplace_back([&rLevel = vLevels[uiChannel], &rClone = *vClones[uiChannel],
                               iChannel] { rLevel = computeLevel(rClone, iChannel); });
    }
    for (std::thread& thread : vThreads) {
        thread.join();
    }

    // The source hasn't moved, and gives the same results one after the other.
    for (int iChannel = 0; iChannel != Channels; ++iChannel) {
        const double dLevel = vLevels[static_cast<std::size_t>(iChannel)];
        std::cout << "channel " << iChannel << ": " << dLevel << '\n';
        if (!pEvaluator->getExpression("channel.level")->reset() ||
            computeLevel(*pEvaluator, iChannel) != dLevel) {
            return EXIT_FAILURE;
        }
    }
    return EXIT_SUCCESS;
}
