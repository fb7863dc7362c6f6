#include "Resolver.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <typeinfo>
#include <utility>
#include <vector>

#include <velmora/DeepCall.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/ConstantImpl.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>
#include <velmora/math/xpr/Registry.h>

#include "CallBinder.h"
#include "CandidateNames.h"
#include "UncheckedLinks.h"
#include "WayBack.h"

namespace Velmora::Math::Xpr {

Resolver::Resolver(const Linker& in_Linker, const Dictionnary& in_RawExpressions)
    : ObjectWithLogger<CachedLLLogger>(CachedLLLogger("quillmark.math.xpr.Linker")),
      m_Linker(in_Linker),
      m_RawExpressions(in_RawExpressions, *in_Linker.m_pScriptLoader),
      m_LinkedExpressions("resolver.linked_expressions"),
      m_mapExpressionCalls(100),
      m_Log(getLogger()) {}

bool Resolver::resolve(const Node& inout_pExpression, bool in_bTopLevel) {
    const std::string strName(inout_pExpression->getName());
    if (in_bTopLevel) {
        m_bRefused = false;
        takeLogLevel();
        m_RawExpressions.begin(inout_pExpression);
    }
    const bool bResolved = enter(strName, inout_pExpression, in_bTopLevel) &&
                           leave(strName, resolveExpressionLinks(inout_pExpression, in_bTopLevel));
    if (in_bTopLevel) {
        m_RawExpressions.end(bResolved);
    }
    return bResolved;
}

/// There are a dozen lines for each name, which cost a comparison each where nobody reads them. A
/// reader finds them all, as does who changes the level between one entry and the next.
void Resolver::takeLogLevel() {
    const bool bQuiet = !getLogger().isEnabledFor(log4cplus::DEBUG_LOG_LEVEL) &&
                        getLogger().isEnabledFor(log4cplus::ERROR_LOG_LEVEL);
    constexpr int NotCached = -1;
    getLogger().setCachedLogLevel(
        bQuiet ? std::max(getLogger().getChainedLogLevel(), log4cplus::DEBUG_LOG_LEVEL + 1)
               : NotCached);
}

bool Resolver::enter(const std::string& in_strName, const Node& in_pExpression, bool in_bTopLevel) {
    if (in_strName.empty()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "! strExprName.empty()");
        return false;
    }
    if (m_RefusedNames.count(in_strName) != 0) {
        m_bRefused = true;
        return false;
    }
    if (!in_bTopLevel && m_uiFailures >= MaxFailures && m_FailedNames.count(in_strName) != 0) {
        return false;
    }
    if (!m_mapExpressionCalls.emplace(in_strName, in_pExpression).second) {
        m_Log.recursive(*in_pExpression);
        return false;
    }
    if (m_mapExpressionCalls.size() > MaxNames) {
        m_mapExpressionCalls.erase(in_strName);
        if (refuse()) {
            m_Log.tooManyNames(*in_pExpression, MaxNames);
        }
        return false;
    }
    m_vExpressionCalls.push_back(in_pExpression.get());
    return true;
}

/// To be called where a limit is reached. True if it is to be reported.
bool Resolver::refuse() {
    m_bRefused = true;
    return !std::exchange(m_bLimitReported, true);
}

bool Resolver::leave(const std::string& in_strName, bool in_bResolved) {
    if (m_mapExpressionCalls.erase(in_strName) != 1) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "m_mapExpressionCalls. erase(strExprName) == 1");
        return false;
    }
    m_vExpressionCalls.pop_back();
    constexpr std::size_t TwoNames = 2;
    fetchWayBack<AllLines>(m_vExpressionCalls.size(), TwoNames, [this](std::size_t in_ui) {
        const ExpressionBaseImpl& later = *m_vExpressionCalls[in_ui];
        return PlaceOnPath{&later, later.getChildBegin(), later.getChildEnd()};
    });
    if (!in_bResolved) {
        ++m_uiFailures;
        m_FailedNames.insert(in_strName);
        if (m_bRefused) {
            m_RefusedNames.insert(in_strName);
        }
    }
    return in_bResolved;
}

bool Resolver::resolveExpressionLinks(const Node& inout_pExpression, bool in_bTopLevel) {
    // Every descent passes here, into a child as well as into what a name stands for.
    return DeepCall::run([&] { return resolveChilds(inout_pExpression, in_bTopLevel); });
}

bool Resolver::resolveChilds(const Node& inout_pExpression, bool in_bTopLevel) {
    const NodeKind kind = m_Kinds.of(*inout_pExpression);
    if (kind == NodeKind::Constant || kind == NodeKind::DomainValue) {
        return true;
    }
    if (kind == NodeKind::Other) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "!pDomVal.isNull() && \"unexpected expression -> \" "
                                           "\"XPR linker may need some modifications\"");
        return false;
    }
    if (isPassedBy(*inout_pExpression)) {
        return true;
    }
    m_Log.resolvingLinks(kind, *inout_pExpression);
    for (long lChild = 0;
         lChild != inout_pExpression->getChildEnd() - inout_pExpression->getChildBegin();
         ++lChild) {
        if (!resolveChild(inout_pExpression, lChild)) {
            return false;
        }
    }
    m_ResolvedIds.insert(inout_pExpression->getId());
    if (in_bTopLevel && kind != NodeKind::Argument) {
        addLinkedExpression(inout_pExpression, true);
    }
    return true;
}

bool Resolver::isPassedBy(const ExpressionBaseImpl& in_Expression) {
    return m_ResolvedIds.contains(in_Expression.getId()) && ++m_uiRevisits > MaxRevisits;
}

bool Resolver::resolveChild(const Node& inout_pParent, long in_lChild) {
    Node pChild(inout_pParent->getChildAt(in_lChild));
    if (m_Kinds.of(*pChild) == NodeKind::Constant && !shareConstant(inout_pParent, pChild)) {
        return false;
    }
    const NodeKind kind = m_Kinds.of(*pChild);
    switch (kind) {
    case NodeKind::UnknownFunction:
    case NodeKind::UnknownVariable:
        m_Log.resolvingUnknown(kind, *pChild);
        return resolvePlaceholder(inout_pParent, in_lChild, pChild, kind);
    case NodeKind::Variable:
        m_bForeignLinks = m_bForeignLinks || !m_Copier.isShared(*pChild);
        return true;
    default:
        return resolveExpressionLinks(pChild, false);
    }
}

bool Resolver::shareConstant(const Node& inout_pParent, Node& inout_pConstant) {
    const Node pShared(findConstant(*inout_pConstant));
    if (pShared.isNull()) {
        m_LinkedExpressions.add(Handle<Expression>(inout_pConstant), false);
        return true;
    }
    // A constant stands above nothing, and only a host names something else like one.
    const UncheckedLinks unchecked(m_Kinds.of(*pShared) == NodeKind::Constant);
    if (inout_pParent->replaceChild(*inout_pConstant, pShared, true) ==
        ExpressionBaseImpl::NoChild) {
        VELMORA_ASSERT_FAIL_L(getLogger(),
                              "inout_pExpression-> replaceChild( **iteChildExpr, pExpr ) != -1");
        return false;
    }
    if (pShared != inout_pConstant) {
        noteReplaced(inout_pParent, inout_pConstant, pShared);
        inout_pConstant = pShared;
    }
    return true;
}

/// What bears the name of a constant. A number that has been found before is known by its bits:
/// making its name costs more than all else that is done with a literal.
Handle<ExpressionBaseImpl> Resolver::findConstant(const ExpressionBaseImpl& in_Constant) {
    const auto findByName = [&] {
        return Node(m_LinkedExpressions.findExpression(in_Constant.getName()));
    };
    if (typeid(in_Constant) != typeid(ConstantImpl)) {
        return findByName();
    }
    const DoubleVector& vValue = static_cast<const ConstantImpl&>(in_Constant).getValue();
    if (vValue.size() != 1) {
        return findByName();
    }
    std::uint64_t uiBits = 0;
    std::memcpy(&uiBits, vValue.begin(), sizeof(uiBits));
    Node& pKnown = m_mapNumbers[uiBits];
    if (pKnown.isNull()) {
        pKnown = findByName();
    }
    return pKnown;
}

/// What a name below stands for has been resolved for its own sake, or is being.
void Resolver::noteReplaced(const Node& in_pParent, const Node& in_pRaw, const Node& in_pNew) {
    if (m_mapExpressionCalls.size() == 1) {
        m_RawExpressions.noteReplaced(in_pParent, in_pRaw, in_pNew);
    }
}

bool Resolver::resolvePlaceholder(const Node& inout_pParent, long in_lChild,
                                  const Node& in_pUnknown, NodeKind in_Kind) {
    std::string strCandidate;
    const Node pExpression(findCandidate(*in_pUnknown, strCandidate));
    if (pExpression.isNull()) {
        if (!m_bRefused) {
            m_Log.unresolved(*in_pUnknown);
        }
        return false;
    }
    m_Log.resolvedUnknown(*in_pUnknown, strCandidate.c_str());
    if (isFunction(m_Kinds.of(*pExpression)) && !pExpression->hasSourceInfo()) {
        pExpression->copySourceInfo(*in_pUnknown);
    }
    if (in_Kind == NodeKind::UnknownFunction && !resolveCall(pExpression, *in_pUnknown)) {
        return false;
    }
    m_Log.replacingChild(*inout_pParent, in_lChild, *in_pUnknown, strCandidate.c_str(),
                         *pExpression);
    const UncheckedLinks unchecked(!m_bForeignLinks);
    if (inout_pParent->replaceChild(*in_pUnknown, pExpression, true) ==
        ExpressionBaseImpl::NoChild) {
        VELMORA_ASSERT_FAIL_L(getLogger(),
                              "inout_pExpression->replaceChild( **iteChildExpr, pExpr ) != -1");
        return false;
    }
    noteReplaced(inout_pParent, in_pUnknown, pExpression);
    return true;
}

bool Resolver::resolveCall(const Node& inout_pFunction, const ExpressionBaseImpl& in_Unknown) {
    auto* const pFunction = dynamic_cast<FunctionBaseImpl*>(inout_pFunction.get());
    if (pFunction == nullptr) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "!pFunc.isNull()");
        m_Log.noFunction(in_Unknown);
        return false;
    }
    const auto& unknown = dynamic_cast<const FunctionBaseImpl&>(in_Unknown);
    const CallBinder binder(getLogger());
    // The arguments bring the placeholders of the caller along.
    return binder.copyFunctionParameters(*pFunction, unknown) &&
           binder.copyFunctionArguments(*pFunction, unknown) &&
           resolveExpressionLinks(inout_pFunction, false);
}

Handle<ExpressionBaseImpl> Resolver::findCandidate(const ExpressionBaseImpl& in_Unknown,
                                                   std::string& out_strCandidate) {
    CandidateNames names(in_Unknown.getName());
    while (names.next(out_strCandidate)) {
        m_Log.tryingCandidate(in_Unknown, out_strCandidate.c_str());
        Node pExpression(findExpression(out_strCandidate, in_Unknown));
        if (!pExpression.isNull()) {
            return pExpression;
        }
        if (m_bRefused) {
            break;
        }
    }
    return Node();
}

Handle<ExpressionBaseImpl> Resolver::findExpression(const std::string& in_strName,
                                                    const ExpressionBaseImpl& in_Unknown) {
    m_Log.step("searching expression: ", in_strName.c_str(), "...");
    m_Log.step("searching in dictionnary of linked expressions...", "");
    Node pExpression(m_LinkedExpressions.findExpression(in_strName.c_str()));
    if (!pExpression.isNull()) {
        m_Log.step("found the expression ", in_strName.c_str(),
                   " in the dictionnary of linked expressions");
    } else {
        pExpression = findUnresolvedExpression(in_strName);
        if (pExpression.isNull() || !resolve(pExpression, false) || !addPrototype(pExpression)) {
            return Node();
        }
    }
    return isVariable(m_Kinds.of(*pExpression)) ? pExpression
                                                : copyPrototype(pExpression, in_Unknown);
}

Handle<ExpressionBaseImpl> Resolver::findUnresolvedExpression(const std::string& in_strName) {
    m_Log.step("searching in dictionnary of raw expressions...", "");
    Node pExpression(m_RawExpressions.find(in_strName));
    if (!pExpression.isNull()) {
        m_Log.step("found the expression ", in_strName.c_str(),
                   " in the dictionnary of raw expressions");
        return isVariable(m_Kinds.of(*pExpression)) ? pExpression : copyRaw(pExpression);
    }
    m_Log.step("searching in for a script...", "");
    pExpression = loadExpressionFromScript(in_strName);
    if (!pExpression.isNull()) {
        m_Log.step("found the script expression: ", in_strName.c_str());
        return pExpression;
    }
    m_Log.step("searching in the Registry...", "");
    const Handle<Expression> pNew(Registry::getInstance().newExpression(in_strName.c_str()));
    pExpression = Node(pNew);
    if (!pExpression.isNull()) {
        m_Log.step("found the expression: ", in_strName.c_str(), " in the Registry");
    } else if (!pNew.isNull()) {
        m_Log.foreignExpression();
    }
    return pExpression;
}

Handle<ExpressionBaseImpl> Resolver::copyRaw(const Node& in_pExpression) {
    Node pCopy(in_pExpression->copy());
    if (pCopy.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "!pExpr.isNull() && \"can't duplicate expression\"");
    }
    return pCopy;
}

Handle<ExpressionBaseImpl> Resolver::loadExpressionFromScript(const std::string& in_strName) {
    const std::string strFileName(in_strName, 0, in_strName.find('.'));
    if (strFileName.empty()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "strFileName.length()");
        return Node();
    }
    m_Log.step("searching for script expression \"", strFileName.c_str(), "\"");
    return loadScript(strFileName) ? m_RawExpressions.find(in_strName) : Node();
}

bool Resolver::loadScript(const std::string& in_strFileName) {
    // A comment between the parts of a name is part of its text, and may hold anything; the name of
    // a script never leads into another directory.
    if (in_strFileName.find('/') != std::string::npos) {
        return false;
    }
    if (m_LoadedScripts.count(in_strFileName) != 0) {
        return true;
    }
    ScriptLoader& loader = *m_Linker.m_pScriptLoader;
    if (!loader.run(in_strFileName.c_str(), m_RawExpressions.getLoaded(), false)) {
        return false;
    }
    m_LoadedScripts.insert(in_strFileName);
    return true;
}

bool Resolver::addPrototype(const Node& in_pExpression) {
    if (m_Kinds.of(*in_pExpression) == NodeKind::Argument) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "pArg.isNull()");
        return true;
    }
    if (!addLinkedExpression(in_pExpression, false)) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "m_LinkedExpressions.add( pExpr )");
        return false;
    }
    return true;
}

bool Resolver::addLinkedExpression(const Node& in_pExpression, bool in_bIgnoreDuplicate) {
    const std::size_t uiBefore = m_LinkedExpressions.size();
    if (!m_LinkedExpressions.add(Handle<Expression>(in_pExpression), in_bIgnoreDuplicate)) {
        return false;
    }
    if (m_LinkedExpressions.size() != uiBefore && isVariable(m_Kinds.of(*in_pExpression))) {
        m_Copier.share(*in_pExpression);
    }
    return true;
}

Handle<ExpressionBaseImpl> Resolver::copyPrototype(const Node& in_pPrototype,
                                                   const ExpressionBaseImpl& in_Unknown) {
    if (!m_Copier.fits(in_pPrototype)) {
        if (refuse()) {
            m_Log.tooManyCopies(in_Unknown, PrototypeCopier::MaxNodes);
        }
        return Node();
    }
    Node pCopy(m_Copier.copy(in_pPrototype));
    if (pCopy.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "!pExpr.isNull() && \"can't duplicate expression\"");
    }
    return pCopy;
}

} // namespace Velmora::Math::Xpr
