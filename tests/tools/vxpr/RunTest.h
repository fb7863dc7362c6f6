#pragma once

#include "ProcessRunner.h"
#include "ScratchDirectory.h"
#include "WaveFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Vxpr::TestSupport {

/// A test that runs scripts over recordings in a directory of its own.
class RunTest : public testing::Test {
protected:
    /// Writes `s.xpr`.
    std::string writeScript(const std::string& in_strText) const {
        return m_Scratch.write("s.xpr", in_strText);
    }

    /// Writes `a.wav`: a ramp of so many samples from 0, each 1/1024 above the one before.
    std::string writeRamp(std::size_t in_uiSamples) const {
        std::vector<double> vSamples(in_uiSamples);
        for (std::size_t uiSample = 0; uiSample < in_uiSamples; ++uiSample) {
            vSamples[uiSample] = static_cast<double>(uiSample) / 1024.0;
        }
        writeWave(m_Scratch.getPath("a.wav"), vSamples);
        return m_Scratch.getPath("a.wav");
    }

    /// `vxpr run` of a script of that text over a table of one column, for the input `x`.
    ProcessResult runOverTable(const std::string& in_strScript, const std::string& in_strTable,
                               std::vector<std::string> in_vMore = {}) const {
        std::vector<std::string> vArguments{"run",     writeScript(in_strScript),
                                            "--input", "x=" + m_Scratch.write("x.csv", in_strTable),
                                            "--hop",   "1s"};
        vArguments.insert(vArguments.end(), in_vMore.begin(), in_vMore.end());
        return runVxpr(vArguments);
    }

    ScratchDirectory m_Scratch;
};

} // namespace Vxpr::TestSupport
