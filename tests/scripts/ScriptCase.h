#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <velmora/math/DoubleVector.h>

namespace Velmora::Testing {

/// What one script of the folder must give, as the comments in it say.
struct ScriptCase {
    enum class Stage { None, Load, Link, Configure };

    using Value = std::optional<Math::DoubleVector>;
    using Frame = std::vector<std::pair<std::string, Math::DoubleVector>>;

    struct Expectation {
        std::string m_strName;
        bool m_bExact = true;
        /// One a frame; none where the evaluation fails.
        std::vector<Value> m_vValues;
    };

    /// The name without directory and ending.
    std::string m_strStem;
    std::string m_strDirectory;
    std::string m_strText;

    std::vector<Frame> m_vFrames;
    std::vector<Expectation> m_vExpectations;
    std::vector<std::string> m_vErrors;
    std::vector<std::string> m_vAssertions;
    std::vector<std::string> m_vEvaluationErrors;
    std::vector<std::string> m_vEvaluationAssertions;
    /// What only a sealed graph may add to the errors of the evaluation.
    std::vector<std::string> m_vSealedErrors;
    Stage m_FailingStage = Stage::None;

    /// Reads the file. Throws std::runtime_error for a comment that can't be understood, and for a
    /// script that expects nothing.
    static ScriptCase read(const std::string& in_strPath);

    /// The message as it stands in an expectation: the position, if it has one, as
    /// "LINE:COLUMN " or "SCRIPT:LINE:COLUMN " in front, what differs from run to run as "ID" and
    /// "UUID", and paths from the script's folder on.
    std::string normalised(const std::string& in_strMessage) const;

private:
    void addLine(const std::string& in_strKey, const std::string& in_strText);
    std::string qualified(const std::string& in_strName) const;
};

} // namespace Velmora::Testing
