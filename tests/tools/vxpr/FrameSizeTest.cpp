#include "tools/vxpr/FrameSize.h"

#include "tools/vxpr/Failure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Vxpr {

TEST(FrameSizeTest, TimesAndSamplesAreRead) {
    struct Case {
        const char* m_szText;
        int m_iSampleRate;
        std::size_t m_uiSamples;
    };
    for (const Case& sample :
         {Case{"20ms", 8000, 160}, Case{"0.02s", 8000, 160}, Case{"160", 44100, 160},
          Case{"2.5ms", 8000, 20}, Case{"20ms", 11025, 221}, Case{"1s", 8000, 8000}}) {
        EXPECT_EQ(
            FrameSize::parse("--frame", sample.m_szText).getSamples(sample.m_iSampleRate, 1000000),
            sample.m_uiSamples)
            << sample.m_szText;
    }
}

TEST(FrameSizeTest, WhatIsNoSizeAboveZeroIsRefusedWithAdvice) {
    for (const char* szText :
         {"0", "0ms", "-20ms", "20 ms", "1.5", "ms", "s", "", "20m", "infs", "nanms", "1e3"}) {
        try {
            FrameSize::parse("--hop", szText);
            ADD_FAILURE() << szText;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.getStatus(), ExitStatus::CommandLineAtFault);
            EXPECT_THAT(failure.what(), testing::HasSubstr("--hop"));
            EXPECT_THAT(failure.what(), testing::HasSubstr("such as 20ms"));
        }
    }
}

TEST(FrameSizeTest, ATimeThatIsShorterThanASampleIsRefused) {
    EXPECT_THROW(FrameSize::parse("--frame", "0.01ms").getSamples(8000, 1000), Failure);
}

TEST(FrameSizeTest, ASizeBeyondTheLargestIsRefused) {
    EXPECT_THROW(FrameSize::parse("--frame", "1001").getSamples(8000, 1000), Failure);
    EXPECT_EQ(FrameSize::parse("--frame", "1000").getSamples(8000, 1000), 1000U);
}

} // namespace Vxpr
