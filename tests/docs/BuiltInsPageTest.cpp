#include <cmath>
#include <limits>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <velmora/ParameterTrie.h>
#include <velmora/math/xpr/Evaluator.h>
#include <velmora/math/xpr/Registry.h>

#include "docs/BuiltInsPage.h"
#include "math/xpr/functions/BuiltIn.h"
#include "support/AssertionCapture.h"

namespace Velmora::Testing {
namespace {

using Math::DoubleVector;
using namespace Math::Xpr;
using ::testing::ElementsAreArray;

using Names = std::vector<std::string>;

std::string joined(const Names& in_names) {
    std::string strResult;
    for (const std::string& strName : in_names) {
        strResult += (strResult.empty() ? "" : ", ") + strName;
    }
    return strResult;
}

std::string signatureOf(const BuiltIn& in_builtIn) {
    const std::string strParameters = joined(in_builtIn.parameterNames());
    return in_builtIn.node()->getName() + (strParameters.empty() ? "" : "<" + strParameters + ">") +
           "(" + joined(in_builtIn.argumentNames()) + ")";
}

TEST(BuiltInsPageTest, HasASectionForEachRegisteredFunctionInTheirOrder) {
    Names described;
    for (const BuiltInSection& section : BuiltInsPage().sections) {
        described.push_back(section.name);
    }
    EXPECT_EQ(described, registeredNames());
}

class BuiltInsPageSectionTest : public ::testing::TestWithParam<BuiltInSetting> {
protected:
    BuiltInSection section() const {
        for (const BuiltInSection& candidate : BuiltInsPage().sections) {
            if (candidate.name == GetParam().name) {
                return candidate;
            }
        }
        return BuiltInSection();
    }

    /// A configured function's result for one value, or none, on every argument.
    std::string resultFor(const Values& in_values) const {
        BuiltIn function = GetParam().make();
        return function(std::vector<Values>(function.argumentNames().size(), in_values));
    }
};

TEST_P(BuiltInsPageSectionTest, ShowsTheSignatureAndTheRegisteredDescription) {
    EXPECT_EQ(section().signature, signatureOf(BuiltIn(GetParam().name)));
    EXPECT_EQ(section().description,
              Registry::getInstance().getDescription(GetParam().name.c_str()));
}

TEST_P(BuiltInsPageSectionTest, ListsTheParametersInTheirOrder) {
    EXPECT_THAT(section().parameters, ElementsAreArray(BuiltIn(GetParam().name).parameterNames()));
}

TEST_P(BuiltInsPageSectionTest, TellsTheResultForAnEmptyInput) {
    const AssertionCapture assertions;
    EXPECT_EQ(section().emptyInput, resultFor({}));
}

TEST_P(BuiltInsPageSectionTest, TellsTheResultForANaN) {
    EXPECT_EQ(section().nan, resultFor({std::numeric_limits<double>::quiet_NaN()}));
}

TEST_P(BuiltInsPageSectionTest, TellsWhetherTheFunctionRemembersEarlierFrames) {
    const auto resultsOfQuietFrames = [](BuiltIn& inout_function) {
        const std::size_t uiCount = inout_function.argumentNames().size();
        Names results;
        for (const double value : {0.0, 0.0015}) {
            results.push_back(inout_function(std::vector<Values>(uiCount, {value})));
        }
        return results;
    };
    BuiltIn fresh = GetParam().make();
    BuiltIn used = GetParam().make();
    used(std::vector<Values>(used.argumentNames().size(), {1.0}));
    EXPECT_EQ(section().memory == "none", resultsOfQuietFrames(used) == resultsOfQuietFrames(fresh))
        << section().memory;
}

INSTANTIATE_TEST_SUITE_P(EachBuiltIn, BuiltInsPageSectionTest,
                         ::testing::ValuesIn(builtInSettings()),
                         [](const auto& in_info) { return in_info.param.name; });

/// One definition of a script of the page.
struct Definition {
    std::string name;
    /// The text of the result that the comment behind it tells; empty if it tells none.
    std::string result;
};

std::vector<Definition> definitionsOf(const std::string& in_strScript) {
    std::vector<Definition> definitions;
    std::istringstream lines(in_strScript);
    for (std::string strLine; std::getline(lines, strLine);) {
        const std::size_t uiEnd = strLine.find(" = ");
        if (uiEnd != std::string::npos) {
            const std::size_t uiComment = strLine.find("// ");
            definitions.push_back({strLine.substr(0, uiEnd), uiComment == std::string::npos
                                                                 ? ""
                                                                 : strLine.substr(uiComment + 3)});
        }
    }
    return definitions;
}

DoubleVector makeFrame() {
    DoubleVector vFrame;
    for (int i = 0; i < 160; ++i) {
        vFrame.push_back(0.25 + std::pow(std::sin(0.02 * i), 2));
    }
    return vFrame;
}

class BuiltInsPageScriptTest
    : public ::testing::TestWithParam<std::pair<std::string, std::string>> {};

TEST_P(BuiltInsPageScriptTest, GivesWhatItsCommentsTell) {
    const std::string& strScript = GetParam().second;
    ParameterTrie configuration;
    configuration.setParameter("quillmark.math.xpr.scriptLoader.scriptsDir", ".");
    Evaluator evaluator;
    ASSERT_TRUE(evaluator.configure(configuration, TSHandle<VirtualFileSystem>()));
    std::istringstream stream(strScript);
    ASSERT_TRUE(evaluator.addScript(stream, "page"));
    ASSERT_TRUE(evaluator.link(true));
    ASSERT_TRUE(evaluator.reconfigureExpressions());

    const DoubleVector vFrame = makeFrame();
    for (const char* const szInput : {"frame", "spectrum"}) {
        if (strScript.find(std::string("inputvar ") + szInput) != std::string::npos) {
            ASSERT_TRUE(
                evaluator.getVariable((std::string("page.") + szInput).c_str())->setValue(vFrame));
        }
    }
    const std::vector<Definition> definitions = definitionsOf(strScript);
    ASSERT_FALSE(definitions.empty());
    for (const Definition& definition : definitions) {
        DoubleVector vResult;
        const Handle<Expression> pExpression =
            evaluator.getExpression(("page." + definition.name).c_str());
        ASSERT_FALSE(pExpression.isNull()) << definition.name;
        EXPECT_TRUE(pExpression->evaluate(vResult)) << definition.name;
        if (!definition.result.empty()) {
            std::ostringstream text;
            text << vResult;
            EXPECT_EQ(text.str(), definition.result) << definition.name;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(EachScript, BuiltInsPageScriptTest,
                         ::testing::ValuesIn(BuiltInsPage().scripts),
                         [](const auto& in_info) { return in_info.param.first; });

TEST(BuiltInsPageScriptsTest, EachFunctionHasAScriptWithAResult) {
    const BuiltInsPage page;
    ASSERT_EQ(page.scripts.size(), page.sections.size() + 1);
    for (const auto& script : page.scripts) {
        EXPECT_TRUE(script.first == "introduction" ||
                    (script.second.find(script.first) != std::string::npos &&
                     script.second.find("; // [") != std::string::npos))
            << script.first;
    }
}

} // namespace
} // namespace Velmora::Testing
