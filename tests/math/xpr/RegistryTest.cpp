#include <velmora/math/xpr/Registry.h>

#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include <velmora/SingletonRegistry.h>
#include <velmora/math/xpr/DomainVariableImpl.h>
#include <velmora/math/xpr/OperatorMinus.h>
#include <velmora/math/xpr/OperatorPlus.h>

#include "math/xpr/src/RegistryDebug.h"
#include "support/AssertionCapture.h"
#include "support/LogCapture.h"

namespace Velmora::Math::Xpr {
namespace {

using log4cplus::DEBUG_LOG_LEVEL;
using log4cplus::ERROR_LOG_LEVEL;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* LoggerName = "quillmark.math.xpr.Registry";

/// A registry beside that of the process, so that each test starts with an empty one.
class OwnRegistry : public Registry {
public:
    OwnRegistry() = default;
    using Registry::registerExpression;
};

template <class T>
Registry::ExpressionAllocator* allocatorOf() {
    return new Registry::ExpressionAllocatorT<T>;
}

/// Tells when it dies.
class MortalAllocator : public Registry::ExpressionAllocatorT<OperatorPlus> {
public:
    explicit MortalAllocator(bool& out_bDead) : m_bDead(out_bDead) {}
    ~MortalAllocator() override { m_bDead = true; }

private:
    bool& m_bDead;
};

std::vector<std::string> namesOf(const Registry& in_Registry) {
    std::vector<std::string> vNames{"what stood there before"};
    in_Registry.getNames(vNames);
    return vNames;
}

template <class T>
bool makes(const Registry& in_Registry, const char* in_szName) {
    const std::unique_ptr<Expression> pExpression(in_Registry.newExpression(in_szName));
    return dynamic_cast<const T*>(pExpression.get()) != nullptr;
}

TEST(RegistryTest, ProcessHasOneInstanceThatStandsInTheTableOfSingletons) {
    Registry& registry = Registry::getInstance();

    EXPECT_EQ(&Registry::getInstance(), &registry);
    EXPECT_EQ(SingletonRegistry::getInstance().registerInstance("Registry::Singleton", nullptr,
                                                                nullptr, 0),
              &registry);
    EXPECT_EQ(registry.getLogger().getName(), LoggerName);
    EXPECT_EQ(registry.getLogger().getCachedLogLevel(), -1);
}

TEST(RegistryTest, NamesComeInTheOrderOfTheirRegistration) {
    OwnRegistry registry;
    ASSERT_TRUE(registry.registerFunction("z", allocatorOf<OperatorPlus>()));
    ASSERT_TRUE(registry.registerVariable("a", allocatorOf<VariableImpl>()));
    ASSERT_TRUE(registry.registerFunction("m", allocatorOf<OperatorMinus>()));

    EXPECT_THAT(namesOf(registry), ElementsAre("z", "a", "m"));
}

TEST(RegistryTest, SecondRegistrationOfANameIsRefusedAndTheFirstStays) {
    OwnRegistry registry;
    ASSERT_TRUE(registry.registerFunction("f", allocatorOf<OperatorPlus>()));
    bool bDead = false;
    const LogCapture log(LoggerName, ERROR_LOG_LEVEL);

    EXPECT_FALSE(registry.registerFunction("f", new MortalAllocator(bDead)));
    EXPECT_FALSE(registry.registerVariable("f", allocatorOf<VariableImpl>()));

    EXPECT_TRUE(bDead);
    const std::string strMessage = "Failed to add expression: f. An expression with the same name "
                                   "already exists in the expression registry. ";
    EXPECT_THAT(log.messages(ERROR_LOG_LEVEL), ElementsAre(strMessage, strMessage));
    EXPECT_TRUE(makes<OperatorPlus>(registry, "f"));
}

TEST(RegistryTest, AllocatorLivesAsLongAsTheRegistry) {
    bool bDead = false;
    {
        OwnRegistry registry;
        registry.registerFunction("f", new MortalAllocator(bDead));
        EXPECT_FALSE(bDead);
    }
    EXPECT_TRUE(bDead);
}

TEST(RegistryTest, AllocatorOfVariablesIsNoFunction) {
    OwnRegistry registry;
    const AssertionCapture assertions;

    EXPECT_FALSE(registry.registerFunction("f", allocatorOf<VariableImpl>()));

    EXPECT_THAT(assertions.expressions(),
                ElementsAre("!pFunction.isNull()&& \"the registered class is not a function \" "
                            "\"expression.\""));
    EXPECT_THAT(namesOf(registry), IsEmpty());
}

TEST(RegistryTest, AllocatorOfFunctionsIsNoVariableAndIsReleased) {
    OwnRegistry registry;
    bool bDead = false;
    const AssertionCapture assertions;

    EXPECT_FALSE(registry.registerVariable("v", new MortalAllocator(bDead)));

    EXPECT_TRUE(bDead);
    EXPECT_THAT(assertions.expressions(),
                ElementsAre("!pVariable.isNull()&& \"the registered class is not a variable \" "
                            "\"expression.\""));
    EXPECT_THAT(namesOf(registry), IsEmpty());
}

TEST(RegistryTest, NullAllocatorMakesNothing) {
    OwnRegistry registry;
    const AssertionCapture assertions;

    EXPECT_FALSE(registry.registerFunction("f", nullptr));
    EXPECT_FALSE(registry.registerVariable("v", nullptr));

    EXPECT_EQ(assertions.count(), 2U);
    EXPECT_THAT(namesOf(registry), IsEmpty());
}

TEST(RegistryTest, NullNameFailsAnAssertion) {
    OwnRegistry registry;
    const AssertionCapture assertions;

    EXPECT_FALSE(registry.registerFunction(nullptr, allocatorOf<OperatorPlus>()));
    EXPECT_EQ(registry.newExpression(nullptr), nullptr);

    EXPECT_THAT(assertions.expressions(), ElementsAre("0 != in_szName", "0 != in_szName"));
}

TEST(RegistryTest, RegisteredVariableIsToldAtDebugLevel) {
    const LogCapture log(LoggerName);
    OwnRegistry registry;

    registry.registerVariable("v", allocatorOf<VariableImpl>());

    EXPECT_THAT(log.messages(DEBUG_LOG_LEVEL), ElementsAre("registering variable: v"));
}

TEST(RegistryTest, UnknownNameGivesNullAndADebugLineOnly) {
    const LogCapture log(LoggerName);
    const OwnRegistry registry;

    EXPECT_EQ(registry.newExpression("s.x"), nullptr);

    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines()[0].level, DEBUG_LOG_LEVEL);
    EXPECT_EQ(log.lines()[0].message, "can't find expression: s.x");
    EXPECT_EQ(log.lines()[0].logger, LoggerName);
}

TEST(RegistryTest, EveryNewExpressionIsAnObjectOfItsOwn) {
    OwnRegistry registry;
    registry.registerFunction("f", allocatorOf<OperatorPlus>());

    const std::unique_ptr<Expression> pFirst(registry.newExpression("f"));
    const std::unique_ptr<Expression> pSecond(registry.newExpression("f"));

    EXPECT_NE(pFirst.get(), pSecond.get());
}

TEST(RegistryTest, PlainNewExpressionKeepsTheNameOfItsClass) {
    OwnRegistry registry;
    registry.registerFunction("f", allocatorOf<OperatorPlus>());

    const std::unique_ptr<Expression> pExpression(registry.newExpression("f"));

    EXPECT_STREQ(dynamic_cast<const Function&>(*pExpression).getName(), "add");
}

TEST(RegistryTest, NewFunctionBearsTheNameAskedFor) {
    OwnRegistry registry;
    registry.registerFunction("f", allocatorOf<OperatorPlus>());
    const LogCapture log(LoggerName);

    const std::unique_ptr<Function> pFunction(registry.newFunction("f"));

    ASSERT_NE(pFunction, nullptr);
    EXPECT_STREQ(pFunction->getName(), "f");
    EXPECT_THAT(log.messages(DEBUG_LOG_LEVEL),
                ElementsAre("Registry::newFunction : allocating function: f"));
}

TEST(RegistryTest, NewVariableBearsTheNameAskedFor) {
    OwnRegistry registry;
    registry.registerVariable("v", allocatorOf<DomainVariableImpl>());
    const LogCapture log(LoggerName);

    const std::unique_ptr<Variable> pVariable(registry.newVariable("v"));

    ASSERT_NE(pVariable, nullptr);
    EXPECT_STREQ(pVariable->getName(), "v");
    EXPECT_THAT(log.messages(DEBUG_LOG_LEVEL),
                ElementsAre("Registry::newVariable : allocating variable: v"));
}

TEST(RegistryTest, NewFunctionAndNewVariableOfAnUnknownNameGiveNullWithoutAnAssertion) {
    const OwnRegistry registry;
    const AssertionCapture assertions;

    EXPECT_EQ(registry.newFunction("x"), nullptr);
    EXPECT_EQ(registry.newVariable("x"), nullptr);

    EXPECT_EQ(assertions.count(), 0U);
}

TEST(RegistryTest, NewFunctionOfAVariableFailsAnAssertion) {
    OwnRegistry registry;
    registry.registerVariable("v", allocatorOf<VariableImpl>());
    const AssertionCapture assertions;

    EXPECT_EQ(registry.newFunction("v"), nullptr);

    EXPECT_THAT(assertions.expressions(),
                ElementsAre("pFunction && \"requested expression is not a function\""));
}

TEST(RegistryTest, NewVariableOfAFunctionFailsAnAssertion) {
    OwnRegistry registry;
    registry.registerFunction("f", allocatorOf<OperatorPlus>());
    const AssertionCapture assertions;

    EXPECT_EQ(registry.newVariable("f"), nullptr);

    EXPECT_THAT(assertions.expressions(),
                ElementsAre("pVariable && \"requested expression is not a variable\""));
}

TEST(RegistryTest, WritesNothing) {
    OwnRegistry registry;
    registry.registerFunction("f", allocatorOf<OperatorPlus>());
    std::ostringstream out;

    EXPECT_EQ(&registry.write(out), &out);

    EXPECT_EQ(out.str(), "");
}

TEST(RegistryTest, ExpressionCanBeRegisteredByHandleInADerivedClass) {
    OwnRegistry registry;
    const Handle<Registry::ExpressionAllocator> pAllocator(allocatorOf<OperatorMinus>());

    EXPECT_TRUE(registry.registerExpression("e", pAllocator));

    EXPECT_TRUE(makes<OperatorMinus>(registry, "e"));
}

struct SwitchCase {
    const char* m_szTestName;
    const char* m_szValue;
    bool m_bOn;
};

class RegistrySwitchTest : public testing::TestWithParam<SwitchCase> {};

/// Registers a function with the log on, and leaves with 0 if that was told, else with 1.
[[noreturn]] void exitWithTheStory() {
    const LogCapture log(LoggerName);
    OwnRegistry registry;
    registry.registerFunction("f", allocatorOf<OperatorPlus>());
    const bool bTold = log.messages(DEBUG_LOG_LEVEL) ==
                       std::vector<std::string>{"Registry::registerFunction : registering function "
                                                "in XPR registry : f"};
    const bool bSilent = log.lines().empty();
    std::_Exit(bTold ? 0 : bSilent ? 1 : 2);
}

TEST_P(RegistrySwitchTest, EnvironmentDecidesWhetherRegistrationsAreTold) {
    EXPECT_EQ(isRegistryDebugValue(GetParam().m_szValue), GetParam().m_bOn);

    // The variable is read while the library loads: this style starts the program anew.
    const std::string strFormerStyle = GTEST_FLAG_GET(death_test_style);
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const char* szVariable = "VELMORA_DEBUG_XPR_REGISTRY";
    if (GetParam().m_szValue == nullptr) {
        unsetenv(szVariable);
    } else {
        setenv(szVariable, GetParam().m_szValue, 1);
    }
    EXPECT_EXIT(exitWithTheStory(), testing::ExitedWithCode(GetParam().m_bOn ? 0 : 1), "");
    unsetenv(szVariable);
    GTEST_FLAG_SET(death_test_style, strFormerStyle);
}

INSTANTIATE_TEST_SUITE_P(
    Values, RegistrySwitchTest,
    testing::Values(SwitchCase{"Unset", nullptr, false}, SwitchCase{"Empty", "", false},
                    SwitchCase{"False", "false", false},
                    SwitchCase{"FalseInCapitals", "FALSE", false},
                    SwitchCase{"FalseInBothCases", "FaLsE", false}, SwitchCase{"Zero", "0", true},
                    SwitchCase{"No", "no", true}, SwitchCase{"True", "true", true},
                    SwitchCase{"FalseWithABlank", "false ", true}),
    [](const auto& in_info) { return std::string(in_info.param.m_szTestName); });

} // namespace
} // namespace Velmora::Math::Xpr
