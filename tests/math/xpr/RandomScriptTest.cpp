// Scripts made at random give the same bits in every mode that there is.

#include <gtest/gtest.h>

#include <functional>

#include "math/xpr/RandomScript.h"
#include "math/xpr/ScriptRun.h"

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t ScriptCount = 160;
#else
constexpr std::size_t ScriptCount = 2000;
#endif
constexpr std::size_t FrameCount = 6;
constexpr std::size_t MiddleFrame = 3;

using Frames = std::vector<FrameValues>;
using Lines = std::vector<std::string>;

/// The frames in the way that a name tells; empty if the script can't be set up.
struct Mode {
    const char* m_szName;
    std::function<Frames(ScriptRun& inout_Run)> m_Run;
};

Frames runWhole(ScriptRun& inout_Run) {
    return inout_Run.computeFrames(0, FrameCount);
}

Frames runClone(ScriptRun& inout_Run) {
    return inout_Run.clone()->computeFrames(0, FrameCount);
}

/// The clone goes on where its source stood.
Frames runCloneFromTheMiddle(ScriptRun& inout_Run) {
    Frames vFrames = inout_Run.computeFrames(0, MiddleFrame);
    const auto pClone = inout_Run.clone();
    const Frames vRest = pClone->computeFrames(MiddleFrame, FrameCount);
    vFrames.insert(vFrames.end(), vRest.begin(), vRest.end());
    return vFrames;
}

/// The source isn't moved by a clone that was taken and evaluated.
Frames runSourceOfAClone(ScriptRun& inout_Run) {
    Frames vFrames = inout_Run.computeFrames(0, MiddleFrame);
    inout_Run.clone()->computeFrames(0, FrameCount);
    const Frames vRest = inout_Run.computeFrames(MiddleFrame, FrameCount);
    vFrames.insert(vFrames.end(), vRest.begin(), vRest.end());
    return vFrames;
}

Frames runAgainAfterReset(ScriptRun& inout_Run) {
    inout_Run.computeFrames(0, FrameCount);
    return inout_Run.reset() ? inout_Run.computeFrames(0, FrameCount) : Frames();
}

const Mode Modes[] = {
    {"whole", runWhole},
    {"clone", runClone},
    {"clone from the middle", runCloneFromTheMiddle},
    {"source of a clone", runSourceOfAClone},
    {"again after reset", runAgainAfterReset},
};

/// What differs, or an empty text.
std::string compareModes(const Lines& in_vLines) {
    const std::string strText = RandomScript::join(in_vLines);
    const Lines vFeatures = RandomScript::listFeatures(in_vLines);
    ScriptRun plain(strText, vFeatures, false);
    if (!plain.isReady()) {
        return "the script can't be linked";
    }
    const Frames vExpected = runWhole(plain);
    for (const FrameValues& vValues : vExpected) {
        for (const FeatureValue& value : vValues) {
            if (!value.m_bSuccess) {
                return "a feature fails";
            }
        }
    }
    for (const bool bOptimize : {false, true}) {
        for (const Mode& mode : Modes) {
            ScriptRun run(strText, vFeatures, bOptimize);
            if (!run.isReady()) {
                return "the script can't be linked, optimised";
            }
            if (mode.m_Run(run) != vExpected) {
                return std::string(bOptimize ? "optimised, " : "linked, ") + mode.m_szName;
            }
        }
    }
    return std::string();
}

/// Leaves out what the difference doesn't need.
Lines shorten(Lines in_vLines, const std::string& in_strDifference) {
    for (std::size_t ui = in_vLines.size(); ui-- != 0;) {
        Lines vShorter(in_vLines);
        vShorter.erase(vShorter.begin() + static_cast<std::ptrdiff_t>(ui));
        if (in_vLines[ui].rfind("inputvar", 0) != 0 && compareModes(vShorter) == in_strDifference) {
            in_vLines = vShorter;
        }
    }
    return in_vLines;
}

class RandomScriptTest : public testing::TestWithParam<std::size_t> {};

TEST_P(RandomScriptTest, AllModesGiveTheSameBits) {
    const std::size_t uiFirst = GetParam() * (ScriptCount / 8);
    for (std::size_t uiSeed = uiFirst; uiSeed != uiFirst + ScriptCount / 8; ++uiSeed) {
        const RandomScript script(uiSeed);
        const std::string strDifference = compareModes(script.getLines());
        ASSERT_EQ(strDifference, "")
            << "seed " << uiSeed << ":\n"
            << RandomScript::join(shorten(script.getLines(), strDifference));
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomScriptTest, testing::Range(std::size_t(0), std::size_t(8)));

} // namespace
