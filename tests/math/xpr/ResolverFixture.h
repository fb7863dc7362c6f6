#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <velmora/math/xpr/Argument.h>
#include <velmora/math/xpr/ConstantImpl.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>
#include <velmora/math/xpr/Registry.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "support/AssertionCapture.h"
#include "support/LogCapture.h"

namespace Velmora::Math::Xpr::ResolverTesting {

inline constexpr const char* LinkerLogger = "quillmark.math.xpr.Linker";

inline std::string at(const char* in_szFile, int in_iLine, int in_iColumn) {
    return "<file_position fileName=\"" + std::string(in_szFile) + "\" line=\"" +
           std::to_string(in_iLine) + "\" column=\"" + std::to_string(in_iColumn) + "\"/>:";
}

template <class T>
Handle<Expression> named(const char* in_szName) {
    auto* const pExpression = new T;
    pExpression->setName(in_szName);
    return Handle<Expression>(pExpression);
}

inline Handle<Expression> variable(const char* in_szName, const Handle<Expression>& in_pValue) {
    auto* const pVariable = new VariableImpl;
    pVariable->setName(in_szName);
    pVariable->setValue(in_pValue);
    return Handle<Expression>(pVariable);
}

inline Handle<Expression> constant(double in_dValue) {
    return Handle<Expression>(new ConstantImpl(DoubleVector{in_dValue}));
}

/// What a variable leads to, through variables and arguments only.
template <class T>
Handle<T> valueOf(const Handle<Expression>& in_pVariable) {
    return Handle<T>(Handle<VariableImpl>(in_pVariable)->getValue());
}

inline Handle<Expression> argumentOf(const Handle<Expression>& in_pFunction,
                                     std::size_t in_uiIndex) {
    return Handle<Expression>(Handle<Function>(in_pFunction)->getArgument(in_uiIndex));
}

/// A built-in for tests: one argument, one parameter; hands its argument on.
class Echo : public FunctionBaseImpl {
public:
    explicit Echo(const char* in_szName = "test.echo") : FunctionBaseImpl(in_szName) {
        addArgument("x");
        addParameter("Level");
    }

protected:
    struct ForCopy {};
    explicit Echo(ForCopy) {}

    using FunctionBaseImpl::configure_i;
    bool configure_i(const ROConfiguration&, const TSHandle<VirtualFileSystem>&) override {
        return true;
    }
    bool evaluate_i(LimitedObjPtr<DoubleVector>& out) override {
        Expression& argument = *getChildAt(0);
        return argument.evaluate(out);
    }
    bool reset_i() override { return true; }
    Handle<ExpressionBaseImpl> copy_i(ExpressionImplCopier& inout_Copier) const override {
        auto* const pCopy = new Echo(ForCopy{});
        const Handle<ExpressionBaseImpl> pHandle(pCopy);
        pCopy->fill(*this, inout_Copier);
        return pHandle;
    }
    bool isDependantOf_i(const Handle<ExpressionBaseImpl>&) const override { return false; }
};

/// Registered under one name, gives itself the name of another.
class EchoInDisguise : public Echo {};

/// A built-in that can't be copied.
class Uncopyable : public Echo {
public:
    Uncopyable() : Echo("test.uncopyable") {}

protected:
    Handle<ExpressionBaseImpl> copy_i(ExpressionImplCopier&) const override { return {}; }
};

/// A built-in variable that is an argument of no function.
class StrayArgument : public Argument {
public:
    StrayArgument() { setName("test.argument"); }
};

/// A built-in variable that always has the value 9.
class Nine : public VariableImpl {
public:
    Nine() {
        setName("test.nine");
        setValue(constant(9));
    }
};

/// A node of no kind that the linker knows.
class Oddity : public ExpressionBaseImpl {
public:
    const char* getName() const override { return "oddity"; }

protected:
    bool configure_i(const TSHandle<VirtualFileSystem>&) override { return true; }
    bool evaluate_i(LimitedObjPtr<DoubleVector>&) override { return false; }
    bool reset_i() override { return true; }
    Handle<ExpressionBaseImpl> copy_i(ExpressionImplCopier&) const override {
        return Handle<ExpressionBaseImpl>(new Oddity);
    }
    bool isDependantOf_i(const Handle<ExpressionBaseImpl>&) const override { return false; }
};

/// A built-in that isn't written on the library's nodes.
class Foreign : public virtual Variable {
public:
    const char* getName() const override { return "test.foreign"; }
    bool setValue(const Handle<Expression>&) override { return false; }
    bool setValue(const DoubleVector&) override { return false; }
    bool configure(const TSHandle<VirtualFileSystem>&) override { return true; }
    bool evaluate(DoubleVector&) override { return false; }
    bool evaluate(LimitedObjPtr<DoubleVector>&) override { return false; }
    bool dump(const char*) const override { return true; }
    bool reset() override { return true; }
    std::ostream& write(std::ostream& out_Stream) const override { return out_Stream; }
};

/// What the linker logs and asserts, with the built-ins above registered.
class ResolverTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        Registry& registry = Registry::getInstance();
        registry.registerFunction("test.echo", new Registry::ExpressionAllocatorT<Echo>);
        registry.registerFunction("test.echoInDisguise",
                                  new Registry::ExpressionAllocatorT<EchoInDisguise>);
        registry.registerFunction("test.uncopyable",
                                  new Registry::ExpressionAllocatorT<Uncopyable>);
        registry.registerVariable("test.argument",
                                  new Registry::ExpressionAllocatorT<StrayArgument>);
        registry.registerVariable("test.nine", new Registry::ExpressionAllocatorT<Nine>);
        registry.registerVariable("test.foreign", new Registry::ExpressionAllocatorT<Foreign>);
    }

    ResolverTest() : m_Log(LinkerLogger) {}

    /// The DEBUG lines of the linker that begin with the text.
    std::vector<std::string> steps(const std::string& in_strStart) const {
        std::vector<std::string> vSteps;
        for (const std::string& strMessage : m_Log.messages(log4cplus::DEBUG_LOG_LEVEL)) {
            if (strMessage.compare(0, in_strStart.size(), in_strStart) == 0) {
                vSteps.push_back(strMessage);
            }
        }
        return vSteps;
    }

    std::vector<std::string> errors() const { return m_Log.messages(log4cplus::ERROR_LOG_LEVEL); }

    AssertionCapture m_Assertions;
    LogCapture m_Log;
};

} // namespace Velmora::Math::Xpr::ResolverTesting
