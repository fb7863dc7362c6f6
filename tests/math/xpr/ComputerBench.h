#pragma once

#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <velmora/MemAccounts.h>
#include <velmora/TSHandle.h>
#include <velmora/math/DoubleVector.h>
#include <velmora/math/FeatureComputer.h>
#include <velmora/math/xpr/Evaluator.h>

#include "support/AssertionCapture.h"
#include "support/LinkBench.h"
#include "support/LogCapture.h"
#include "support/MemoryFileSystem.h"

namespace Velmora::Testing {

/// What the tests of the feature computers share: scripts in memory, and all that is logged and
/// asserted.
class ComputerBench : public ::testing::Test {
protected:
    explicit ComputerBench(const MemoryFileSystem::Files& in_mapFiles)
        : m_pFiles(new MemoryFileSystem(in_mapFiles)), m_pFileSystem(m_pFiles) {}

    /// Evaluators that hosts share look for scripts in this directory.
    static constexpr const char* SharedDirectory = "scripts";

    bool configure(Math::Xpr::Evaluator& inout_Evaluator) {
        return inout_Evaluator.configure(scriptsIn(SharedDirectory), m_pFileSystem);
    }

    static bool finish(Math::Xpr::Evaluator& inout_Evaluator) {
        return inout_Evaluator.link(true) && inout_Evaluator.reconfigureExpressions();
    }

    /// The feature of one frame as text; "none" if it can't be computed.
    static std::string compute(Math::FeatureComputer& inout_Computer) {
        Math::DoubleVector vFeature;
        if (!inout_Computer.computeFeatures(vFeature)) {
            return "none";
        }
        std::ostringstream text;
        text << vFeature;
        return text.str();
    }

    /// The paths that the file system was asked for since the last call.
    std::vector<std::string> takeAskedPaths() {
        const std::vector<std::string>& vPaths = m_pFiles->getAskedPaths();
        std::vector<std::string> vNew(vPaths.begin() + static_cast<std::ptrdiff_t>(m_uiTakenPaths),
                                      vPaths.end());
        m_uiTakenPaths = vPaths.size();
        return vNew;
    }

    /// What the computers themselves wrote.
    std::vector<std::string> computerLines(log4cplus::LogLevel in_level) const {
        std::vector<std::string> vLines;
        for (const LogLine& line : m_Log.lines()) {
            if (line.level == in_level && line.logger == "quillmark.math.xpr.FeatureComputer") {
                vLines.push_back(line.message);
            }
        }
        return vLines;
    }
    std::vector<std::string> errorLines() const {
        return computerLines(log4cplus::ERROR_LOG_LEVEL);
    }

    /// Live blocks of every account that has any.
    static std::map<std::string, std::size_t> liveBlocks() {
        std::map<std::string, std::size_t> mapBlocks;
        for (const MemAccount& account : MemAccounts::snapshot()) {
            if (account.liveBlocks != 0) {
                mapBlocks[account.name] = account.liveBlocks;
            }
        }
        return mapBlocks;
    }

    MemoryFileSystem* m_pFiles;
    TSHandle<VirtualFileSystem> m_pFileSystem;
    AssertionCapture m_Assertions;
    LogCapture m_Log;

private:
    std::size_t m_uiTakenPaths = 0;
};

} // namespace Velmora::Testing
