#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include <velmora/math/xpr/Variable.h>

#include <gtest/gtest.h>

#include "math/xpr/PlanTwins.h"
#include "support/AllocationCounter.h"

/// Twins of a script with inputs, which are called by their number.
class InputTwins {
public:
    using Names = std::vector<std::string>;

    InputTwins(const std::string& in_strText, const Names& in_vFeatures, Names in_vInputs)
        : m_Twins(in_strText, in_vFeatures), m_vInputs(std::move(in_vInputs)) {}

    /// The features, and then all below them.
    std::size_t getNodeCount() const { return m_Twins.getNodeCount(); }

    // Each returns what differs between the two, or an empty text.
    std::string set(std::size_t in_uiInput, const Velmora::Math::DoubleVector& in_vValue) {
        return m_Twins.doToBoth([&](ScriptRun& inout_Run, const PlanTwins::Nodes&) {
            getInput(inout_Run, in_uiInput).setValue(in_vValue);
            return std::string();
        });
    }

    /// Sets what a node has handed out.
    std::string setResult(std::size_t in_uiInput, std::size_t in_uiNode) {
        return m_Twins.doToBoth([&](ScriptRun& inout_Run, const PlanTwins::Nodes& in_vNodes) {
            Velmora::LimitedObjPtr<Velmora::Math::DoubleVector> pValue;
            if (!in_vNodes[in_uiNode % in_vNodes.size()]->evaluate(pValue) || pValue.isNull()) {
                return std::string("no value");
            }
            getInput(inout_Run, in_uiInput).setValue(*pValue);
            return std::string();
        });
    }

    std::string evaluate(std::size_t in_uiNode) {
        return m_Twins.doToBoth([&](ScriptRun&, const PlanTwins::Nodes& in_vNodes) {
            return PlanTwins::evaluate(*in_vNodes[in_uiNode % in_vNodes.size()]);
        });
    }

    std::string invalidate(std::size_t in_uiNode) {
        return m_Twins.doToBoth([&](ScriptRun&, const PlanTwins::Nodes& in_vNodes) {
            in_vNodes[in_uiNode % in_vNodes.size()]->invalidate();
            return std::string();
        });
    }

private:
    Velmora::Math::Xpr::Variable& getInput(ScriptRun& inout_Run, std::size_t in_uiInput) const {
        return *inout_Run.getEvaluator().getVariable(("s." + m_vInputs[in_uiInput]).c_str());
    }

    PlanTwins m_Twins;
    Names m_vInputs;
};

/// A feature of one script with inputs, which are called by their number.
class InputFeature {
public:
    InputFeature(const std::vector<std::string>& in_vInputs, const std::string& in_strFormula)
        : m_Run(declare(in_vInputs) + "r = " + in_strFormula + '\n', {"r"}, true),
          m_pFeature(m_Run.getEvaluator().getExpression("s.r")) {
        for (const std::string& strInput : in_vInputs) {
            m_vVariables.push_back(m_Run.getEvaluator().getVariable(("s." + strInput).c_str()));
        }
    }

    void set(std::size_t in_uiInput, const Velmora::Math::DoubleVector& in_vValue) {
        m_vVariables[in_uiInput]->setValue(in_vValue);
    }

    /// The pointer form: nothing is copied.
    bool evaluate() { return m_pFeature->evaluate(m_pValue); }

    std::vector<double> getValue() const { return {m_pValue->begin(), m_pValue->end()}; }

private:
    static std::string declare(const std::vector<std::string>& in_vInputs) {
        std::string strText;
        for (const std::string& strInput : in_vInputs) {
            strText += "inputvar " + strInput + '\n';
        }
        return strText;
    }

    ScriptRun m_Run;
    Velmora::Handle<Velmora::Math::Xpr::Expression> m_pFeature;
    std::vector<Velmora::Handle<Velmora::Math::Xpr::Variable>> m_vVariables;
    Velmora::LimitedObjPtr<Velmora::Math::DoubleVector> m_pValue;
};

/// Evaluates six frames with two values of the first input, of which the first three set the second
/// and third input too, behind one evaluation that may allocate.
inline void expectNoAllocations(InputFeature& inout_Feature,
                                const Velmora::Math::DoubleVector& in_vOne,
                                const Velmora::Math::DoubleVector& in_vOther,
                                const Velmora::Math::DoubleVector& in_vSecond,
                                const Velmora::Math::DoubleVector& in_vThird) {
    const auto evaluateFrame = [&](int in_iFrame) {
        inout_Feature.set(0, in_iFrame % 2 == 0 ? in_vOne : in_vOther);
        if (in_iFrame < 3) {
            inout_Feature.set(1, in_vSecond);
            inout_Feature.set(2, in_vThird);
        }
        return inout_Feature.evaluate();
    };
    ASSERT_TRUE(evaluateFrame(0));
    const Velmora::Testing::AllocationCounter counter;
    bool bEvaluated = true;
    for (int iFrame = 0; iFrame != 6; ++iFrame) {
        bEvaluated = evaluateFrame(iFrame) && bEvaluated;
    }
    EXPECT_EQ(counter.allocations(), 0u);
    EXPECT_TRUE(bEvaluated);
}
