#include "ScriptHost.h"

#include <sstream>
#include <stdexcept>
#include <utility>

#include <velmora/LimitedObjPtr.h>
#include <velmora/ParameterTrie.h>
#include <velmora/math/xpr/DomainVariableImpl.h>
#include <velmora/math/xpr/Function.h>
#include <velmora/math/xpr/ScriptParser.h>
#include <velmora/math/xpr/VariableImpl.h>

namespace Velmora::Fuzz {

using namespace Math;
using namespace Math::Xpr;

namespace {

/// An empty input can't be drawn: that throws.
void dump(const Expression& in_Expression) {
    try {
        in_Expression.dump("/dev/null");
    } catch (const std::out_of_range&) {
    }
}

} // namespace

ScriptNames::ScriptNames(const std::string& in_strText, const char* in_szScriptName) {
    std::istringstream stream(in_strText);
    ScriptParser parser;
    if (!parser.initialize(stream, in_szScriptName, "scripts")) {
        return;
    }
    for (Handle<Expression> pExpression = parser.getExpression(); !pExpression.isNull();
         pExpression = parser.getExpression()) {
        if (const Handle<Variable> pVariable = pExpression; !pVariable.isNull()) {
            m_vExpressions.emplace_back(pVariable->getName());
            if (!Handle<DomainVariableImpl>(pExpression).isNull()) {
                m_vInputs.push_back(m_vExpressions.back());
            }
        } else if (const Handle<Function> pFunction = pExpression; !pFunction.isNull()) {
            m_vExpressions.emplace_back(pFunction->getName());
        }
    }
}

void ScriptNames::add(const ScriptNames& in_Other) {
    m_vExpressions.insert(m_vExpressions.end(), in_Other.m_vExpressions.begin(),
                          in_Other.m_vExpressions.end());
    m_vInputs.insert(m_vInputs.end(), in_Other.m_vInputs.begin(), in_Other.m_vInputs.end());
}

ScriptHost::ScriptHost(Evaluator& inout_Evaluator, const ScriptNames& in_Names) {
    for (const std::string& strName : in_Names.m_vExpressions) {
        Handle<Expression> pExpression = inout_Evaluator.getExpression(strName.c_str());
        if (!pExpression.isNull()) {
            m_vExpressions.push_back(std::move(pExpression));
        }
    }
    for (const std::string& strName : in_Names.m_vInputs) {
        Handle<Variable> pInput = inout_Evaluator.getVariable(strName.c_str());
        if (!pInput.isNull()) {
            m_vInputs.push_back(std::move(pInput));
        }
    }
}

void ScriptHost::run(Input& inout_Input) {
    for (std::size_t ui = 0; ui != FrameCount; ++ui) {
        setInputs(inout_Input);
        evaluateAll();
        interfere(inout_Input);
    }
}

void ScriptHost::setInputs(Input& inout_Input) {
    std::vector<DoubleVector> vFrame;
    vFrame.reserve(m_vInputs.size());
    for (const Handle<Variable>& pInput : m_vInputs) {
        vFrame.push_back(inout_Input.takeFrame());
        pInput->setValue(vFrame.back());
    }
    // The vectors of the frame before live until the last input has been set.
    m_vFrame.swap(vFrame);
}

void ScriptHost::evaluateAll() {
    for (const Handle<Expression>& pExpression : m_vExpressions) {
        DoubleVector vValue;
        pExpression->evaluate(vValue);
        LimitedObjPtr<DoubleVector> pValue;
        if (pExpression->evaluate(pValue) && !pValue.isNull()) {
            // What was handed out can be read.
            DoubleVector vCopy(*pValue);
        }
    }
}

void ScriptHost::interfere(Input& inout_Input) {
    if (m_vExpressions.empty()) {
        return;
    }
    const std::uint8_t uiAction = inout_Input.takeByte();
    const Handle<Expression>& pExpression =
        m_vExpressions[inout_Input.takeBelow(m_vExpressions.size())];
    switch (uiAction) {
    case 1:
        pExpression->reset();
        break;
    case 2:
        pExpression->configure(TSHandle<VirtualFileSystem>());
        break;
    case 3:
        dump(*pExpression);
        break;
    case 4:
        m_vExpressions.pop_back();
        break;
    default:
        break;
    }
}

bool configure(Evaluator& inout_Evaluator, const TSHandle<VirtualFileSystem>& in_pFileSystem) {
    ParameterTrie configuration;
    configuration.setParameter("quillmark.math.xpr.scriptLoader.scriptsDir",
                               ParameterValue("scripts"));
    return inout_Evaluator.configure(configuration, in_pFileSystem);
}

bool addInput(Evaluator& inout_Evaluator, const char* in_szName) {
    static const DoubleVector s_vValue{1.0, 2.0, 3.0};
    auto* const pInput = new VariableImpl;
    pInput->setName(in_szName);
    pInput->setValue(s_vValue);
    return inout_Evaluator.addExpression(pInput);
}

} // namespace Velmora::Fuzz
