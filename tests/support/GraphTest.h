#pragma once

#include <gtest/gtest.h>

#include <velmora/MemAccounts.h>
#include <velmora/math/xpr/ConstantImpl.h>
#include <velmora/math/xpr/DomainVariableImpl.h>

#include <initializer_list>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "support/AssertionCapture.h"
#include "support/LogCapture.h"

namespace Velmora::Testing {

using Texts = std::vector<std::string>;
using Values = std::vector<double>;
using Math::DoubleVector;

inline const char* const NodeLogger = "quillmark.math.xpr.ExpressionImpl";
inline const char* const LeafLogger = "quillmark.xpr.ExpressionImpl";
inline const char* const DomainValueLogger = "quillmark.math.xpr.DomainValueImpl";
inline const char* const CopierLogger = "quillmark.ExpressionImplCopier";
inline const char* const OperatorLogger = "quillmark.math.xpr.Operator";

/// Nodes of a chain that no recursion without care would survive.
#if defined(__SANITIZE_THREAD__)
// The thread sanitizer follows 65,536 calls, and there is but one thread.
inline constexpr int LongChain = 5000;
#else
inline constexpr int LongChain = 200000;
#endif

/// The form in which the tests compare log lines.
inline std::string logged(const std::string& in_strLogger, const std::string& in_strMessage) {
    return in_strLogger + ": " + in_strMessage;
}

/// A test of graphs: collects what is logged and asserted, and fails if any of it stays unasked
/// for, or if the memory accounts don't stand at its end where they stood at its start.
class GraphTest : public ::testing::Test {
protected:
    void SetUp() override {
        makeLastingObjects();
        m_mapBlocks = liveBlocks();
    }

    void TearDown() override {
        EXPECT_EQ(takeErrors(), Texts());
        EXPECT_EQ(takeAssertions(), Texts());
        EXPECT_EQ(liveBlocks(), m_mapBlocks);
    }

    /// The lines of ERROR level since the last call, as "LOGGER: MESSAGE".
    Texts takeErrors() { return take(m_Logs, log4cplus::ERROR_LOG_LEVEL); }

    /// The conditions that failed since the last call.
    Texts takeAssertions() {
        const Texts vExpressions = m_Assertions.expressions();
        m_Assertions.clear();
        return vExpressions;
    }

    static Texts take(LogCapture& inout_Logs, log4cplus::LogLevel in_level) {
        Texts vLines;
        for (const LogLine& line : inout_Logs.lines()) {
            if (line.level == in_level) {
                vLines.push_back(logged(line.logger, line.message));
            }
        }
        inout_Logs.clear();
        return vLines;
    }

private:
    /// What lives for ever from its first use on must not count as a leak of the test that is run
    /// first.
    static void makeLastingObjects() {
        Handle<Math::Xpr::ExpressionBaseImpl> pOrphan;
        const Handle<Math::Xpr::DomainVariableImpl> pVariable(new Math::Xpr::DomainVariableImpl);
        pOrphan = pVariable->getValue();
    }

    static std::map<std::string, std::size_t> liveBlocks() {
        std::map<std::string, std::size_t> mapBlocks;
        for (const MemAccount& account : MemAccounts::snapshot()) {
            if (account.liveBlocks != 0) {
                mapBlocks[account.name] = account.liveBlocks;
            }
        }
        return mapBlocks;
    }

    LogCapture m_Logs{"", log4cplus::ERROR_LOG_LEVEL};
    AssertionCapture m_Assertions;
    std::map<std::string, std::size_t> m_mapBlocks;
};

inline Values valuesOf(const DoubleVector& in_vValue) {
    return Values(in_vValue.begin(), in_vValue.end());
}

/// The value of an expression, or a failure of the test.
inline Values evaluated(Math::Xpr::Expression& inout_Expression) {
    DoubleVector vValue;
    EXPECT_TRUE(inout_Expression.evaluate(vValue));
    return valuesOf(vValue);
}

inline std::string textOf(const OutputStreamable& in_Object) {
    std::ostringstream stream;
    stream << in_Object;
    return stream.str();
}

inline Handle<Math::Xpr::ConstantImpl> constant(std::initializer_list<double> in_values) {
    return Handle<Math::Xpr::ConstantImpl>(new Math::Xpr::ConstantImpl(DoubleVector(in_values)));
}

using Nodes = std::vector<const Math::Xpr::ExpressionBaseImpl*>;

inline Nodes parentsOf(const Math::Xpr::ExpressionBaseImpl& in_Node) {
    Nodes vParents;
    for (const auto* p = in_Node.getParentBegin(); p != in_Node.getParentEnd(); ++p) {
        vParents.push_back(p->get());
    }
    return vParents;
}

inline Nodes childrenOf(const Math::Xpr::ExpressionBaseImpl& in_Node) {
    Nodes vChildren;
    for (const auto* p = in_Node.getChildBegin(); p != in_Node.getChildEnd(); ++p) {
        vChildren.push_back(p->get());
    }
    return vChildren;
}

} // namespace Velmora::Testing
