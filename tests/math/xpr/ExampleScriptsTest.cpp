// The example scripts over many frames: what they give is finite and the same in every mode, and
// nothing is allocated.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
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

/// An example that is linked and configured, with its input and features.
class LinkedExample {
public:
    LinkedExample(const Example& in_Example, bool in_bOptimize) : m_Example(in_Example) {
        ParameterTrie config;
        config.setParameter("quillmark.math.xpr.scriptLoader.scriptsDir",
                            ParameterValue(VELMORA_SOURCE_DIR "/examples/scripts"));
        EXPECT_TRUE(m_Evaluator.configure(config, TSHandle<VirtualFileSystem>(new DiskFileSystem)));
        EXPECT_TRUE(m_Evaluator.addScript(in_Example.m_strScript.c_str()));
        EXPECT_TRUE(m_Evaluator.link(in_bOptimize));
        findParts();
        for (const Handle<Expression>& pFeature : m_vFeatures) {
            EXPECT_TRUE(pFeature->configure(TSHandle<VirtualFileSystem>()));
        }
    }

    LinkedExample(const LinkedExample& in_Other)
        : m_Example(in_Other.m_Example), m_Evaluator(in_Other.m_Evaluator) {
        findParts();
    }
    LinkedExample& operator=(const LinkedExample&) = delete;

    std::size_t getFeatureCount() const { return m_vFeatures.size(); }

    void reset() {
        for (const Handle<Expression>& pFeature : m_vFeatures) {
            EXPECT_TRUE(pFeature->reset());
        }
    }

    /// Hands what each feature gives to the function; null for none.
    template <class Function>
    void evaluate(const DoubleVector& in_vInput, Function in_Function) {
        m_pInput->setValue(in_vInput);
        for (const Handle<Expression>& pFeature : m_vFeatures) {
            const bool bValue = pFeature->evaluate(m_pValue) && !m_pValue.isNull();
            in_Function(bValue ? m_pValue.get() : nullptr);
        }
    }

private:
    void findParts() {
        const std::string strPrefix = m_Example.m_strScript + '.';
        m_pInput = m_Evaluator.getVariable((strPrefix + m_Example.m_strInput).c_str());
        for (const std::string& strName : m_Example.m_vFeatures) {
            m_vFeatures.push_back(m_Evaluator.getExpression((strPrefix + strName).c_str()));
            EXPECT_FALSE(m_vFeatures.back().isNull()) << strName;
        }
    }

    const Example& m_Example;
    Evaluator m_Evaluator;
    Handle<Variable> m_pInput;
    std::vector<Handle<Expression>> m_vFeatures;
    LimitedObjPtr<DoubleVector> m_pValue;
};

class ExampleScriptsTest : public testing::TestWithParam<Example> {
protected:
    static std::vector<DoubleVector> makeInputs(std::size_t in_uiFrames) {
        std::vector<DoubleVector> vInputs;
        for (std::size_t ui = 0; ui != in_uiFrames; ++ui) {
            vInputs.push_back(makeInput(ui, GetParam().m_uiInputSize));
        }
        return vInputs;
    }

    /// Links the example and evaluates it over the warming and the counted frames.
    static std::size_t countAllocations() {
        LinkedExample example(GetParam(), true);
        const std::vector<DoubleVector> vInputs = makeInputs(WarmFrames);
        std::size_t uiFinite = 0;
        const auto run = [&](std::size_t in_uiFrames) {
            for (std::size_t uiFrame = 0; uiFrame != in_uiFrames; ++uiFrame) {
                example.evaluate(
                    vInputs[uiFrame % vInputs.size()], [&](const DoubleVector* in_pValue) {
                        uiFinite += in_pValue != nullptr && std::isfinite(*in_pValue->begin());
                    });
            }
        };
        run(WarmFrames);
        const Testing::AllocationCounter counter;
        run(CountedFrames);
        const std::size_t uiAllocations = counter.allocations();
        EXPECT_EQ(uiFinite, (WarmFrames + CountedFrames) * example.getFeatureCount());
        return uiAllocations;
    }

    /// The bits of all values over a stretch of the frames.
    static std::vector<std::uint64_t> evaluate(LinkedExample& inout_Example,
                                               const std::vector<DoubleVector>& in_vInputs,
                                               std::size_t in_uiFirst, std::size_t in_uiEnd) {
        std::vector<std::uint64_t> vBits;
        for (std::size_t uiFrame = in_uiFirst; uiFrame != in_uiEnd; ++uiFrame) {
            inout_Example.evaluate(in_vInputs[uiFrame], [&](const DoubleVector* in_pValue) {
                vBits.push_back(in_pValue == nullptr ? ~std::uint64_t(0) : in_pValue->size());
                for (const double dValue : in_pValue == nullptr ? DoubleVector() : *in_pValue) {
                    vBits.emplace_back();
                    std::memcpy(&vBits.back(), &dValue, sizeof(dValue));
                }
            });
        }
        return vBits;
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
    EXPECT_EQ(countAllocations(), 0U);
}

TEST_P(ExampleScriptsTest, EveryAccountIsBackWhereItStood) {
    // The first use leaves what lives as long as the process: loggers, generators.
    countAllocations();
    const std::map<std::string, std::size_t> mapBefore = countBlocks();
    countAllocations();
    EXPECT_EQ(countBlocks(), mapBefore);
}

TEST_P(ExampleScriptsTest, GivesTheSameBitsInEveryMode) {
    constexpr std::size_t Frames = 200;
    constexpr std::size_t Half = Frames / 2;
    const std::vector<DoubleVector> vInputs = makeInputs(Frames);
    LinkedExample plain(GetParam(), false);
    const std::vector<std::uint64_t> vFirst = evaluate(plain, vInputs, 0, Half);
    const std::vector<std::uint64_t> vSecond = evaluate(plain, vInputs, Half, Frames);
    for (const bool bOptimize : {false, true}) {
        SCOPED_TRACE(bOptimize);
        LinkedExample example(GetParam(), bOptimize);
        LinkedExample clone(example);
        EXPECT_EQ(evaluate(clone, vInputs, 0, Half), vFirst);
        EXPECT_EQ(evaluate(example, vInputs, 0, Half), vFirst);
        LinkedExample cloneOfHalf(example);
        EXPECT_EQ(evaluate(cloneOfHalf, vInputs, Half, Frames), vSecond);
        EXPECT_EQ(evaluate(example, vInputs, Half, Frames), vSecond);
        example.reset();
        EXPECT_EQ(evaluate(example, vInputs, 0, Half), vFirst);
    }
}

INSTANTIATE_TEST_SUITE_P(Examples, ExampleScriptsTest, testing::ValuesIn(listExamples()),
                         [](const auto& in_Info) { return in_Info.param.m_strScript; });

} // namespace
