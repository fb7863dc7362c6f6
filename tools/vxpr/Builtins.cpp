#include "Builtins.h"

#include "TextList.h"

#include <velmora/Handle.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>
#include <velmora/math/xpr/Registry.h>

#include <algorithm>
#include <array>

namespace Vxpr {

namespace {

using Velmora::Handle;
using Velmora::Math::Xpr::Expression;
using Velmora::Math::Xpr::FunctionBaseImpl;
using Velmora::Math::Xpr::Registry;

/// A sample of the function tells what it takes.
Builtin describe(const std::string& in_strName) {
    const Registry& registry = Registry::getInstance();
    Builtin builtin;
    builtin.m_strName = in_strName;
    builtin.m_strDescription = registry.getDescription(in_strName.c_str());
    const Handle<Expression> pSample(registry.newExpression(in_strName.c_str()));
    const Handle<FunctionBaseImpl> pFunction = pSample;
    if (pFunction.isNull()) {
        return builtin;
    }
    for (auto ite = pFunction->getArgumentBegin(); ite != pFunction->getArgumentEnd(); ++ite) {
        builtin.m_vArguments.push_back(ite->first);
    }
    for (auto ite = pFunction->getParameterBegin(); ite != pFunction->getParameterEnd(); ++ite) {
        builtin.m_vParameters.push_back(ite->first);
    }
    return builtin;
}

} // namespace

std::vector<std::string> Builtin::getShortParameters() const {
    std::vector<std::string> vParameters;
    for (const std::string& strKey : m_vParameters) {
        vParameters.push_back(strKey.substr(strKey.rfind('.') + 1));
    }
    return vParameters;
}

std::string Builtin::getCall() const {
    const std::vector<std::string> vParameters = getShortParameters();
    return m_strName + (vParameters.empty() ? "" : "<" + join(vParameters, ", ") + ">") + "(" +
           join(m_vArguments, ", ") + ")";
}

std::vector<std::string> Builtins::getNames() {
    std::vector<std::string> vNames;
    Registry::getInstance().getNames(vNames);
    return vNames;
}

std::vector<Builtin> Builtins::getAll() {
    std::vector<Builtin> vBuiltins;
    for (const std::string& strName : getNames()) {
        vBuiltins.push_back(describe(strName));
    }
    return vBuiltins;
}

std::optional<Builtin> Builtins::find(const std::string& in_strName) {
    const std::vector<std::string> vNames = getNames();
    if (std::find(vNames.begin(), vNames.end(), in_strName) == vNames.end()) {
        return std::nullopt;
    }
    return describe(in_strName);
}

bool Builtins::hasMemory(const std::string& in_strName) {
    // The engine doesn't tell.
    constexpr std::array WITH_MEMORY{"delta",    "slidingWindow", "tappedDelay",
                                     "debounce", "debounceOnOff", "vad"};
    return std::find(WITH_MEMORY.begin(), WITH_MEMORY.end(), in_strName) != WITH_MEMORY.end();
}

} // namespace Vxpr
