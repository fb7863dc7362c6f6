#include "tools/vxpr/FrameCutter.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace Vxpr {

namespace {

/// The samples 1, 2, 3 and so on.
class Counting : public SampleSource {
public:
    Counting(std::size_t in_uiLength, bool in_bLive) : m_uiLength(in_uiLength), m_bLive(in_bLive) {}

    std::size_t read(double* out_pSamples, std::size_t in_uiCount) override {
        const std::size_t uiRead = std::min(in_uiCount, m_uiLength - m_uiPosition);
        for (std::size_t uiSample = 0; uiSample < uiRead; ++uiSample) {
            out_pSamples[uiSample] = static_cast<double>(++m_uiPosition);
        }
        return uiRead;
    }
    int getSampleRate() const override { return 8000; }
    std::optional<std::uint64_t> getLength() const override { return m_uiLength; }
    bool isLive() const override { return m_bLive; }
    std::size_t getPosition() const { return m_uiPosition; }

private:
    std::size_t m_uiLength;
    bool m_bLive;
    std::size_t m_uiPosition = 0;
};

using Frames = std::vector<std::vector<double>>;

Frames cut(std::size_t in_uiLength, const FrameCutter::Layout& in_Layout, bool in_bLive) {
    Counting source(in_uiLength, in_bLive);
    FrameCutter cutter(source, in_Layout);
    std::vector<double> vFrame(in_Layout.m_uiFrame);
    Frames vFrames;
    while (cutter.next(vFrame.data())) {
        vFrames.push_back(vFrame);
    }
    return vFrames;
}

struct Case {
    const char* m_szName;
    std::size_t m_uiLength;
    FrameCutter::Layout m_Layout;
    Frames m_vExpected;
};

const std::vector<Case> CASES = {
    {"what is left over is dropped", 5, {2, 2, false}, {{1, 2}, {3, 4}}},
    {"what is left over is padded", 5, {2, 2, true}, {{1, 2}, {3, 4}, {5, 0}}},
    {"nothing is left over", 4, {2, 2, true}, {{1, 2}, {3, 4}}},
    {"frames overlap", 4, {3, 1, false}, {{1, 2, 3}, {2, 3, 4}}},
    {"an overlapping frame without new samples isn't padded",
     4,
     {3, 1, true},
     {{1, 2, 3}, {2, 3, 4}}},
    {"an overlapping frame with a new sample is padded", 4, {3, 2, true}, {{1, 2, 3}, {3, 4, 0}}},
    {"samples between frames are skipped", 8, {2, 3, false}, {{1, 2}, {4, 5}, {7, 8}}},
    {"the skipped samples are the end", 6, {2, 3, true}, {{1, 2}, {4, 5}}},
    {"a frame is padded behind skipped samples", 4, {2, 3, true}, {{1, 2}, {4, 0}}},
    {"the sound is shorter than a frame", 2, {3, 3, false}, {}},
    {"a sound that is shorter than a frame is padded", 2, {3, 3, true}, {{1, 2, 0}}},
    {"there is no sound", 0, {3, 3, true}, {}},
    {"a hop is longer than the sound", 4, {2, 100, true}, {{1, 2}}},
};

} // namespace

TEST(FrameCutterTest, FramesLieWhereTheLayoutSays) {
    for (const Case& sample : CASES) {
        EXPECT_EQ(cut(sample.m_uiLength, sample.m_Layout, false), sample.m_vExpected)
            << sample.m_szName;
        EXPECT_EQ(cut(sample.m_uiLength, sample.m_Layout, true), sample.m_vExpected)
            << sample.m_szName << ", live";
    }
}

TEST(FrameCutterTest, ALongSoundIsCutTheSameWayWhateverIsReadAhead) {
    EXPECT_EQ(cut(100000, {160, 80, true}, false), cut(100000, {160, 80, true}, true));
    EXPECT_EQ(cut(100000, {160, 20000, true}, false), cut(100000, {160, 20000, true}, true));
}

TEST(FrameCutterTest, OfALiveSoundNoMoreIsReadThanAFrameNeeds) {
    Counting source(1000, true);
    FrameCutter cutter(source, {160, 80, false});
    std::vector<double> vFrame(160);
    ASSERT_TRUE(cutter.next(vFrame.data()));
    EXPECT_EQ(source.getPosition(), 160U);
    ASSERT_TRUE(cutter.next(vFrame.data()));
    EXPECT_EQ(source.getPosition(), 240U);
}

} // namespace Vxpr
