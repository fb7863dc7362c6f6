#include "CallBinder.h"

#include <velmora/LogSite.h>

#include "UncheckedLinks.h"

namespace Velmora::Math::Xpr {

bool CallBinder::copyFunctionParameters(FunctionBaseImpl& out_Function,
                                        const FunctionBaseImpl& in_Unknown) const {
    logStart("Resolver::copyFunctionParameters", "Copying parameters from ", in_Unknown,
             out_Function);
    if (!checkCount(in_Unknown.getParameterCount(), out_Function.getParameterCount(),
                    " parameter(s)", in_Unknown, out_Function)) {
        return false;
    }
    auto iteTarget = out_Function.getParameterBegin();
    std::size_t uiIndex = 0;
    for (auto iteSource = in_Unknown.getParameterBegin(); iteSource != in_Unknown.getParameterEnd();
         ++iteSource, ++iteTarget, ++uiIndex) {
        ParameterImpl& target = *iteTarget->second;
        VELMORA_LOG_DEBUG(getLogger(), "Resolver::copyFunctionParameters"
                                           << " : copy parameter[" << uiIndex
                                           << "]=" << target.getName());
        iteSource->second->copyValue(target);
    }
    return true;
}

bool CallBinder::copyFunctionArguments(FunctionBaseImpl& out_Function,
                                       const FunctionBaseImpl& in_Unknown) const {
    logStart("Resolver::copyFunctionArguments", "Copying arguments from ", in_Unknown,
             out_Function);
    if (!checkCount(in_Unknown.getArgumentCount(), out_Function.getArgumentCount(), " argument(s)",
                    in_Unknown, out_Function)) {
        return false;
    }
    // Above the arguments of a fresh copy there is nothing but the copy.
    const UncheckedLinks unchecked;
    auto iteTarget = out_Function.getArgumentBegin();
    std::size_t uiIndex = 0;
    for (auto iteSource = in_Unknown.getArgumentBegin(); iteSource != in_Unknown.getArgumentEnd();
         ++iteSource, ++iteTarget, ++uiIndex) {
        const Handle<VariableImpl> pTarget(out_Function.getArgument(iteTarget));
        const Handle<VariableImpl> pSource(in_Unknown.getArgument(iteSource));
        VELMORA_LOG_DEBUG(getLogger(), "Resolver::copyFunctionArguments"
                                           << " : copy argument[" << uiIndex
                                           << "]=" << pTarget->getName());
        pTarget->setValue(Handle<Expression>(pSource->getValue()));
    }
    return true;
}

void CallBinder::logStart(const char* in_szOperation, const char* in_szWhat,
                          const FunctionBaseImpl& in_Unknown,
                          const FunctionBaseImpl& in_Function) const {
    VELMORA_LOG_DEBUG(getLogger(), in_szOperation << " : " << in_szWhat << in_Unknown.getName()
                                                  << "(" << in_Unknown.getId() << ") --> "
                                                  << in_Function.getName() << "("
                                                  << in_Function.getId() << ")");
}

bool CallBinder::checkCount(std::size_t in_uiGiven, std::size_t in_uiExpected,
                            const char* in_szWhat, const FunctionBaseImpl& in_Unknown,
                            const FunctionBaseImpl& in_Function) const {
    if (in_uiGiven == in_uiExpected) {
        return true;
    }
    VELMORA_LOG_ERROR(getLogger(), in_Unknown.getSourceInfo()
                                       << ":Function " << in_Function.getName() << " expects "
                                       << in_uiExpected << in_szWhat);
    return false;
}

} // namespace Velmora::Math::Xpr
