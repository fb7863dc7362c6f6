#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <velmora/MemAccounts.h>
#include <velmora/math/xpr/ConstantImpl.h>
#include <velmora/math/xpr/OperatorDivide.h>
#include <velmora/math/xpr/Registry.h>
#include <velmora/math/xpr/UserFunctionImpl.h>

#include "BuiltIn.h"
#include "support/AssertionCapture.h"
#include "support/LogCapture.h"

namespace Velmora::Testing {
namespace {

using Math::DoubleVector;
using Math::Xpr::Expression;
using Math::Xpr::FunctionAdaptor;
using Math::Xpr::FunctionBaseImpl;
using Math::Xpr::Registry;
using Math::Xpr::UserFunctionImpl;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

/// Adds up the first elements of its frames, with a step as its parameter.
class Counter : public FunctionAdaptor {
public:
    bool reset() override {
        m_dTotal = 0.0;
        return m_bResettable;
    }
    const char* getFunctionName() const override { return "test.counter"; }
    bool calculate(const ArgumentMap& in_ArgNameToDomain, DoubleVector& out) override {
        const DoubleVector& x = *in_ArgNameToDomain.at("x");
        if (x.empty()) {
            return false;
        }
        m_dTotal += x[0] * m_iStep;
        out.push_back(m_dTotal);
        return true;
    }
    void getArgumentNames(std::vector<std::string>& out) override { out.push_back("x"); }
    void getParameterNames(std::vector<std::string>& out) override {
        out.push_back("step");
        out.push_back("resettable");
    }
    bool configure(const ROConfiguration& in_Configuration,
                   const TSHandle<VirtualFileSystem>&) override {
        in_Configuration.getBoolParameter("resettable", m_bResettable);
        return in_Configuration.getIntParameter("step", m_iStep);
    }

private:
    double m_dTotal = 0.0;
    int m_iStep = 1;
    bool m_bResettable = true;
};

/// The difference of its arguments, whose names are given in this order.
template <char First, char Second>
class Difference : public FunctionAdaptor {
public:
    bool reset() override { return true; }
    const char* getFunctionName() const override { return "test.difference"; }
    bool calculate(const ArgumentMap& in_ArgNameToDomain, DoubleVector& out) override {
        out.push_back((*in_ArgNameToDomain.at({First}))[0] - (*in_ArgNameToDomain.at({Second}))[0]);
        return true;
    }
    void getArgumentNames(std::vector<std::string>& out) override {
        out.push_back({First});
        out.push_back({Second});
    }
    void getParameterNames(std::vector<std::string>&) override {}
    bool configure(const ROConfiguration&, const TSHandle<VirtualFileSystem>&) override {
        return true;
    }
};

/// A constant; names no argument.
class Answer : public Difference<'a', 'b'> {
public:
    bool calculate(const ArgumentMap& in_ArgNameToDomain, DoubleVector& out) override {
        out.push_back(in_ArgNameToDomain.empty() ? 42.0 : -1.0);
        return true;
    }
    void getArgumentNames(std::vector<std::string>&) override {}
};

template <class F>
BuiltIn make() {
    return BuiltIn(Handle<FunctionBaseImpl>(new UserFunctionImpl<F>));
}

BuiltIn makeCounter(int in_iStep) {
    BuiltIn counter = make<Counter>();
    counter.set("step", in_iStep);
    EXPECT_TRUE(counter.configure());
    return counter;
}

TEST(UserFunctionImplTest, HasTheNameTheArgumentsAndTheParametersOfItsFunction) {
    const BuiltIn counter = make<Counter>();
    EXPECT_STREQ(counter.node()->getName(), "test.counter");
    EXPECT_THAT(counter.argumentNames(), ElementsAre("x"));
    EXPECT_THAT(counter.parameterNames(), ElementsAre("step", "resettable"));
}

TEST(UserFunctionImplTest, IsBareWhenMadeForACopy) {
    const UserFunctionImpl<Counter> node(true);
    EXPECT_STREQ(node.getName(), "unamed");
    EXPECT_EQ(node.getArgumentCount(), 0U);
    EXPECT_EQ(node.getParameterCount(), 0U);
}

TEST(UserFunctionImplTest, IsAllocatedUnderItsAccount) {
    const std::size_t uiBefore = MemAccounts::get("UserFunctionImpl").liveBlocks;
    {
        const Registry::ExpressionAllocatorT<UserFunctionImpl<Counter>> constAllocator;
        Registry::ExpressionAllocatorT<UserFunctionImpl<Counter>> allocator(constAllocator);
        const std::unique_ptr<Expression> pNode(allocator.newExpression());
        EXPECT_EQ(MemAccounts::get("UserFunctionImpl").liveBlocks, uiBefore + 1);
    }
    EXPECT_EQ(MemAccounts::get("UserFunctionImpl").liveBlocks, uiBefore);
}

TEST(UserFunctionImplTest, BindsArgumentsInDeclaredOrderWhenTheirNamesSortSo) {
    EXPECT_EQ((make<Difference<'a', 'b'>>()({{5}, {3}})), "[2]");
}

TEST(UserFunctionImplTest, SwapsTheValuesOfArgumentsWhoseNamesDontSortInDeclaredOrder) {
    EXPECT_EQ((make<Difference<'b', 'a'>>()({{5}, {3}})), "[-2]");
}

TEST(UserFunctionImplTest, ComputesWithoutArguments) {
    EXPECT_EQ(make<Answer>()({}), "[42]");
}

TEST(UserFunctionImplTest, LeavesOutAnArgumentThatTheFunctionDidNotDeclare) {
    BuiltIn counter = make<Counter>();
    const BuiltIn answer = make<Answer>();
    ASSERT_TRUE(counter.node()->addArgument("more"));
    ASSERT_TRUE(answer.node()->addArgument("more"));
    EXPECT_EQ(counter({{3}}), "[3]");
    EXPECT_EQ(BuiltIn(answer.node())({}), "[42]");
}

TEST(UserFunctionImplTest, ComputesOnceForOneFrame) {
    BuiltIn counter = make<Counter>();
    counter.feed({{1}});
    const DoubleVector* const pFirst = counter.evaluate();
    ASSERT_NE(pFirst, nullptr);
    EXPECT_EQ(counter.evaluate(), pFirst);
    EXPECT_EQ((*pFirst)[0], 1.0);
}

TEST(UserFunctionImplTest, GivesAFreshResultForEachFrame) {
    BuiltIn counter = make<Counter>();
    EXPECT_EQ(counter({{1}}), "[1]");
    EXPECT_EQ(counter({{1}}), "[2]");
    EXPECT_EQ(counter({{1}}), "[3]");
}

TEST(UserFunctionImplTest, FailsWhenTheFunctionDoes) {
    BuiltIn counter = make<Counter>();
    EXPECT_EQ(counter({{}}), "no result");
    EXPECT_EQ(counter({{2}}), "[2]");
}

TEST(UserFunctionImplTest, HandsTheParametersToTheFunction) {
    EXPECT_EQ(makeCounter(10)({{2}}), "[20]");
}

TEST(UserFunctionImplTest, SaysWhichFunctionCantBeConfigured) {
    const LogCapture log;
    EXPECT_FALSE(make<Counter>().configure());
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL),
                ElementsAre("failed to configure function: test.counter"));
}

TEST(UserFunctionImplTest, ResetReachesTheFunctionAndKeepsItsConfiguration) {
    BuiltIn counter = makeCounter(10);
    EXPECT_EQ(counter({{1}}), "[10]");
    EXPECT_TRUE(counter.reset());
    EXPECT_EQ(counter({{1}}), "[10]");
    counter.set("resettable", 0);
    ASSERT_TRUE(counter.configure());
    EXPECT_FALSE(counter.reset());
}

TEST(UserFunctionImplTest, ACopyGoesOnWithTheMemoryOfItsSourceAndThenItsOwnWay) {
    BuiltIn source = makeCounter(1);
    EXPECT_EQ(source({{5}}), "[5]");
    BuiltIn copy = source.copy();
    EXPECT_EQ(copy({{1}}), "[6]");
    EXPECT_EQ(source({{10}}), "[15]");
    EXPECT_EQ(copy({{1}}), "[7]");
    EXPECT_TRUE(copy.reset());
    EXPECT_EQ(source({{1}}), "[16]");
    EXPECT_EQ(copy({{1}}), "[1]");
}

TEST(UserFunctionImplTest, ACopyKeepsNameArgumentsParametersAndSourceInfo) {
    BuiltIn source = make<Counter>();
    source.node()->setName("renamed");
    source.node()->setSourceInfo("here");
    source.set("step", 3);
    const BuiltIn copy = source.copy();
    EXPECT_STREQ(copy.node()->getName(), "renamed");
    EXPECT_STREQ(copy.node()->getSourceInfo(), "here");
    EXPECT_THAT(copy.argumentNames(), ElementsAre("x"));
    EXPECT_THAT(copy.parameterNames(), ElementsAre("step", "resettable"));
    EXPECT_EQ(copy.node()->getParameter("step")->getValue(), ParameterValue(3));
    EXPECT_NE(copy.node()->getId(), source.node()->getId());
}

TEST(UserFunctionImplTest, ACopyReadsItsOwnArguments) {
    BuiltIn source = make<Difference<'a', 'b'>>();
    EXPECT_EQ(source({{9}, {1}}), "[8]");
    BuiltIn copy = source.copy();
    EXPECT_EQ(copy({{1}, {2}}), "[-1]");
    EXPECT_EQ(source({{9}, {2}}), "[7]");
}

TEST(UserFunctionImplTest, RefusesArgumentsWithoutAValueWithOneLine) {
    const LogCapture log;
    BuiltIn difference = make<Difference<'a', 'b'>>();
    difference.node()->setSourceInfo("script.xpr");
    EXPECT_EQ(difference({}), "no result");
    EXPECT_EQ(log.count(log4cplus::ERROR_LOG_LEVEL, "no value to compute from"), 1U);
    EXPECT_EQ(log.messages(log4cplus::ERROR_LOG_LEVEL).back(),
              "script.xpr:no value to compute from: test.difference");
    EXPECT_EQ(difference({{1}}), "no result");
    EXPECT_EQ(difference({{1}, {2}}), "[-1]");
}

TEST(UserFunctionImplTest, LeavesTheOutputAloneWhenItRefusesAnArgument) {
    const BuiltIn counter = make<Counter>();
    DoubleVector vOutput{7.0};
    EXPECT_FALSE(counter.node()->evaluate(vOutput));
    EXPECT_EQ(vOutput.size(), 1U);
    LimitedObjPtr<DoubleVector> pOutput(&vOutput);
    EXPECT_FALSE(counter.node()->evaluate(pOutput));
    EXPECT_EQ(pOutput.get(), &vOutput);
}

/// `counter(6 / divisor)`, whose argument fails for a divisor of 0.
class UserFunctionImplFailingArgumentTest : public ::testing::Test {
protected:
    UserFunctionImplFailingArgumentTest() {
        m_pDivide->getArgument("Left")->setValue(m_dividend);
        m_pDivide->getArgument("Right")->setValue(m_divisor);
        m_counter.node()->getArgument(std::size_t(0))->setValue(Handle<Expression>(m_pDivide));
    }

    std::string evaluateWith(double in_dDivisor) {
        m_divisor[0] = in_dDivisor;
        m_pDivide->getArgument("Right")->setValue(m_divisor);
        const DoubleVector* const pResult = m_counter.evaluate();
        return pResult == nullptr ? "no result" : std::to_string(int((*pResult)[0]));
    }

    DoubleVector m_dividend{6.0};
    DoubleVector m_divisor{1.0};
    Handle<FunctionBaseImpl> m_pDivide{new Math::Xpr::OperatorDivide};
    BuiltIn m_counter = make<Counter>();
};

TEST_F(UserFunctionImplFailingArgumentTest, ComputesWithTheVectorOfTheFrameBefore) {
    EXPECT_EQ(evaluateWith(2.0), "3");
    const LogCapture log;
    EXPECT_EQ(evaluateWith(0.0), "6");
    EXPECT_EQ(log.count(log4cplus::ERROR_LOG_LEVEL, "no value to compute from"), 0U);
}

TEST_F(UserFunctionImplFailingArgumentTest, FailsOnTheFirstFrame) {
    const LogCapture log;
    EXPECT_EQ(evaluateWith(0.0), "no result");
    EXPECT_EQ(log.count(log4cplus::ERROR_LOG_LEVEL, "no value to compute from: test.counter"), 1U);
}

TEST_F(UserFunctionImplFailingArgumentTest, ComputesTheSameOnceSealed) {
    m_counter.node()->seal();
    EXPECT_EQ(evaluateWith(2.0), "3");
    EXPECT_EQ(evaluateWith(0.0), "6");
}

TEST(UserFunctionRegistrationTest, RegistersUnderTheNameOfTheFunctionWithItsDescription) {
    Registry& registry = Registry::getInstance();
    ASSERT_TRUE(UserFunctionImpl<Counter>::registerIn(registry, "a running total"));
    EXPECT_STREQ(registry.getDescription("test.counter"), "a running total");
    EXPECT_EQ(BuiltIn("test.counter")({{4}}), "[4]");
    EXPECT_FALSE(UserFunctionImpl<Counter>::registerIn(registry, "another"));
    EXPECT_STREQ(registry.getDescription("test.counter"), "a running total");
}

TEST(UserFunctionRegistrationTest, OnlyNewFunctionSetsTheRegisteredName) {
    Registry& registry = Registry::getInstance();
    using Allocator = Registry::ExpressionAllocatorT<UserFunctionImpl<Answer>>;
    ASSERT_TRUE(registry.registerFunction("test.alias", new Allocator));
    const Handle<Math::Xpr::Function> pNamed(registry.newFunction("test.alias"));
    EXPECT_STREQ(pNamed->getName(), "test.alias");
    EXPECT_STREQ(BuiltIn("test.alias").node()->getName(), "test.difference");
}

TEST(UserFunctionRegistrationTest, AnUnknownNameCantBeDescribed) {
    Registry& registry = Registry::getInstance();
    EXPECT_FALSE(registry.describe("test.unknown", "nothing"));
    EXPECT_STREQ(registry.getDescription("test.unknown"), "");
}

} // namespace
} // namespace Velmora::Testing
