#include <sstream>
#include <string>
#include <vector>

#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

#include "Host.h"
#include "Loading.h"
#include "Workloads.h"

namespace Velmora::Benchmarks {

namespace {

/// Seconds in which a script that can't be served is refused, whatever its size.
constexpr double MOST_SECONDS = 2.0;

constexpr int REPETITIONS = 3;

/// Errors are logged as ever, but seen by nobody.
class QuietLog {
public:
    QuietLog() {
        log4cplus::Logger root = log4cplus::Logger::getRoot();
        root.removeAllAppenders();
        root.addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender));
    }
    QuietLog(const QuietLog&) = delete;
    QuietLog& operator=(const QuietLog&) = delete;
    ~QuietLog() {
        log4cplus::Logger::getRoot().removeAllAppenders();
        showErrors();
    }
};

std::string repeat(const std::string& in_strText, std::size_t in_uiCount) {
    std::string strResult;
    strResult.reserve(in_strText.size() * in_uiCount);
    for (std::size_t i = 0; i != in_uiCount; ++i) {
        strResult += in_strText;
    }
    return strResult;
}

std::string makeDefinitions(std::size_t in_uiCount) {
    std::string strScript;
    for (std::size_t i = 0; i != in_uiCount; ++i) {
        strScript += "x" + std::to_string(i) + "=1\n";
    }
    return strScript;
}

/// Functions that each call the one before, so often.
std::string makeFunctions(std::size_t in_uiCount, std::size_t in_uiCalls) {
    std::string strScript = "f0(x) = x + 1\n";
    for (std::size_t i = 1; i != in_uiCount; ++i) {
        const std::string strCall = "f" + std::to_string(i - 1) + "(x)";
        strScript += "f" + std::to_string(i) + "(x) = " + strCall +
                     repeat(" + " + strCall, in_uiCalls - 1) + "\n";
    }
    return strScript;
}

struct Case {
    std::string m_strWhat;
    std::string m_strScript;
};

std::vector<Case> makeCases() {
    const std::string strLong(10000000, 'a');
    std::vector<Case> vCases{
        {"a sum of 200,000 terms", "x = 1" + repeat("+1", 199999) + "\n"},
        {"10,000 functions, each of which calls the one before", makeFunctions(10000, 1)},
        {"40 functions, each of which calls the one before twice", makeFunctions(40, 2)},
        {"a line of 10 MB, a list of 5,000,000 elements", "x = {1" + repeat(",1", 5000000) + "}\n"},
        {"a file of 100 MB", repeat("x = 1\n", 16666667)},
        {"no end of a comment of 10 MB", "x = 1 /*" + strLong},
        {"no end of a string of 10 MB", "x = f<\"" + strLong},
        {"no end of a comment behind 1,000,000 definitions", makeDefinitions(1000000) + "y = /*"},
        {"1,000 nested if( without an end", "x = " + repeat("if(1,", 1000) + "1\n"},
        {"12 nested if( without an end around a name of 1 MB",
         "x = " + repeat("if(", 12) + std::string(1000000, 'n')},
        {"indices from 0 to 4294967295", "inputvar a\nx = a[0..4294967295]\n"}};
    for (const char* szOpening : {"(", "a[", "{", "f(", "if("}) {
        vCases.push_back(
            {std::string("100,000 nested ") + szOpening, "x = " + repeat(szOpening, 100000)});
    }
    return vCases;
}

bool loads(const std::string& in_strScript) {
    Math::Xpr::Evaluator evaluator;
    configureForTexts(evaluator);
    std::istringstream script(in_strScript);
    return evaluator.addScript(script, "bench") && evaluator.link(true);
}

} // namespace

void measureRefusals(Report& inout_Report, Effort in_eEffort) {
    const QuietLog quiet;
    for (const Case& testCase : makeCases()) {
        Samples samples;
        for (int i = 0; i != (in_eEffort == Effort::Full ? REPETITIONS : 1); ++i) {
            samples.time([&] {
                if (loads(testCase.m_strScript)) {
                    throw WrongResult(testCase.m_strWhat + ": not refused");
                }
            });
        }
        inout_Report.addTarget("refused: " + testCase.m_strWhat, "s", samples.getMedian() / 1000,
                               {MOST_SECONDS, MOST_SECONDS}, "");
    }
}

} // namespace Velmora::Benchmarks
