// Scripts of sizes that nobody writes by hand, from the text to the last destructor. What a script
// may have works, on a stack of 8 MiB and on one of 256 KiB, and takes memory in proportion to its
// size; what is beyond is refused with one line that names the limit and the place.
//
// Each test is a process of its own when ctest runs it.

#include <velmora/math/xpr/Xpr.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <sys/resource.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <velmora/ParameterTrie.h>

#include "support/LogCapture.h"
#include "support/StackThread.h"

namespace {

using namespace Velmora;
using namespace Velmora::Math;
using namespace Velmora::Math::Xpr;

constexpr std::size_t Mebibyte = std::size_t{1} << 20;

std::string repeated(const std::string& in_strText, std::size_t in_uiCount) {
    std::string strResult;
    strResult.reserve(in_strText.size() * in_uiCount);
    for (std::size_t ui = 0; ui != in_uiCount; ++ui) {
        strResult += in_strText;
    }
    return strResult;
}

/// A line for each number, with the number in the place of each "#" and the one before in that of
/// each "@".
std::string numbered(const std::string& in_strLine, std::size_t in_uiFirst, std::size_t in_uiLast) {
    std::string strResult;
    for (std::size_t ui = in_uiFirst; ui != in_uiLast; ++ui) {
        for (const char c : in_strLine) {
            if (c == '#') {
                strResult += std::to_string(ui);
            } else if (c == '@') {
                strResult += std::to_string(ui - 1);
            } else {
                strResult += c;
            }
        }
    }
    return strResult;
}

/// In place of the size of a stack.
constexpr std::size_t MainThread = 0;

/// The most memory that the process has had, in bytes.
std::size_t peakMemory() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<std::size_t>(usage.ru_maxrss) * 1024;
}

/// Whatever takes memory out of proportion ends with an exception, and not with the machine.
class SizesTest : public ::testing::TestWithParam<std::size_t> {
protected:
    static void SetUpTestSuite() {
        const rlimit limit{6144 * Mebibyte, RLIM_INFINITY};
        setrlimit(RLIMIT_AS, &limit);
    }

    /// Calls the function on a stack of that size, or on that of the main thread.
    static void call(std::function<void()> in_Function) {
        if (GetParam() == MainThread) {
            in_Function();
            return;
        }
        Testing::runOnStack(GetParam(), std::move(in_Function));
    }

    static bool load(Evaluator& inout_Evaluator, const std::string& in_strScript) {
        ParameterTrie configuration;
        configuration.setParameter("quillmark.math.xpr.scriptLoader.scriptsDir",
                                   ParameterValue("there-is-no-such-directory"));
        std::istringstream stream(in_strScript);
        return inout_Evaluator.configure(configuration, TSHandle<VirtualFileSystem>()) &&
               inout_Evaluator.addScript(stream, "s");
    }

    /// All that a host does with a script of which x has a value of so many elements.
    static void expectWorks(const std::string& in_strScript, std::size_t in_uiElements) {
        call([&] {
            const std::size_t uiBefore = peakMemory();
            {
                const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
                auto pEvaluator = std::make_unique<Evaluator>();
                ASSERT_TRUE(load(*pEvaluator, in_strScript));
                ASSERT_TRUE(pEvaluator->link(true));
                ASSERT_TRUE(pEvaluator->reconfigureExpressions());
                const Handle<Expression> pExpression = pEvaluator->getExpression("s.x");
                ASSERT_FALSE(pExpression.isNull());
                DoubleVector vValue;
                EXPECT_TRUE(pExpression->evaluate(vValue));
                EXPECT_EQ(vValue.size(), in_uiElements);
                EXPECT_TRUE(pExpression->reset());
                EXPECT_TRUE(pExpression->evaluate(vValue));
                EXPECT_TRUE(log.lines().empty());
            }
            constexpr std::size_t MostPerByte = 3500;
            EXPECT_LE(peakMemory() - uiBefore, MostPerByte * in_strScript.size() + 64 * Mebibyte);
        });
    }

    /// The one line of the parser that names the place and the limit.
    static void expectRefused(const std::string& in_strScript, int in_iLine,
                              std::size_t in_uiColumn, const std::string& in_strText) {
        call([&] {
            const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
            Evaluator evaluator;
            EXPECT_FALSE(load(evaluator, in_strScript));
            EXPECT_EQ(log.count(log4cplus::ERROR_LOG_LEVEL, "syntax error:"), 1U);
            EXPECT_EQ(log.count(log4cplus::ERROR_LOG_LEVEL,
                                "syntax error:<file_position fileName=\"s\" line=\"" +
                                    std::to_string(in_iLine) + "\" column=\"" +
                                    std::to_string(in_uiColumn) + "\"/> " + in_strText),
                      1U);
        });
    }
};

INSTANTIATE_TEST_SUITE_P(MainThread, SizesTest, ::testing::Values(MainThread));
INSTANTIATE_TEST_SUITE_P(StackOf8MiB, SizesTest, ::testing::Values(8 * Mebibyte));
INSTANTIATE_TEST_SUITE_P(StackOf256KiB, SizesTest, ::testing::Values(Mebibyte / 4));

TEST_P(SizesTest, ASumOfAsManyTermsAsTheLimitWorks) {
    expectWorks("inputvar a\nx = a" + repeated("+a", ScriptParser::MaxOperatorDepth) + "\n", 1);
}

TEST_P(SizesTest, ASumOf200000TermsIsRefused) {
    expectRefused("x = 1" + repeated("+1", 199999), 1, 6 + 2 * ScriptParser::MaxOperatorDepth,
                  "Operators are chained more than 100000 levels deep.");
}

TEST_P(SizesTest, AnExpressionThatReadsALongOneAThousandTimesWorks) {
    // Each of the references stands below a thousand operators, and above twenty thousand.
    expectWorks(
        "inputvar a\ny = a" + repeated("+a", 20000) + "\nx = y" + repeated("+y", 1000) + "\n", 1);
}

TEST_P(SizesTest, AnythingNested100000DeepIsRefused) {
    struct Nesting {
        const char* m_szOpening;
        /// How far behind the start of the opening the first expression inside begins.
        std::size_t m_uiInside;
    };
    for (const Nesting& nesting :
         {Nesting{"(", 1}, Nesting{"a[", 2}, Nesting{"{", 1}, Nesting{"f(", 2}, Nesting{"if(", 3},
          Nesting{"if(1,", 3}, Nesting{"if(1,2,", 3}, Nesting{"f<1>(", 5}, Nesting{"+", 1}}) {
        const std::string strOpening(nesting.m_szOpening);
        expectRefused("x = " + repeated(strOpening, 100000), 1,
                      5 + ScriptParser::MaxNesting * strOpening.size() + nesting.m_uiInside,
                      "Expressions are nested more than 1000 levels deep.");
    }
}

TEST_P(SizesTest, ConditionsNestedUpToTheLimitWork) {
    expectWorks("x = " + repeated("if(1,", ScriptParser::MaxNesting) + "1" +
                    repeated(",2)", ScriptParser::MaxNesting) + "\n",
                1);
}

TEST_P(SizesTest, FunctionsThatCallEachOther10000DeepAreRefused) {
    call([] {
        const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
        Evaluator evaluator;
        ASSERT_TRUE(load(evaluator, "f0(u) = u + 1\n" + numbered("f#(u) = f@(u)\n", 1, 10000)));
        EXPECT_FALSE(evaluator.link(true));
        EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL),
                    ::testing::ElementsAre(::testing::MatchesRegex(
                        "<file_position fileName=\"s\" line=\"[0-9]+\" column=\"[0-9]+\"/>:too "
                        "many copies of functions for expression: s.f[0-9]+[.].*500000.*")));
    });
}

TEST_P(SizesTest, FunctionsThatCallEachOther500DeepWork) {
    call([] {
        Evaluator evaluator;
        ASSERT_TRUE(load(evaluator, "f0(u) = u + 1\n" + numbered("f#(u) = f@(u)\n", 1, 500) +
                                        "x = f499(1)\n"));
        ASSERT_TRUE(evaluator.link(true));
        DoubleVector vValue;
        EXPECT_TRUE(evaluator.getExpression("s.x")->evaluate(vValue));
        EXPECT_EQ(vValue[0], 2.0);
    });
}

TEST_P(SizesTest, AConcatenationOf100000ElementsWorks) {
    expectWorks("x = {1" + repeated(",1", 99999) + "}\n", 100000);
    expectWorks("inputvar a\nx = {a" + repeated(",a", 99999) + "}\n", 100000);
}

TEST_P(SizesTest, AFunctionOf20000ArgumentsAndItsCallWork) {
    expectWorks("f(a" + numbered(",a#", 1, 20000) + ") = a19999\nx = f(1" + repeated(",1", 19999) +
                    ")\n",
                1);
}

/// What is long and not deep needs one stack only.
using LengthTest = SizesTest;

INSTANTIATE_TEST_SUITE_P(StackOf256KiB, LengthTest, ::testing::Values(Mebibyte / 4));

TEST_P(LengthTest, ALineOf10MegabytesWorksOrIsRefused) {
    const std::string strLong(10000000, '1');
    expectWorks("x = 1 /*" + strLong + "*/\n", 1);
    expectWorks("x = 1." + strLong + "\n", 1);
    expectWorks("x = 1" + repeated("\\\n", 5000000) + "\n", 1);
    expectRefused("x = {1" + repeated(",1", 5000000) + "}", 1, 1,
                  "The script has more than 1048576 definitions and operands.");
    expectRefused("\nx = f(1" + repeated(",1", 5000000) + ")", 2, 1,
                  "The script has more than 1048576 definitions and operands.");
    expectRefused(numbered("x# = {1" + repeated(",1", 999) + "}\n", 0, 5000), 1049, 1,
                  "The script has more than 1048576 definitions and operands.");
}

TEST_P(LengthTest, ANameOf1MegabyteWorks) {
    const std::string strName(1000000, 'n');
    expectWorks(strName + "(" + strName + ") = " + strName + " + 1\nx = " + strName + "(1)\n", 1);
}

TEST_P(LengthTest, AFileOf100MegabytesIsRefused) {
    for (const char* szText : {"x = 1\n", "\n", "//\n", "(", "/*"}) {
        const std::string strText(szText);
        expectRefused(repeated(strText, 100000000 / strText.size()), 1, 1,
                      "The script has more than 33554432 bytes.");
    }
}

TEST_P(LengthTest, AMillionDefinitionsWork) {
    expectWorks(numbered("x#=1\n", 0, 999999) + "x=1\n", 1);
}

TEST_P(LengthTest, OneDefinitionMoreThanTheLimitIsRefused) {
    expectRefused(numbered("x#=1\n", 0, ScriptParser::MaxOperands + 1),
                  static_cast<int>(ScriptParser::MaxOperands) + 1, 1,
                  "The script has more than 1048576 definitions and operands.");
}

TEST_P(LengthTest, MoreSidesOfOperatorsThanTheLimitAreRefused) {
    // Each definition has two thousand and one.
    expectRefused(numbered("x#=1" + repeated("+1", 1000) + "\n", 0, 1000), 525, 1,
                  "The script has more than 1048576 definitions and operands.");
}

TEST_P(LengthTest, NamesOfOneHashCostNoMoreThanOthers) {
    // A "ba" in the place of an "af" leaves h * 5 + b as it was.
    std::string strScript = "x=1\n";
    for (std::size_t ui = 0; ui != 100000; ++ui) {
        for (std::size_t uiBit = 0; uiBit != 17; ++uiBit) {
            strScript += (ui >> uiBit & 1) != 0 ? "af" : "ba";
        }
        strScript += "=1\n";
    }
    expectWorks(strScript, 1);
}

TEST_P(LengthTest, WhatNothingClosesIsRefusedAtItsPlaceBehindAnythingThatIsLong) {
    struct Beginning {
        std::string m_strText;
        std::size_t m_uiLine;
    };
    const std::vector<Beginning> vBeginnings{
        {"y = 1 ", 1},
        {numbered("x#=1\n", 0, 999999) + "y = ", 1000000},
        {"y = " + repeated("(", ScriptParser::MaxNesting - 1), 1},
        {"y = 1" + repeated("+1", ScriptParser::MaxOperatorDepth - 1) + "+", 1},
        {std::string(1000000, 'n') + " = ", 1},
        {"y = 1" + repeated("\\\n", 1000000) + "+", 1}};
    for (const Beginning& beginning : vBeginnings) {
        for (const char* szOpening : {"/*", "f<\""}) {
            call([&] {
                const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
                Evaluator evaluator;
                EXPECT_FALSE(
                    load(evaluator, beginning.m_strText + szOpening + std::string(1000000, 'a')));
                const std::string strPlace = "syntax error:<file_position fileName=\"s\" line=\"" +
                                             std::to_string(beginning.m_uiLine) +
                                             "\" column=\"1\"/>";
                EXPECT_EQ(log.count(log4cplus::ERROR_LOG_LEVEL, strPlace), 1U);
                EXPECT_LE(log.count(log4cplus::ERROR_LOG_LEVEL), 24U);
            });
        }
    }
}

TEST_P(LengthTest, AFrameOf100MillionSamplesIsComputedOrRefused) {
    call([] {
        Evaluator evaluator;
        ASSERT_TRUE(load(evaluator, "inputvar x\ns = sum(x)\nm = max(x)\nc = {x, 1}\n"));
        ASSERT_TRUE(evaluator.link(true));
        ASSERT_TRUE(evaluator.reconfigureExpressions());
        DoubleVector vFrame;
        vFrame.resize(100000000);
        std::fill(vFrame.begin(), vFrame.end(), 0.5);
        evaluator.getVariable("s.x")->setValue(vFrame);
        const std::size_t uiBefore = peakMemory();
        DoubleVector vValue;
        ASSERT_TRUE(evaluator.getExpression("s.s")->evaluate(vValue));
        EXPECT_EQ(vValue[0], 5e7);
        ASSERT_TRUE(evaluator.getExpression("s.m")->evaluate(vValue));
        EXPECT_EQ(vValue[0], 0.5);
        EXPECT_LT(peakMemory() - uiBefore, 64 * Mebibyte);
        const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
        EXPECT_FALSE(evaluator.getExpression("s.c")->evaluate(vValue) && vValue.size() > 1);
        EXPECT_EQ(log.count(log4cplus::ERROR_LOG_LEVEL,
                            "<file_position fileName=\"s\" line=\"4\" column=\"7\"/>:the "
                            "concatenation has more elements than the limit of 16777216"),
                  1U);
    });
}

} // namespace
