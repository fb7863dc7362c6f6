// The example scripts over many frames: what they give is finite, and nothing is allocated.

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>
#include <vector>

#include <velmora/DiskFileSystem.h>
#include <velmora/MemAccounts.h>
#include <velmora/ParameterTrie.h>
#include <velmora/math/xpr/Evaluator.h>

#include "support/AllocationCounter.h"

namespace {

using namespace Velmora;
using namespace Velmora::Math;
using namespace Velmora::Math::Xpr;

/// More than the longest memory of a script: a window grows until it is full.
constexpr std::size_t WarmFrames = 600;
constexpr std::size_t CountedFrames = 10000;

struct Example {
    std::string m_strScript;
    std::string m_strInput;
    std::size_t m_uiInputSize;
    std::vector<std::string> m_vFeatures;
};

std::vector<Example> listExamples() {
    return {
        {"loudness", "frame", 160, {"level", "loudness", "peak"}},
        {"endpointer", "frame", 160, {"level", "smooth", "speech"}},
        {"peak", "spectrum", 81, {"frequency"}},
        {"dtmf", "frame", 160, {"key"}},
        {"vad", "frame", 160, {"speech"}},
        {"progress", "frame", 160, {"dial", "busy", "ringback"}},
        {"envelope", "frame", 160, {"strength", "depth"}},
    };
}

/// Something like a voice: louder and quieter, from -1 to 1, never the same twice in a row.
DoubleVector makeInput(std::size_t in_uiFrame, std::size_t in_uiSize) {
    DoubleVector vInput;
    const double dLoudness = 0.5 + 0.45 * std::sin(0.05 * static_cast<double>(in_uiFrame));
    for (std::size_t ui = 0; ui != in_uiSize; ++ui) {
        vInput.push_back(dLoudness *
                         std::abs(std::sin(0.1 * static_cast<double>(ui + 7 * in_uiFrame))));
    }
    return vInput;
}

class ExampleScriptsTest : public testing::TestWithParam<Example> {
protected:
    /// Links an example and evaluates it over the warming and the counted frames.
    static std::size_t countAllocations(const Example& in_Example) {
        ParameterTrie config;
        config.setParameter("quillmark.math.xpr.scriptLoader.scriptsDir",
                            ParameterValue(VELMORA_SOURCE_DIR "/examples/scripts"));
        Evaluator evaluator;
        EXPECT_TRUE(evaluator.configure(config, TSHandle<VirtualFileSystem>(new DiskFileSystem)));
        EXPECT_TRUE(evaluator.addScript(in_Example.m_strScript.c_str()));
        EXPECT_TRUE(evaluator.link(true));
        const std::string strPrefix = in_Example.m_strScript + '.';
        const Handle<Variable> pInput =
            evaluator.getVariable((strPrefix + in_Example.m_strInput).c_str());
        std::vector<Handle<Expression>> vFeatures;
        for (const std::string& strName : in_Example.m_vFeatures) {
            vFeatures.push_back(evaluator.getExpression((strPrefix + strName).c_str()));
            EXPECT_FALSE(vFeatures.back().isNull()) << strName;
            EXPECT_TRUE(vFeatures.back()->configure(TSHandle<VirtualFileSystem>()));
        }
        std::vector<DoubleVector> vInputs;
        for (std::size_t ui = 0; ui != WarmFrames; ++ui) {
            vInputs.push_back(makeInput(ui, in_Example.m_uiInputSize));
        }
        std::size_t uiFinite = 0;
        const auto run = [&](std::size_t in_uiFrames) {
            LimitedObjPtr<DoubleVector> pValue;
            for (std::size_t uiFrame = 0; uiFrame != in_uiFrames; ++uiFrame) {
                pInput->setValue(vInputs[uiFrame % vInputs.size()]);
                for (const Handle<Expression>& pFeature : vFeatures) {
                    uiFinite += pFeature->evaluate(pValue) && !pValue.isNull() &&
                                std::isfinite(*pValue->begin());
                }
            }
        };
        run(WarmFrames);
        const Testing::AllocationCounter counter;
        run(CountedFrames);
        const std::size_t uiAllocations = counter.allocations();
        EXPECT_EQ(uiFinite, (WarmFrames + CountedFrames) * vFeatures.size());
        return uiAllocations;
    }

    /// Blocks that live, by account.
    static std::map<std::string, std::size_t> countBlocks() {
        std::map<std::string, std::size_t> mapBlocks;
        for (const MemAccount& account : MemAccounts::snapshot()) {
            if (account.liveBlocks != 0) {
                mapBlocks[account.name] = account.liveBlocks;
            }
        }
        return mapBlocks;
    }
};

TEST_P(ExampleScriptsTest, TenThousandFramesAllocateNothing) {
    EXPECT_EQ(countAllocations(GetParam()), 0U);
}

TEST_P(ExampleScriptsTest, EveryAccountIsBackWhereItStood) {
    // The first use leaves what lives as long as the process: loggers, generators.
    countAllocations(GetParam());
    const std::map<std::string, std::size_t> mapBefore = countBlocks();
    countAllocations(GetParam());
    EXPECT_EQ(countBlocks(), mapBefore);
}

INSTANTIATE_TEST_SUITE_P(Examples, ExampleScriptsTest, testing::ValuesIn(listExamples()),
                         [](const auto& in_Info) { return in_Info.param.m_strScript; });

} // namespace
