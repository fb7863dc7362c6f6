#include "RunTest.h"

#include <sys/stat.h>

namespace Vxpr {

using namespace Vxpr::TestSupport;
using testing::HasSubstr;
using testing::Not;

class CheckCommandTest : public RunTest {};

struct Mistake {
    const char* m_szScript;
    const char* m_szMessage;
};

TEST_F(CheckCommandTest, AScriptWithoutFaultsIsNamed) {
    const std::string strScript = writeScript("inputvar frame\na = sum(frame)\n");
    const ProcessResult result = runVxpr({"check", strScript});
    EXPECT_EQ(result.m_strOutput, strScript + ": no faults\n");
    EXPECT_EQ(result.m_strErrors, "");
    EXPECT_EQ(result.m_iStatus, 0);
    EXPECT_EQ(runVxpr({"check", "-q", strScript}).m_strOutput, "");
}

TEST_F(CheckCommandTest, AFaultShowsItsPlaceItsLineAndACaret) {
    const std::string strScript = writeScript("inputvar frame\n\ta = enrgy<8000>(frame)\n");
    const ProcessResult result = runVxpr({"check", strScript});
    EXPECT_EQ(result.m_strErrors,
              strScript + ":2:9: error: `enrgy` isn't defined here, and there is no built-in "
                          "function and no script of that name; did you mean `energy`?\n"
                          "    2 |     a = enrgy<8000>(frame)\n"
                          "      |         ^\n");
    EXPECT_EQ(result.m_strOutput, "");
    EXPECT_EQ(result.m_iStatus, 1);
}

TEST_F(CheckCommandTest, EveryStatementThatCantBeReadIsShown) {
    const ProcessResult result =
        runVxpr({"check", writeScript("a = (1 + 2\nb = 3\nc = {1, 2\nd = b + e\nf = a + c\n")});
    EXPECT_THAT(result.m_strErrors, HasSubstr("s.xpr:1:11: error: `)` is missing here"));
    EXPECT_THAT(result.m_strErrors, HasSubstr("s.xpr:3:10: error: `}` is missing here"));
    EXPECT_THAT(result.m_strErrors, HasSubstr("s.xpr:4:9: error: `e` isn't defined here"));
    // What the faulty statements define isn't missing.
    EXPECT_THAT(result.m_strErrors, Not(HasSubstr("s.xpr:5")));
}

TEST_F(CheckCommandTest, EveryScriptIsChecked) {
    const std::string strGood = m_Scratch.write("good.xpr", "a = 1\n");
    const std::string strBad = m_Scratch.write("bad.xpr", "a = b\n");
    const std::string strMissing = m_Scratch.getPath("missing.xpr");
    const ProcessResult result = runVxpr({"check", strBad, strMissing, strGood});
    EXPECT_EQ(result.m_strOutput, strGood + ": no faults\n");
    EXPECT_THAT(result.m_strErrors, HasSubstr("bad.xpr:1:5: error: `b` isn't defined"));
    EXPECT_THAT(result.m_strErrors, HasSubstr("missing.xpr': No such file"));
    EXPECT_EQ(result.m_iStatus, 1);
}

TEST_F(CheckCommandTest, AFullDiskIsTold) {
    ProcessOptions options;
    options.m_strOutputPath = "/dev/full";
    const ProcessResult result = runVxpr({"check", writeScript("a = 1\n")}, options);
    EXPECT_EQ(result.m_strErrors,
              "vxpr: error: can't write the standard output: No space left on device; free some "
              "space or send it to another place\n");
    EXPECT_EQ(result.m_iStatus, 1);
}

TEST_F(CheckCommandTest, FaultsCountAlsoWhereNobodyReadsTheOutput) {
    ProcessOptions options;
    options.m_uiOutputWanted = 1;
    std::vector<std::string> vArguments{"check"};
    vArguments.insert(vArguments.end(), 20, m_Scratch.write("good.xpr", "a = 1\n"));
    vArguments.push_back(m_Scratch.write("bad.xpr", "a = b\n"));
    const ProcessResult result = runVxpr(vArguments, options);
    EXPECT_THAT(result.m_strErrors, HasSubstr("bad.xpr:1:5: error: `b` isn't defined"));
    EXPECT_EQ(result.m_iStatus, 1);
}

TEST_F(CheckCommandTest, AScriptWithoutAnEndIsRefused) {
    const ProcessResult result = runVxpr({"check", "/dev/zero"});
    EXPECT_EQ(result.m_strErrors,
              "vxpr: error: the script '/dev/zero' has more than 33554432 bytes; "
              "divide it into several that use each other\n");
    EXPECT_EQ(result.m_iStatus, 1);
}

TEST_F(CheckCommandTest, OfManyRepeatedDefinitionsTheFirstHundredAreShown) {
    std::string strScript;
    for (int iLine = 0; iLine != 10000; ++iLine) {
        strScript += "a = 1\n";
    }
    const ProcessResult result = runVxpr({"check", writeScript(strScript)});
    EXPECT_THAT(result.m_strErrors, HasSubstr("s.xpr:2:1: error: `a` is defined already"));
    EXPECT_THAT(result.m_strErrors, HasSubstr("s.xpr:101:1: error: `a` is defined already"));
    EXPECT_THAT(result.m_strErrors, Not(HasSubstr("s.xpr:102")));
    EXPECT_EQ(result.m_iStatus, 1);
}

TEST_F(CheckCommandTest, AFaultInAnotherScriptIsShownThere) {
    m_Scratch.write("lib.xpr", "x = (1\n");
    const ProcessResult result = runVxpr({"check", writeScript("a = lib.x\n")});
    EXPECT_EQ(result.m_iStatus, 1);
    EXPECT_THAT(result.m_strErrors, HasSubstr("lib.xpr:1:7: error: `)` is missing here"));
    EXPECT_THAT(result.m_strErrors, HasSubstr("    1 | x = (1\n"));
}

TEST_F(CheckCommandTest, ANameThatAnotherScriptLacksIsToldWithANearOne) {
    m_Scratch.write("lib.xpr", "level = 1\n");
    const ProcessResult result = runVxpr({"check", writeScript("a = lib.levle\nb = nolib.x\n")});
    EXPECT_THAT(result.m_strErrors, HasSubstr("s.xpr:1:5: error: the script `lib` doesn't define "
                                              "`levle`; did you mean `level`?"));
    EXPECT_THAT(result.m_strErrors,
                HasSubstr("s.xpr:2:5: error: `nolib.x` can't be found: there is "
                          "no script nolib.xpr in '" +
                          m_Scratch.getPath()));
}

TEST_F(CheckCommandTest, WhatIsCalledAsAScriptButIsNoFileIsTold) {
    ASSERT_EQ(mkdir(m_Scratch.getPath("folder.xpr").c_str(), 0777), 0);
    ASSERT_EQ(mkfifo(m_Scratch.getPath("pipe.xpr").c_str(), 0666), 0);
    const ProcessResult result = runVxpr({"check", writeScript("a = folder.x\nb = pipe.x\n")});
    for (const char* szName : {"folder", "pipe"}) {
        EXPECT_THAT(result.m_strErrors,
                    HasSubstr("`" + std::string(szName) + ".x` can't be reached: '" +
                              m_Scratch.getPath(std::string(szName) + ".xpr") +
                              "' is there, but is no file that can be read"));
    }
    EXPECT_EQ(result.m_iStatus, 1);
}

TEST_F(CheckCommandTest, NearNamesComeFromDefinitionsInputsArgumentsAndBuiltIns) {
    const ProcessResult result = runVxpr({"check", writeScript("inputvar spectrum\nlevel = 1\n"
                                                               "f(left, right) = lefd + right\n"
                                                               "a = spectrm\nb = leve\n"
                                                               "c = slidingWindwo<3>(level)\n")});
    for (const char* szName : {"left", "spectrum", "level", "slidingWindow"}) {
        EXPECT_THAT(result.m_strErrors, HasSubstr("did you mean `" + std::string(szName) + "`?"));
    }
}

TEST_F(CheckCommandTest, AScriptWhoseNameContainsAPointIsWarnedOf) {
    const std::string strScript = m_Scratch.write("a.b.xpr", "x = 1\n");
    const ProcessResult result = runVxpr({"check", strScript});
    EXPECT_THAT(result.m_strErrors,
                HasSubstr("warning: the script's name, `a.b`, contains a point, so other scripts "
                          "can't reach what it defines"));
    EXPECT_EQ(result.m_strOutput, strScript + ": no faults\n");
    EXPECT_EQ(result.m_iStatus, 0);
}

TEST_F(CheckCommandTest, AScriptWhoseNameContainsAPointReachesNothing) {
    const ProcessResult result =
        runVxpr({"check", m_Scratch.write("a.b.xpr", "x = 1\ny = x\nz = sum(x)\n")});
    EXPECT_THAT(result.m_strErrors,
                HasSubstr("a.b.xpr:2:5: error: `x` can't be reached because the name of the "
                          "script, `a.b`, contains a point; rename the file"));
    EXPECT_THAT(result.m_strErrors, HasSubstr("a.b.xpr:3:5: error: `sum` can't be reached"));
    EXPECT_EQ(result.m_iStatus, 1);
}

TEST_F(CheckCommandTest, ANameThatIsDefinedTwiceIsShownAtItsSecondPlace) {
    const ProcessResult result =
        runVxpr({"check", writeScript("a = 1\nb = a\na = 2\ninputvar c\n  inputvar c\n")});
    EXPECT_THAT(result.m_strErrors,
                HasSubstr("s.xpr:3:1: error: `a` is defined already, in line 1"));
    EXPECT_THAT(result.m_strErrors,
                HasSubstr("s.xpr:5:12: error: `c` is defined already, in line 4"));
    EXPECT_EQ(result.m_iStatus, 1);
}

TEST_F(CheckCommandTest, ParametersAreTried) {
    EXPECT_THAT(
        runVxpr({"check", writeScript("inputvar x\na = slidingWindow<-1>(x)\n")}).m_strErrors,
        HasSubstr("s.xpr:2:5: error: `slidingWindow` can't use these parameters (WindowSize "
                  "is -1 and takes a whole number above 0); call it as "
                  "slidingWindow<WindowSize>(x)"));
}

TEST_F(CheckCommandTest, AFaultyStatementWhoseNameIsUsedIsShownOnce) {
    for (const char* szStatement : {"t = 1 +", "t = 0x10", "t = {1 ? 2}", "t = (1"}) {
        const ProcessResult result =
            runVxpr({"check", writeScript(std::string(szStatement) + "\ninputvar x\nb = x * t\n")});
        const std::string strFirst = "s.xpr:1:";
        const std::size_t uiFirst = result.m_strErrors.find(strFirst);
        EXPECT_NE(uiFirst, std::string::npos) << szStatement;
        EXPECT_EQ(result.m_strErrors.find(strFirst, uiFirst + 1), std::string::npos)
            << result.m_strErrors;
        EXPECT_EQ(result.m_iStatus, 1);
    }
}

TEST_F(CheckCommandTest, ParametersThatAreRefusedWithoutAWordAreShownWithWhatTheyTake) {
    for (const Mistake& mistake : {
             Mistake{"energy<\"a\">(x)", "(SampleRate is \"a\" and takes a number above 0)"},
             Mistake{"debounce<1.5>(x)", "(DebounceValue is 1.5 and takes a whole number from 0)"},
             Mistake{"debounceOnOff<2, -1>(x)", "(DebounceOnValue is 2 and takes a whole number "
                                                "from 0; DebounceOffValue is -1 and takes a whole"},
             Mistake{"tappedDelay<3, 0, \"b\">(x)",
                     "PaddingValues is \"b\" and takes a number, or"},
             Mistake{"amDemodulate<8000, 0>(x)", "freq is 0 and takes a number above 0 and up to"},
             Mistake{"f<0>(x)\nf<n>(y) = slidingWindow<n>(y)", "(WindowSize is 0 and takes"},
         }) {
        const ProcessResult result = runVxpr(
            {"check", writeScript(std::string("inputvar x\na = ") + mistake.m_szScript + "\n")});
        EXPECT_THAT(result.m_strErrors, HasSubstr(mistake.m_szMessage)) << mistake.m_szScript;
    }
}

TEST_F(CheckCommandTest, ParametersThatAreRefusedAreToldOnlyOfTheirFunction) {
    const std::string strErrors =
        runVxpr({"check", writeScript("inputvar x\na = amDemodulate<8000,\"1\">(x)\n"
                                      "b = {a, slidingWindow<0>(a)}\nc = slidingWindow<0>(x)\n")})
            .m_strErrors;
    EXPECT_THAT(strErrors, HasSubstr("s.xpr:3:9: error: `slidingWindow` can't use these "
                                     "parameters (WindowSize is 0 and takes"));
    EXPECT_THAT(strErrors, HasSubstr("s.xpr:4:5: error: `slidingWindow` can't use these "
                                     "parameters (WindowSize is 0 and takes"));
}

TEST_F(CheckCommandTest, EveryFunctionThatRefusesItsParametersIsShown) {
    const ProcessResult result = runVxpr(
        {"check", writeScript("inputvar x\na = slidingWindow<0>(x) + vad<-1.0,9>(x)\nf(y) = 3\n"
                              "b = f(slidingWindow<-1>(x))\n")});
    EXPECT_THAT(result.m_strErrors, HasSubstr("s.xpr:2:5: error: `slidingWindow` can't use"));
    EXPECT_THAT(result.m_strErrors,
                HasSubstr("s.xpr:2:27: error: `vad` can't use these parameters (Invalid value"));
    EXPECT_THAT(result.m_strErrors, HasSubstr("s.xpr:4:7: error: `slidingWindow` can't use"));
    EXPECT_EQ(result.m_iStatus, 1);
}

TEST_F(CheckCommandTest, ParametersThatAFunctionAcceptsButCantUseAreShown) {
    for (const Mistake& mistake : {
             Mistake{"amDemodulate<8000,\"1\">(x)",
                     "s.xpr:2:5: error: `amDemodulate` can't use these parameters (Parameter "
                     "'freq' must be either an INTEGER or a FLOAT number); call it as "
                     "amDemodulate<sampleRate, freq>(x)\n"},
             Mistake{"sinusCorrelate<8000.0,1000>(x)",
                     "s.xpr:2:5: error: `sinusCorrelate` can't use these parameters (`sampleRate` "
                     "takes another kind of value: 8000 is a whole number, 8000.0 is none"},
             Mistake{"vad<-60, 1>(x)", "`vad` can't use these parameters (`minimumEnergyDBm` takes "
                                       "another kind of value"},
         }) {
        const ProcessResult result = runVxpr(
            {"check", writeScript(std::string("inputvar x\na = ") + mistake.m_szScript + "\n")});
        EXPECT_THAT(result.m_strErrors, HasSubstr(mistake.m_szMessage)) << mistake.m_szScript;
        EXPECT_EQ(result.m_strOutput, "") << mistake.m_szScript;
        EXPECT_EQ(result.m_iStatus, 1) << mistake.m_szScript;
    }
    const ProcessResult good =
        runVxpr({"check", writeScript("inputvar x\na = sinusCorrelate<8000,1000>(x)\n"
                                      "b = amDemodulate<8000,50>(x)\n")});
    EXPECT_EQ(good.m_strErrors, "");
    EXPECT_EQ(good.m_iStatus, 0);
}

TEST_F(CheckCommandTest, AFunctionWithoutItsArgumentsIsShownWhereItIsUsed) {
    const ProcessResult result =
        runVxpr({"check", writeScript("inputvar x\nf(y, z) = y + z\na = sum\nb = 1 + sum\nc = f\n"
                                      "d = if(x, x, 1 + f)\n")});
    const std::string strText = "error: an argument has no value: a function is used here without "
                                "its arguments; call it as ";
    EXPECT_THAT(result.m_strErrors, HasSubstr("s.xpr:3:5: " + strText + "sum(x)\n"));
    EXPECT_THAT(result.m_strErrors, HasSubstr("s.xpr:4:9: " + strText + "sum(x)\n"));
    EXPECT_THAT(result.m_strErrors, HasSubstr("s.xpr:5:1: " + strText + "f(y, z)\n"));
    EXPECT_THAT(result.m_strErrors, HasSubstr("s.xpr:6:16: " + strText + "f(y, z)\n"));
    EXPECT_EQ(result.m_strOutput, "");
    EXPECT_EQ(result.m_iStatus, 1);
}

TEST_F(CheckCommandTest, AFunctionThatReadsNoneOfItsArgumentsHasAValueWithoutThem) {
    const ProcessResult result = runVxpr({"check", writeScript("f(x) = 3\na = f\n")});
    EXPECT_EQ(result.m_strErrors, "");
    EXPECT_EQ(result.m_iStatus, 0);
}

TEST_F(CheckCommandTest, AnEmptyScriptIsWarnedOf) {
    const ProcessResult result = runVxpr({"check", writeScript("")});
    EXPECT_THAT(result.m_strErrors, HasSubstr("warning: '"));
    EXPECT_THAT(result.m_strErrors, HasSubstr("defines nothing"));
    EXPECT_EQ(result.m_iStatus, 0);
}

TEST_F(CheckCommandTest, AScriptComesThroughTheStandardInput) {
    const ProcessResult result = runVxpr({"check", "-"}, withInput("a = b\n"));
    EXPECT_THAT(result.m_strErrors, HasSubstr("stdin:1:5: error: `b` isn't defined here"));
    EXPECT_THAT(result.m_strErrors, HasSubstr("    1 | a = b\n      |     ^\n"));
}

TEST_F(CheckCommandTest, CommonMistakesAreToldInTheTermsOfTheLanguage) {
    for (const Mistake& mistake : {
             Mistake{"a = 1 // note\nb = 2\n",
                     "1:6: error: the comment behind this statement takes the line end with it"},
             Mistake{"b = 1\na = -b\n", "2:5: error: there is no minus sign for values"},
             Mistake{"a = - 2\n", "1:5: error: there is no minus sign for values"},
             Mistake{"a = 2 ^ 3\n", "1:7: error: there is no power operator"},
             Mistake{"a = (2 ^ 3) + 1\n", "1:8: error: there is no power operator"},
             Mistake{"a = 1\nb = a == 1\n",
                     "2:7: error: the language has no operators for comparing"},
             Mistake{"inputvar a\nx = a > 2\n",
                     "2:7: error: the language has no operators for comparing"},
             Mistake{"x = 1 < 2\n", "1:7: error: the language has no operators for comparing"},
             Mistake{"inputvar a\nx = (a + 1)<2\n",
                     "2:12: error: the language has no operators for comparing"},
             Mistake{"inputvar a\nx = energy<3.14159265358979>(a) +\n",
                     "2:33: error: a value is missing behind `+`"},
             Mistake{"inputvar a\nx = vad<-50.12345678901, 2>(a) )\n",
                     "2:31: error: the definition should end here"},
             Mistake{"inputvar a\nx = slidingWindow<-2147483649>(a)\n",
                     "2:20: error: this is too large for a whole number"},
             Mistake{"inputvar a\nx = slidingWindow<0X10>(a)\n",
                     "2:19: error: hexadecimal numbers stand between < and > only, and begin with"},
             Mistake{"x = 0X10\n", "1:5: error: hexadecimal numbers stand between < and > only"},
             Mistake{"x = 0x10\n", "1:5: error: hexadecimal numbers stand between < and > only"},
             Mistake{"inputvar a\nx = energy<4294967296>(a)\n",
                     "2:12: error: this is too large for a whole number between < and >"},
             Mistake{"inputvar a\nx = energy<0x100000000>(a)\n",
                     "2:12: error: this is too large for a whole number between < and >"},
             Mistake{"inputvar a\nx = energy<99999999999999999999>(a)\n",
                     "2:12: error: this is too large for a whole number between < and >"},
             Mistake{"inputvar a\nx = energy<99999999999.0>(a) +\n",
                     "2:30: error: a value is missing behind `+`"},
             Mistake{"a =\n", "1:3: error: a value is missing behind `=`"},
             Mistake{"a = 1 -;b = 2\n", "1:7: error: a value is missing behind `-`"},
             Mistake{"a = {1,\n2}\n", "1:7: error: a value is missing behind `,`; a line goes on "
                                      "in the next one behind a `\\`"},
             Mistake{"inputvar a\nx = energy<8000>(a) > 2\n",
                     "2:21: error: the language has no operators for comparing"},
             Mistake{"inputvar a\nx = a ** 2\n", "2:7: error: there is no power operator"},
             Mistake{"f<n>(x) = slidingWindow<n>(x) x\n", "1:30: error: the definition should end"},
             Mistake{"a = 1\nb = a < 2\n", "values are compared with isGreater(a, b)"},
             Mistake{"a = 5 % 2\n", "1:7: error: `%` has no meaning in a script"},
             Mistake{"a = 1;;\n", "this can't be read as a definition"},
             Mistake{"a = 1 2\n", "1:6: error: the definition should end here"},
             Mistake{"inputvar x = 1\n", "1:11: error: the definition should end here"},
             Mistake{"just words\n", "1:1: error: this can't be read as a definition"},
             Mistake{"/* never closed\na = 1\n", "1:1: error: this comment isn't closed"},
             Mistake{"f(x) = slidingWindow<n>(x)\n",
                     "1:22: error: `n` is no parameter of the function"},
             Mistake{"a = slidingWindow<n>(1)\n",
                     "1:19: error: outside of a function with parameters"},
             Mistake{"a = energy(1)\n",
                     "`energy` takes 1 parameter: call it as energy<SampleRate>(x)"},
             Mistake{"a = sum(1, 2)\n", "`sum` takes 1 argument: call it as sum(x)"},
             Mistake{"f(x, y) = x + y\na = f(1)\n",
                     "2:5: error: `f` takes 2 arguments: call it as f(x, y)"},
             Mistake{"a = if(1, 2)\n", "1:5: error: `if` takes three values"},
             Mistake{"x = 1\na = x(2)\n", "2:5: error: `x` is no function"},
             Mistake{"a = b\nb = a\n", "1:1: error: `a` is defined by way of itself"},
             Mistake{"a.b = 1\n", "1:1: error: this can't be read as a definition"},
         }) {
        const ProcessResult result = runVxpr({"check", writeScript(mistake.m_szScript)});
        EXPECT_THAT(result.m_strErrors, HasSubstr(mistake.m_szMessage)) << mistake.m_szScript;
        EXPECT_EQ(result.m_iStatus, 1) << mistake.m_szScript;
    }
}

TEST_F(CheckCommandTest, OneMistakeIsOneMessage) {
    for (const char* szScript : {"a = (1 + 2\n", "a = 1 // note\nb = 2\n", "a = 2 ^ 3\n",
                                 "a = slidingWindow<n>(1)\n", "a = -b\n", "a = nothing(1)\n"}) {
        const std::string strErrors = runVxpr({"check", writeScript(szScript)}).m_strErrors;
        EXPECT_EQ(strErrors.find("error:"), strErrors.rfind("error:")) << strErrors;
    }
}

} // namespace Vxpr
