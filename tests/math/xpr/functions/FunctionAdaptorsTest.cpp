#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <velmora/ParameterTrie.h>
#include <velmora/math/SignalFeatureWithMemory.h>
#include <velmora/math/SignalFeatureWithParameters.h>
#include <velmora/math/xpr/SignalFeatureFunctionAdaptorImpl.h>
#include <velmora/math/xpr/SignalFeatureToFunctionAdaptorImpl.h>
#include <velmora/math/xpr/SignalFeatureWithMemoryAdaptorImpl.h>
#include <velmora/math/xpr/SignalFeatureWithParamAndMemoryAdaptorImpl.h>
#include <velmora/math/xpr/SignalFeatureWithSingleParamAdaptorImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>

#include "BuiltIn.h"
#include "support/AssertionCapture.h"

namespace Velmora::Testing {
namespace {

using namespace Math::Xpr;
using Math::DoubleVector;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Names = std::vector<std::string>;

/// A feature of a host: the running total of the first elements, times a factor.
class TotalFeature : public virtual Math::SignalFeatureWithMemory,
                     public virtual Math::SignalFeatureWithParameters {
public:
    Cloneable* clone() const override { return new TotalFeature(*this); }
    bool compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) override {
        if (in_vInput.empty()) {
            return false;
        }
        m_dTotal += in_vInput[0];
        out_vResult.push_back(m_iFactor * m_dTotal);
        return true;
    }
    bool configure(const ROConfiguration& in_config) override {
        return in_config.getIntParameter("factor", m_iFactor);
    }
    bool reset() override {
        m_dTotal = 0.0;
        return m_iFactor != 0;
    }

private:
    double m_dTotal = 0.0;
    int m_iFactor = 1;
};

/// A feature whose clone is another feature than itself.
class MutantFeature : public TotalFeature {
public:
    Cloneable* clone() const override { return new TotalFeature; }
};

using PlainTotal = SignalFeatureToFunctionAdaptorImpl<TotalFeature>;
using RememberingTotal = SignalFeatureWithMemoryAdaptorImpl<TotalFeature>;
using ParameterTotal = SignalFeatureWithSingleParamAdaptorImpl<TotalFeature>;

class FullTotal : public SignalFeatureWithParamAndMemoryAdaptorImpl<TotalFeature> {
public:
    FullTotal() : SignalFeatureWithParamAndMemoryAdaptorImpl("total") {}
    void getParameterNames(Names& out) override { out.push_back("factor"); }
};

/// A feature that is a function by itself.
class Doubler : public SignalFeatureFunctionAdaptorImpl {
public:
    Doubler() : SignalFeatureFunctionAdaptorImpl("test.doubler") {}
    Cloneable* clone() const override { return new Doubler(*this); }
    bool compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) override {
        out_vResult = in_vInput;
        out_vResult *= 2.0;
        return true;
    }
};

Names argumentNames(FunctionAdaptor& in_function) {
    Names names;
    in_function.getArgumentNames(names);
    return names;
}

Names parameterNames(FunctionAdaptor& in_function) {
    Names names;
    in_function.getParameterNames(names);
    return names;
}

/// The first element of what a function makes of one value, -1 for no result.
double compute(FunctionAdaptor& in_function, double in_dValue) {
    DoubleVector vInput{in_dValue};
    DoubleVector vResult;
    FunctionAdaptor::ArgumentMap arguments{{"x", &vInput}};
    return in_function.calculate(arguments, vResult) ? vResult[0] : -1.0;
}

bool configure(FunctionAdaptor& in_function, int in_iFactor) {
    ParameterTrie configuration;
    configuration.setParameter("factor", in_iFactor);
    return in_function.configure(configuration, TSHandle<VirtualFileSystem>());
}

TEST(FunctionAdaptorsTest, AFunctionHasOneAdaptorHoweverManyMixInsItHas) {
    ParameterTotal function("total", "factor");
    FunctionAdaptor& viaVariable = static_cast<SingleVariableFunctionImpl&>(function);
    FunctionAdaptor& viaParameter = static_cast<SingleParameterFunctionImpl&>(function);
    FunctionAdaptor& viaMemory = static_cast<NoMemoryFunctionImpl&>(function);
    EXPECT_EQ(&viaVariable, &viaParameter);
    EXPECT_EQ(&viaVariable, &viaMemory);
}

TEST(FunctionAdaptorsTest, NamesAreAppended) {
    ParameterTotal function("total", "factor");
    EXPECT_STREQ(function.getFunctionName(), "total");
    EXPECT_EQ(function.argumentName(), "x");
    EXPECT_EQ(function.parameterName(), "factor");
    Names names{"before"};
    function.getArgumentNames(names);
    function.getParameterNames(names);
    EXPECT_THAT(names, ElementsAre("before", "x", "factor"));
}

TEST(SignalFeatureToFunctionAdaptorTest, HasNeitherParametersNorMemoryToReset) {
    PlainTotal function("total");
    EXPECT_THAT(argumentNames(function), ElementsAre("x"));
    EXPECT_THAT(parameterNames(function), IsEmpty());
    EXPECT_TRUE(configure(function, 0));
    EXPECT_EQ(compute(function, 2.0), 2.0);
    EXPECT_TRUE(function.reset());
    EXPECT_EQ(compute(function, 2.0), 4.0);
}

TEST(SignalFeatureWithMemoryAdaptorTest, ResetReachesTheFeature) {
    RememberingTotal function("total");
    EXPECT_THAT(parameterNames(function), IsEmpty());
    EXPECT_TRUE(configure(function, 0));
    EXPECT_EQ(compute(function, 2.0), 2.0);
    EXPECT_TRUE(function.reset());
    EXPECT_EQ(compute(function, 2.0), 2.0);
}

TEST(SignalFeatureWithSingleParamAdaptorTest, ConfigureReachesTheFeatureAndResetDoesNot) {
    ParameterTotal function("total", "factor");
    EXPECT_THAT(parameterNames(function), ElementsAre("factor"));
    EXPECT_TRUE(configure(function, 3));
    EXPECT_EQ(compute(function, 2.0), 6.0);
    EXPECT_TRUE(function.reset());
    EXPECT_EQ(compute(function, 2.0), 12.0);
    EXPECT_FALSE(function.configure(ParameterTrie(), TSHandle<VirtualFileSystem>()));
}

TEST(SignalFeatureWithParamAndMemoryAdaptorTest, BothReachTheFeatureWithTheirResults) {
    FullTotal function;
    EXPECT_TRUE(configure(function, 3));
    EXPECT_EQ(compute(function, 2.0), 6.0);
    EXPECT_TRUE(function.reset());
    EXPECT_EQ(compute(function, 2.0), 6.0);
    EXPECT_TRUE(configure(function, 0));
    EXPECT_FALSE(function.reset());
    EXPECT_FALSE(function.configure(ParameterTrie(), TSHandle<VirtualFileSystem>()));
}

TEST(SignalFeatureToFunctionAdaptorBaseTest, CopyAndAssignmentCloneTheFeature) {
    FullTotal source;
    ASSERT_TRUE(configure(source, 10));
    EXPECT_EQ(compute(source, 1.0), 10.0);
    FullTotal copy(source);
    FullTotal assigned;
    assigned = source;
    EXPECT_EQ(compute(copy, 1.0), 20.0);
    EXPECT_EQ(compute(assigned, 2.0), 30.0);
    EXPECT_TRUE(copy.reset());
    EXPECT_EQ(compute(source, 1.0), 20.0);
}

TEST(SignalFeatureToFunctionAdaptorBaseTest, AFeatureThatClonesAnotherKindLeavesNone) {
    using Mutant = SignalFeatureWithParamAndMemoryAdaptorImpl<MutantFeature>;
    class Function : public Mutant {
    public:
        Function() : Mutant("mutant") {}
        void getParameterNames(Names&) override {}
    };
    Function source;
    Function assigned;
    const AssertionCapture assertions;
    assigned = source;
    EXPECT_THAT(assertions.expressions(), ElementsAre("rhs.isNull() || m_ptr"));
    EXPECT_EQ(compute(source, 1.0), 1.0);
    EXPECT_EQ(compute(assigned, 1.0), -1.0);
    EXPECT_FALSE(assigned.reset());
    EXPECT_FALSE(configure(assigned, 1));
}

TEST(SignalFeatureToFunctionAdaptorBaseTest, AMissingArgumentGivesNoResult) {
    PlainTotal function("total");
    DoubleVector vResult;
    EXPECT_FALSE(function.calculate(FunctionAdaptor::ArgumentMap(), vResult));
    EXPECT_EQ(vResult.size(), 0U);
}

TEST(SignalFeatureFunctionAdaptorTest, IsAFunctionAndAFeatureInOne) {
    BuiltIn doubler(Handle<FunctionBaseImpl>(new UserFunctionImpl<Doubler>));
    EXPECT_STREQ(doubler.node()->getName(), "test.doubler");
    EXPECT_THAT(doubler.argumentNames(), ElementsAre("x"));
    EXPECT_THAT(doubler.parameterNames(), IsEmpty());
    EXPECT_TRUE(doubler.configure());
    EXPECT_EQ(doubler({{1, 2}}), "[2 4]");
    EXPECT_TRUE(doubler.reset());
    EXPECT_EQ(doubler.copy()({{3}}), "[6]");
}

} // namespace
} // namespace Velmora::Testing
