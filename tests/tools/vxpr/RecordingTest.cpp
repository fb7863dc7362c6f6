#include "tools/vxpr/Recording.h"

#include "ScratchDirectory.h"
#include "WaveFile.h"
#include "tools/vxpr/Failure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

namespace Vxpr {

using testing::HasSubstr;
using TestSupport::makeTone;
using TestSupport::ScratchDirectory;
using TestSupport::writeWave;

namespace {

std::vector<double> readAll(Recording& inout_Recording) {
    std::vector<double> vSamples(1 << 20);
    vSamples.resize(inout_Recording.read(vSamples.data(), vSamples.size()));
    return vSamples;
}

std::string failToOpen(const std::string& in_strPath, int in_iChannel = 0) {
    try {
        Recording({in_strPath, std::nullopt, in_iChannel});
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.getStatus(), ExitStatus::DataAtFault);
        return failure.what();
    }
    return "no failure";
}

struct Format {
    const char* m_szName;
    int m_iFormat;
    double m_dError; ///< the largest difference from what was written
};

const std::vector<Format> FORMATS = {
    {"u8", SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 1.0 / 100},
    {"s16", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 1.0 / 20000},
    {"s24", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 1e-6},
    {"s32", SF_FORMAT_WAV | SF_FORMAT_PCM_32, 1e-8},
    {"float", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 1e-7},
    {"double", SF_FORMAT_WAV | SF_FORMAT_DOUBLE, 0.0},
    {"mu-law", SF_FORMAT_WAV | SF_FORMAT_ULAW, 0.03},
    {"A-law", SF_FORMAT_WAV | SF_FORMAT_ALAW, 0.03},
    {"extensible", SF_FORMAT_WAVEX | SF_FORMAT_PCM_16, 1.0 / 20000},
    {"AIFF", SF_FORMAT_AIFF | SF_FORMAT_PCM_16, 1.0 / 20000},
    {"FLAC", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 1.0 / 20000},
    {"Ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 0.1},
};

} // namespace

TEST(RecordingTest, EverySampleFormatIsReadOnOneScale) {
    const ScratchDirectory scratch;
    const std::vector<double> vTone = makeTone(440.0, 0.5, 8000, 8000);
    for (const Format& format : FORMATS) {
        const std::string strPath = scratch.getPath(format.m_szName);
        writeWave(strPath, vTone, {format.m_iFormat});
        Recording recording({strPath, std::nullopt, 0});
        EXPECT_EQ(recording.getSampleRate(), 8000) << format.m_szName;
        EXPECT_EQ(recording.getLength(), 8000U) << format.m_szName;
        const std::vector<double> vRead = readAll(recording);
        ASSERT_EQ(vRead.size(), vTone.size()) << format.m_szName;
        for (std::size_t uiSample = 0; uiSample < vTone.size(); ++uiSample) {
            ASSERT_NEAR(vRead[uiSample], vTone[uiSample], format.m_dError)
                << format.m_szName << ", " << uiSample;
        }
        EXPECT_EQ(recording.describeTruncation(), "") << format.m_szName;
    }
}

TEST(RecordingTest, ChannelsAreMixedDownToTheirMean) {
    const ScratchDirectory scratch;
    const std::string strPath = scratch.getPath("stereo.wav");
    writeWave(strPath, {0.5, -0.25, 1.0, 0.5}, {SF_FORMAT_WAV | SF_FORMAT_DOUBLE, 8000, 2});
    Recording recording({strPath, std::nullopt, 0});
    EXPECT_EQ(readAll(recording), (std::vector<double>{0.125, 0.75}));
}

TEST(RecordingTest, ChannelsAreMixedDownThroughoutALongSound) {
    constexpr std::size_t Length = 100000;
    std::vector<double> vInterleaved(2 * Length);
    for (std::size_t ui = 0; ui != vInterleaved.size(); ++ui) {
        vInterleaved[ui] = static_cast<double>(ui % 64) / 64.0;
    }
    const ScratchDirectory scratch;
    const std::string strPath = scratch.getPath("stereo.wav");
    writeWave(strPath, vInterleaved, {SF_FORMAT_WAV | SF_FORMAT_DOUBLE, 8000, 2});
    Recording recording({strPath, std::nullopt, 0});
    const std::vector<double> vSamples = readAll(recording);
    ASSERT_EQ(vSamples.size(), Length);
    for (std::size_t ui = 0; ui != Length; ++ui) {
        ASSERT_EQ(vSamples[ui], (vInterleaved[2 * ui] + vInterleaved[2 * ui + 1]) / 2.0) << ui;
    }
}

// A damaged header that claims a high rate and many channels makes a frame long.
TEST(RecordingTest, AskingForMoreThanThereIsTakesNoMemoryForIt) {
    const ScratchDirectory scratch;
    const std::string strPath = scratch.getPath("stereo.wav");
    writeWave(strPath, {0.5, -0.25, 1.0, 0.5}, {SF_FORMAT_WAV | SF_FORMAT_DOUBLE, 8000, 2});
    Recording recording({strPath, std::nullopt, 0});
    std::vector<double> vSamples(2);
    EXPECT_EQ(recording.read(vSamples.data(), std::size_t(1) << 60), 2u);
    EXPECT_EQ(vSamples, (std::vector<double>{0.125, 0.75}));
}

TEST(RecordingTest, AChannelIsChosenByItsNumberFromOne) {
    const ScratchDirectory scratch;
    const std::string strPath = scratch.getPath("stereo.wav");
    writeWave(strPath, {0.5, -0.25, 1.0, 0.5}, {SF_FORMAT_WAV | SF_FORMAT_DOUBLE, 8000, 2});
    Recording first({strPath, std::nullopt, 1});
    EXPECT_EQ(readAll(first), (std::vector<double>{0.5, 1.0}));
    Recording second({strPath, std::nullopt, 2});
    EXPECT_EQ(readAll(second), (std::vector<double>{-0.25, 0.5}));
    EXPECT_THAT(failToOpen(strPath, 3), HasSubstr("has 2 channels, so there is no --channel 3"));
}

TEST(RecordingTest, AFileThatEndsEarlyIsNoticed) {
    const ScratchDirectory scratch;
    const std::vector<double> vTone = makeTone(440.0, 0.5, 8000, 8000);
    for (const int iFormat : {SF_FORMAT_WAV | SF_FORMAT_PCM_16, SF_FORMAT_WAV | SF_FORMAT_DOUBLE,
                              SF_FORMAT_AIFF | SF_FORMAT_PCM_16, SF_FORMAT_AU | SF_FORMAT_PCM_16}) {
        const std::string strWhole = scratch.getPath("whole");
        writeWave(strWhole, vTone, {iFormat});
        const std::string strBytes = TestSupport::readFile(strWhole);
        const std::string strPath = scratch.write("cut", strBytes.substr(0, strBytes.size() / 2));
        Recording recording({strPath, std::nullopt, 0});
        const std::vector<double> vRead = readAll(recording);
        EXPECT_GT(vRead.size(), 3000U);
        EXPECT_LT(vRead.size(), 4100U);
        EXPECT_THAT(recording.describeTruncation(),
                    HasSubstr("its header promises 8000 samples, but it ends after " +
                              std::to_string(vRead.size())))
            << std::hex << iFormat;
    }
}

TEST(RecordingTest, ASoundWithoutAHeaderThatEndsWithinASampleIsNoticed) {
    const ScratchDirectory scratch;
    const RawFormat format = RawFormat::parse("s16le,8000,2");
    for (const std::size_t uiLeftOver : {0U, 1U, 3U}) {
        const std::string strPath = scratch.write("a.raw", std::string(320 + uiLeftOver, '\0'));
        Recording recording({strPath, format, 0});
        EXPECT_EQ(readAll(recording).size(), 80U);
        if (uiLeftOver == 0) {
            EXPECT_EQ(recording.describeTruncation(), "");
        } else {
            EXPECT_THAT(recording.describeTruncation(), HasSubstr("ends within a sample"));
            EXPECT_THAT(recording.describeTruncation(),
                        HasSubstr(std::to_string(uiLeftOver) + " byte"));
        }
    }
}

TEST(RecordingTest, AHeaderWithoutALengthIsNoTruncation) {
    const ScratchDirectory scratch;
    const std::string strWhole = scratch.getPath("whole");
    writeWave(strWhole, makeTone(440.0, 0.5, 8000, 800));
    std::string strBytes = TestSupport::readFile(strWhole);
    for (const std::size_t uiSize : {4U, 40U}) {
        strBytes.replace(uiSize, 4, "\xff\xff\xff\xff");
    }
    Recording recording({scratch.write("open", strBytes), std::nullopt, 0});
    EXPECT_EQ(readAll(recording).size(), 800U);
    EXPECT_EQ(recording.describeTruncation(), "");
}

TEST(RecordingTest, WhatIsNoSoundIsRefusedWithAdvice) {
    const ScratchDirectory scratch;
    EXPECT_THAT(failToOpen(scratch.getPath("missing.wav")), HasSubstr("No such file"));
    EXPECT_THAT(failToOpen(scratch.getPath()), HasSubstr("is a directory"));
    EXPECT_THAT(failToOpen(scratch.write("text.wav", "no sound at all\n")),
                HasSubstr("no recording that can be read"));
    EXPECT_THAT(failToOpen(scratch.write("empty.wav", "")), HasSubstr("--raw"));
}

TEST(RecordingTest, AHeaderWithZeroChannelsIsRefused) {
    const ScratchDirectory scratch;
    const std::string strWhole = scratch.getPath("whole.wav");
    writeWave(strWhole, makeTone(440.0, 0.5, 8000, 800));
    std::string strBytes = TestSupport::readFile(strWhole);
    strBytes[22] = '\0';
    EXPECT_THAT(failToOpen(scratch.write("none.wav", strBytes)), HasSubstr("Channel count"));
}

TEST(RecordingTest, SamplesWithoutAHeaderAreReadByTheirFormat) {
    const ScratchDirectory scratch;
    struct Case {
        const char* m_szFormat;
        std::string m_strBytes;
    };
    for (const Case& sample :
         {Case{"s16le,8000,1", std::string("\x00\x40\x00\xc0", 4)},
          Case{"s16be,8000,1", std::string("\x40\x00\xc0\x00", 4)},
          Case{"s8,8000,1", std::string("\x40\xc0", 2)},
          Case{"u8,8000,1", std::string("\xc0\x40", 2)},
          Case{"s24le,8000,1", std::string("\x00\x00\x40\x00\x00\xc0", 6)},
          Case{"s32be,8000,1", std::string("\x40\x00\x00\x00\xc0\x00\x00\x00", 8)},
          Case{"f32le,8000,1", std::string("\x00\x00\x00\x3f\x00\x00\x00\xbf", 8)},
          Case{"f64be,8000,1",
               std::string("\x3f\xe0\x00\x00\x00\x00\x00\x00\xbf\xe0\x00\x00\x00\x00\x00\x00",
                           16)}}) {
        Recording recording(
            {scratch.write("raw", sample.m_strBytes), RawFormat::parse(sample.m_szFormat), 0});
        EXPECT_EQ(readAll(recording), (std::vector<double>{0.5, -0.5})) << sample.m_szFormat;
    }
}

TEST(RecordingTest, ARawFormatThatIsNoneIsRefusedWithAdvice) {
    for (const char* szFormat : {"", "s16le", "s16le,8000", "s16le,0,1", "s16le,8000,0",
                                 "s16,8000,1", "s16le,8000,1,1", "s16le,-8000,1"}) {
        try {
            RawFormat::parse(szFormat);
            ADD_FAILURE() << szFormat;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.getStatus(), ExitStatus::CommandLineAtFault);
            EXPECT_THAT(failure.what(), HasSubstr("such as s16le,8000,1"));
        }
    }
}

} // namespace Vxpr
