#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include <velmora/math/xpr/Dictionnary.h>
#include <velmora/math/xpr/DomainValueNoCopyImpl.h>
#include <velmora/math/xpr/OperatorConcatenate.h>
#include <velmora/math/xpr/OperatorPlus.h>
#include <velmora/math/xpr/ParameterImpl.h>
#include <velmora/math/xpr/ScriptFunctionImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "support/RecordingNode.h"

namespace Velmora::Testing {

using Math::Xpr::Expression;
using Math::Xpr::FunctionBaseImpl;
using Math::Xpr::VariableImpl;

inline const char* const OptimizerLogger = "quillmark.math.xpr.Optimizer";
inline const char* const OptimizerDictionnaryLogger = "quillmark.math.xpr.Optimizer.Dictionnary";
inline const char* const KeyLogger = "quillmark.math.xpr.OptimizerExpressionDataSpecializer";
inline const char* const DataLogger = "quillmark.math.xpr.OptimizerExpressionData";

using Node = Handle<ExpressionBaseImpl>;
using NodeList = std::initializer_list<Node>;

/// A variable of a host that wasn't made on the library's base.
class ForeignVariable : public Math::Xpr::Variable {
public:
    const char* getName() const override { return "foreign"; }
    bool setValue(const Handle<Expression>&) override { return false; }
    bool setValue(const Math::DoubleVector&) override { return false; }
    bool configure(const TSHandle<VirtualFileSystem>&) override { return false; }
    bool evaluate(Math::DoubleVector&) override { return false; }
    bool evaluate(LimitedObjPtr<Math::DoubleVector>&) override { return false; }
    bool dump(const char*) const override { return false; }
    bool reset() override { return false; }
    std::ostream& write(std::ostream& out_Stream) const override { return out_Stream; }
};

/// The hash of a text as the optimizer defines it: h = h * 5 + c, over 64 bits.
inline std::uint64_t plainHash(const std::string& in_strText) {
    std::uint64_t uiHash = 0;
    for (const char c : in_strText) {
        uiHash = uiHash * 5 + static_cast<std::uint64_t>(std::int64_t(static_cast<signed char>(c)));
    }
    return uiHash;
}

/// A variable of that name, without a value.
inline Handle<VariableImpl> variable(const char* in_szName) {
    const Handle<VariableImpl> pVariable(new VariableImpl);
    pVariable->setName(in_szName);
    return pVariable;
}

inline Handle<VariableImpl> variable(const char* in_szName, const Node& in_pValue) {
    const Handle<VariableImpl> pVariable = variable(in_szName);
    Math::Xpr::Variable& interface = *pVariable;
    interface.setValue(Handle<Expression>(in_pValue));
    return pVariable;
}

/// The argument of that number.
inline Handle<VariableImpl> argument(const FunctionBaseImpl& in_Function, std::size_t in_uiIndex) {
    const Math::Xpr::Function& function = in_Function;
    return Handle<VariableImpl>(function.getArgument(in_uiIndex));
}

/// What an argument is bound to.
inline const ExpressionBaseImpl* valueOf(const FunctionBaseImpl& in_Function,
                                         std::size_t in_uiIndex) {
    return argument(in_Function, in_uiIndex)->getValue().get();
}

/// Binds an argument.
inline void bind(const FunctionBaseImpl& in_Function, std::size_t in_uiIndex,
                 const Node& in_pValue) {
    Math::Xpr::Variable& interface = *argument(in_Function, in_uiIndex);
    interface.setValue(Handle<Expression>(in_pValue));
}

/// Adds an argument for each value, under the names "a0", "a1", and so on.
inline void bindAll(FunctionBaseImpl& inout_Function, NodeList in_values) {
    for (const Node& pValue : in_values) {
        const std::size_t uiIndex = inout_Function.getArgumentCount();
        inout_Function.addArgument(("a" + std::to_string(uiIndex)).c_str());
        bind(inout_Function, uiIndex, pValue);
    }
}

template <class T = Math::Xpr::OperatorPlus>
Handle<T> binary(const Node& in_pLeft, const Node& in_pRight) {
    const Handle<T> pOperator(new T);
    bind(*pOperator, 0, in_pLeft);
    bind(*pOperator, 1, in_pRight);
    return pOperator;
}

/// A function of that name over those values.
inline Handle<RecordingFunction> call(const char* in_szName, NodeList in_values = {}) {
    const Handle<RecordingFunction> pFunction(new RecordingFunction(in_szName));
    bindAll(*pFunction, in_values);
    return pFunction;
}

/// A concatenation that the optimizer finds, or, under another name, doesn't find.
inline Handle<Math::Xpr::OperatorConcatenate> concatenation(NodeList in_values,
                                                            const char* in_szName = "concat") {
    const Handle<Math::Xpr::OperatorConcatenate> pOperator(
        new Math::Xpr::OperatorConcatenate(in_szName));
    bindAll(*pOperator, in_values);
    return pOperator;
}

/// A script function of that name and body.
inline Handle<Math::Xpr::ScriptFunctionImpl> scriptFunction(const char* in_szName,
                                                            const Node& in_pBody) {
    const Handle<Math::Xpr::ScriptFunctionImpl> pFunction(
        new Math::Xpr::ScriptFunctionImpl(in_szName));
    pFunction->setImplementation(Handle<Expression>(in_pBody));
    return pFunction;
}

/// A new parameter of a function, without a value.
inline Handle<Math::Xpr::ParameterImpl> newParameter(FunctionBaseImpl& inout_Function,
                                                     const char* in_szName) {
    inout_Function.addParameter(in_szName);
    const Math::Xpr::Function& function = inout_Function;
    return Handle<Math::Xpr::ParameterImpl>(function.getParameter(in_szName));
}

/// x0 is the leaf, and each variable behind it the sum of the one before and itself: 2 to the power
/// of the levels paths lead down.
inline Handle<VariableImpl> doubled(const Handle<VariableImpl>& in_pLeaf, int in_iLevels) {
    Handle<VariableImpl> pTop(in_pLeaf);
    for (int i = 1; i <= in_iLevels; ++i) {
        pTop = variable(("x" + std::to_string(i)).c_str(), Node(binary(Node(pTop), Node(pTop))));
    }
    return pTop;
}

/// Entries over one doubling whose walks along every path take exactly
/// `ExpressionBaseImpl::MaxVisitsPerWalk` visits: of a variable behind n levels, 6 * 2^n - 4.
struct VisitLimit {
    VisitLimit() {
        m_vDoubled.push_back(variable("x0"));
        set(m_vInput);
        for (int i = 1; i <= 13; ++i) {
            const Node pBelow(m_vDoubled.back());
            m_vDoubled.push_back(
                variable(("x" + std::to_string(i)).c_str(), Node(binary(pBelow, pBelow))));
        }
        for (const std::size_t uiLevels : Levels) {
            m_Dictionnary.add(Handle<Expression>(m_vDoubled[uiLevels]), false);
        }
        for (int i = 0; i != 12; ++i) {
            addVisit(("single" + std::to_string(i)).c_str());
        }
    }

    /// An entry that takes one visit.
    void addVisit(const char* in_szName) {
        m_Dictionnary.add(Handle<Expression>(variable(in_szName)), false);
    }

    void set(const Math::DoubleVector& in_vValue) {
        Math::Xpr::Variable& interface = *m_vDoubled.front();
        interface.setValue(in_vValue);
    }

    Handle<FunctionBaseImpl> sum(std::size_t in_uiLevel) const {
        return Handle<FunctionBaseImpl>(m_vDoubled[in_uiLevel]->getValue());
    }

    /// The visits of the sum of that level: entries of more levels lead to it along more paths.
    static std::size_t visitsOfSum(std::size_t in_uiLevel) {
        std::size_t uiVisits = 0;
        for (const std::size_t uiLevels : Levels) {
            uiVisits += uiLevels < in_uiLevel ? 0 : std::size_t(1) << (uiLevels - in_uiLevel);
        }
        return uiVisits;
    }

    static constexpr std::size_t Levels[] = {13, 11, 9, 7, 5, 3, 2, 1};
    static constexpr std::size_t Expressions = 13 * 4 + 2 + 12;

    Math::DoubleVector m_vInput{3.0};
    std::vector<Handle<VariableImpl>> m_vDoubled;
    Math::Xpr::Dictionnary m_Dictionnary{"limit"};
};

} // namespace Velmora::Testing
