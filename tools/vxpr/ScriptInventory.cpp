#include "ScriptInventory.h"

#include "ParsedScript.h"
#include "StatementScanner.h"

#include <velmora/math/xpr/DomainVariableImpl.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

#include <algorithm>

namespace Vxpr {

namespace {

using Velmora::Handle;
using Velmora::Math::Xpr::DomainVariableImpl;
using Velmora::Math::Xpr::ExpressionBaseImpl;
using Velmora::Math::Xpr::FunctionBaseImpl;

Definition describe(const ScriptText& in_Script, const Handle<ExpressionBaseImpl>& in_pExpression) {
    Definition definition;
    const std::string strName = in_pExpression->getName();
    definition.m_strName = strName.substr(in_Script.getName().size() + 1);
    if (const auto position = findPosition(in_pExpression->getSourceInfo())) {
        definition.m_Position = position->m_Position;
    }
    const Handle<FunctionBaseImpl> pFunction = in_pExpression;
    if (!pFunction.isNull()) {
        definition.m_Kind = Definition::Kind::Function;
        for (auto ite = pFunction->getArgumentBegin(); ite != pFunction->getArgumentEnd(); ++ite) {
            definition.m_vArguments.push_back(ite->first);
        }
        for (auto ite = pFunction->getParameterBegin(); ite != pFunction->getParameterEnd();
             ++ite) {
            definition.m_vParameters.push_back(ite->first);
        }
        return definition;
    }
    const Handle<DomainVariableImpl> pInput = in_pExpression;
    if (!pInput.isNull()) {
        definition.m_Kind = Definition::Kind::Input;
    }
    return definition;
}

} // namespace

ScriptInventory::ScriptInventory(const ScriptText& in_Script) {
    const ParsedScript parsed(in_Script);
    for (const ParsedScript::NodeHandle& pExpression : parsed.getDefinitions()) {
        Definition definition = describe(in_Script, pExpression);
        if (definition.m_Kind == Definition::Kind::Input) {
            // The engine keeps no position for declarations of inputs.
            const auto iEarlier = std::count_if(
                m_vDefinitions.begin(), m_vDefinitions.end(), [&](const Definition& in_Other) {
                    return in_Other.m_Kind == Definition::Kind::Input &&
                           in_Other.m_strName == definition.m_strName;
                });
            definition.m_Position = StatementScanner(in_Script).findInput(
                definition.m_strName, static_cast<std::size_t>(iEarlier));
        }
        m_vDefinitions.push_back(std::move(definition));
    }
    m_bWhole = parsed.isWhole();
}

const Definition* ScriptInventory::find(const std::string& in_strName) const {
    for (const Definition& definition : m_vDefinitions) {
        if (definition.m_strName == in_strName) {
            return &definition;
        }
    }
    return nullptr;
}

std::vector<std::string> ScriptInventory::getNames() const {
    std::vector<std::string> vNames;
    for (const Definition& definition : m_vDefinitions) {
        vNames.push_back(definition.m_strName);
    }
    return vNames;
}

} // namespace Vxpr
