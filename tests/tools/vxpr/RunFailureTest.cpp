#include "RunTest.h"

namespace Vxpr {

using namespace Vxpr::TestSupport;
using testing::HasSubstr;

namespace {

std::size_t countOf(const std::string& in_strPart, const std::string& in_strText) {
    std::size_t uiCount = 0;
    for (std::size_t uiPlace = in_strText.find(in_strPart); uiPlace != std::string::npos;
         uiPlace = in_strText.find(in_strPart, uiPlace + 1)) {
        ++uiCount;
    }
    return uiCount;
}

} // namespace

/// Everything holds with and without the optimizer.
class RunFailureTest : public RunTest, public testing::WithParamInterface<const char*> {
protected:
    ProcessResult run(const std::string& in_strScript, const std::string& in_strTable,
                      std::vector<std::string> in_vMore = {}) const {
        if (*GetParam() != '\0') {
            in_vMore.emplace_back(GetParam());
        }
        return runOverTable(in_strScript, in_strTable, in_vMore);
    }
};

INSTANTIATE_TEST_SUITE_P(Run, RunFailureTest, testing::Values("", "--no-optimize"),
                         [](const auto& in_Info) {
                             return *in_Info.param == '\0' ? "Optimized" : "Plain";
                         });

TEST_P(RunFailureTest, AFrameThatFailsLeavesAnEmptyCellAndTheRunGoesOn) {
    const ProcessResult result = run("inputvar x\na = 1 / x\nb = x\n", "1\n0\n4\n0\n");
    EXPECT_EQ(result.m_strOutput, "time,a,b\n0,1,1\n1,,0\n2,0.25,4\n3,,0\n");
    EXPECT_EQ(result.m_iStatus, 1);
}

TEST_P(RunFailureTest, AFailureIsToldOnceWithItsFrameItsTimeAndItsPlace) {
    const ProcessResult result = run("inputvar x\na = 1 / x\n", "1\n0\n4\n0\n");
    EXPECT_EQ(countOf("error:", result.m_strErrors), 1U);
    EXPECT_THAT(result.m_strErrors,
                HasSubstr("s.xpr:2:7: error: `a` has no value on frame 1 (1 s): division by zero"));
    EXPECT_THAT(result.m_strErrors, HasSubstr("    2 | a = 1 / x\n      |       ^\n"));
    EXPECT_THAT(result.m_strErrors, HasSubstr("note: `a` has no value on 2 of 4 frames"));
}

TEST_P(RunFailureTest, AFailureReachesEverythingThatReadsIt) {
    const ProcessResult result =
        run("inputvar x\na = 1 / x\nb = a + 1\nf(y) = y * 2\nc = f(b)\nd = sum(c)\ne = {d, x}\n",
            "1\n0\n4\n");
    EXPECT_EQ(result.m_strOutput,
              "time,a,b,c,d,e[0],e[1]\n0,1,2,4,4,4,1\n1,,,,,,\n2,0.25,1.25,2.5,2.5,2.5,4\n");
}

TEST_P(RunFailureTest, AFailureOnTheFirstFrameHoldsTheHeaderBack) {
    EXPECT_EQ(run("inputvar x\na = {1, 2, 3} / x\n", "0\n0\n2\n").m_strOutput,
              "time,a[0],a[1],a[2]\n0,,,\n1,,,\n2,0.5,1,1.5\n");
}

TEST_P(RunFailureTest, AFailureInABranchThatIsntChosenIsNone) {
    const ProcessResult result =
        run("inputvar x\nrisky = 1 / x\nsafe = if(x, risky, -1)\n", "1\n0\n4\n", {"safe"});
    EXPECT_EQ(result.m_strOutput, "time,safe\n0,1\n1,-1\n2,0.25\n");
    EXPECT_EQ(result.m_strErrors, "");
    EXPECT_EQ(result.m_iStatus, 0);
}

TEST_P(RunFailureTest, AFailureInTheChosenBranchIsOne) {
    EXPECT_EQ(run("inputvar x\na = if(isGreater(x, 0), 1 / x, x)\n", "1\n0\n-4\n2\n").m_strOutput,
              "time,a\n0,1\n1,\n2,-4\n3,0.5\n");
}

TEST_P(RunFailureTest, AFeatureThatFailsBesideOneThatAvoidsIt) {
    EXPECT_EQ(run("inputvar x\nrisky = 1 / x\nsafe = if(x, risky, -1)\n", "0\n1\n0\n").m_strOutput,
              "time,risky,safe\n0,,-1\n1,1,1\n2,,-1\n");
}

TEST_P(RunFailureTest, AFunctionThatGivesNothingIsNamed) {
    const ProcessResult result = run("inputvar x\na = min(x)\n", "1,2\n,,\n3,4\n");
    EXPECT_EQ(result.m_strOutput, "time,a\n0,1\n1,\n2,3\n");
    EXPECT_THAT(result.m_strErrors,
                HasSubstr("s.xpr:2:5: error: `a` has no value on frame 1 (1 s): "
                          "`min` gives nothing for 0 elements"));
}

TEST_P(RunFailureTest, AFunctionWithoutItsArgumentsHasNoValue) {
    const ProcessResult result = run("inputvar x\nf(y, z) = y + z\na = f\nb = x\n", "1\n2\n");
    EXPECT_EQ(result.m_strOutput, "time,a,b\n0,,1\n1,,2\n");
    EXPECT_THAT(result.m_strErrors,
                HasSubstr("s.xpr:3:1: error: `a` has no value on frame 0 (0 s): an argument has no "
                          "value: a function is used here without its arguments; call it as f(y, "
                          "z)"));
}

TEST_P(RunFailureTest, EveryFeatureIsToldItsOwnCause) {
    const std::string strMin = "`y` has no value on frame 0 (0 s): `min` gives nothing for 0 "
                               "elements; it is called as min(x)";
    const std::string strFrequency = "`z` has no value on frame 0 (0 s): `centralFrequency` gives "
                                     "nothing for 1 element and 3 elements (Can't compute";
    const ProcessResult before =
        run("inputvar x\nz = centralFrequency(0, {1,2,3})\ny = min(x)\n", ",\n");
    EXPECT_THAT(before.m_strErrors, HasSubstr(strMin));
    EXPECT_THAT(before.m_strErrors, HasSubstr(strFrequency));
    const ProcessResult behind =
        run("inputvar x\ny = min(x)\nz = centralFrequency(0, {1,2,3})\n", ",\n");
    EXPECT_THAT(behind.m_strErrors, HasSubstr(strMin));
    EXPECT_THAT(behind.m_strErrors, HasSubstr(strFrequency));
}

TEST_P(RunFailureTest, AFunctionWithoutItsArgumentsIsNoCauseOfOtherFailures) {
    const ProcessResult result = run("inputvar x\nz = centralFrequency(0, x)\ns = sum\n", "1,2\n");
    EXPECT_THAT(result.m_strErrors,
                HasSubstr("`z` has no value on frame 0 (0 s): `centralFrequency` gives nothing for "
                          "1 element and 2 elements (Can't compute"));
    EXPECT_THAT(result.m_strErrors, HasSubstr("`s` has no value on frame 0 (0 s): an argument has "
                                              "no value: a function is used here"));
}

TEST_P(RunFailureTest, OneOperatorThatFailsInTwoWaysIsToldInBoth) {
    const ProcessResult result =
        run("inputvar x\na = 1 / x\nb = 2 / (x[0] - x[0])\nc = b + 1\n", "1,2\n");
    EXPECT_THAT(result.m_strErrors, HasSubstr("`a` has no value on frame 0 (0 s): `/` needs a "
                                              "single element on its right side, which has 2"));
    for (const char* szName : {"b", "c"}) {
        EXPECT_THAT(result.m_strErrors, HasSubstr("`" + std::string(szName) +
                                                  "` has no value on frame 0 (0 s): division"));
    }
}

TEST_P(RunFailureTest, AFailureThatAnotherFeatureRanIntoIsToldToItsReaders) {
    const ProcessResult result =
        run("inputvar x\nd = 1 / (x - x)\na = {x[5], d}\nb = d\n", "1\n", {"a", "b"});
    EXPECT_THAT(result.m_strErrors, HasSubstr("`a` has no value on frame 0 (0 s): an index"));
    EXPECT_THAT(result.m_strErrors,
                HasSubstr("`b` has no value on frame 0 (0 s): division by zero"));
}

struct Fault {
    const char* m_szExpression;
    const char* m_szTable;
    const char* m_szText;
};

TEST_P(RunFailureTest, MessagesTellWhatIsWrongInTheTermsOfTheLanguage) {
    for (const Fault& fault : {
             Fault{"x + {1, 2}", "1\n",
                   "`+` needs two values of one size, and these have 1 "
                   "element and 2 elements"},
             Fault{"x - {1, 2}", "1\n", "`-` needs two values of one size"},
             Fault{"{1, 2} * {x, x}", "1\n",
                   "`*` needs a single element on one side, and these "
                   "have 2 elements and 2 elements"},
             Fault{"x / {1, 2}", "1\n",
                   "`/` needs a single element on its right side, which has 2 "
                   "elements"},
             Fault{"x * 2", ",\n",
                   "`*` has nothing to multiply: the values have 0 elements and 1 "
                   "element"},
             Fault{"x[1]", "1\n", "lies outside of the value, which has 1 element"},
             Fault{"isGreater(x, 1)", "1,2\n",
                   "isGreater compares single elements, and its first "
                   "argument has 2 elements"},
             Fault{"isGreater(1, x)", "1,2\n", "its second argument has 2 elements"},
         }) {
        const ProcessResult result =
            run(std::string("inputvar x\na = ") + fault.m_szExpression + "\n", fault.m_szTable);
        EXPECT_THAT(result.m_strErrors, HasSubstr(fault.m_szText)) << fault.m_szExpression;
        EXPECT_EQ(result.m_strOutput, "time,a\n0,\n") << fault.m_szExpression;
        EXPECT_EQ(result.m_iStatus, 1) << fault.m_szExpression;
    }
}

TEST_P(RunFailureTest, ParametersThatAFunctionRefusesAreToldWithTheirPlace) {
    const ProcessResult result = run("inputvar x\nb = x\na = 1 + slidingWindow<0>(x)\n", "1\n");
    EXPECT_EQ(result.m_iStatus, 1);
    EXPECT_EQ(result.m_strOutput, "");
    EXPECT_THAT(result.m_strErrors,
                HasSubstr("s.xpr:3:9: error: `slidingWindow` can't use these parameters"));
}

TEST_P(RunFailureTest, ParametersThatAFunctionAcceptsButCantUseAreToldWithWhatItNeeds) {
    const ProcessResult result =
        run("inputvar x\na = sinusCorrelate<8000.0,1000>(x)\nb = a + 1\nc = x\n"
            "d = amDemodulate<8000,\"1\">(x)\n",
            "1\n2\n");
    EXPECT_EQ(result.m_strOutput, "time,a,b,c,d\n0,,,1,\n1,,,2,\n");
    EXPECT_EQ(result.m_iStatus, 1);
    for (const char* szName : {"a", "b"}) {
        EXPECT_THAT(result.m_strErrors,
                    HasSubstr("s.xpr:2:5: error: `" + std::string(szName) +
                              "` has no value on frame 0 (0 s): `sinusCorrelate` can't use these "
                              "parameters (`sampleRate` takes another kind of value: 8000 is a "
                              "whole number, 8000.0 is none, and \"8000\" is a text); call it as "
                              "sinusCorrelate<sampleRate, frequency>(x)\n"));
    }
    EXPECT_THAT(result.m_strErrors, HasSubstr("`d` has no value on frame 0 (0 s): `amDemodulate` "
                                              "can't use these parameters (Parameter 'freq'"));
}

TEST_P(RunFailureTest, AValueThatGrowsIsCutAndToldOnce) {
    const ProcessResult result = run("inputvar x\na = slidingWindow<3>(x)\n", "1\n2\n3\n");
    EXPECT_EQ(result.m_strOutput, "time,a\n0,1\n1,1\n2,1\n");
    EXPECT_EQ(countOf("error:", result.m_strErrors), 1U);
    EXPECT_THAT(result.m_strErrors,
                HasSubstr("`a` has 2 elements on frame 1 (1 s), but only 1 column"));
    EXPECT_EQ(result.m_iStatus, 1);
}

TEST_P(RunFailureTest, JsonLinesHoldValuesThatGrow) {
    const ProcessResult result =
        run("inputvar x\na = slidingWindow<3>(x)\n", "1\n2\n", {"--format", "jsonl"});
    EXPECT_EQ(result.m_strOutput, "{\"time\":0,\"a\":1}\n{\"time\":1,\"a\":[1,2]}\n");
    EXPECT_EQ(result.m_iStatus, 0);
}

} // namespace Vxpr
