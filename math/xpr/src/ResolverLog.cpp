#include "ResolverLog.h"

#include <velmora/LogSite.h>

namespace Velmora::Math::Xpr {

void ResolverLog::step(const char* in_szBefore, const char* in_szName,
                       const char* in_szBehind) const {
    VELMORA_LOG_DEBUG(m_Logger, in_szBefore << in_szName << in_szBehind);
}

void ResolverLog::resolvingLinks(NodeKind in_Kind, const ExpressionBaseImpl& in_Expression) const {
    const char* szKind = "variable";
    if (isFunction(in_Kind)) {
        szKind = "function";
    } else if (in_Kind == NodeKind::Argument) {
        szKind = "argument";
    }
    VELMORA_LOG_DEBUG(m_Logger, "resolving links of " << szKind << ": " << in_Expression.getName());
}

void ResolverLog::resolvingUnknown(NodeKind in_Kind, const ExpressionBaseImpl& in_Unknown) const {
    VELMORA_LOG_DEBUG(m_Logger, in_Unknown.getSourceInfo()
                                    << "resolving unknown "
                                    << (isFunction(in_Kind) ? "function " : "variable ")
                                    << in_Unknown.getName());
}

void ResolverLog::tryingCandidate(const ExpressionBaseImpl& in_Unknown,
                                  const char* in_szCandidate) const {
    VELMORA_LOG_DEBUG(m_Logger, "trying to resolve expression=\"" << in_Unknown.getName()
                                                                  << "\" with \"" << in_szCandidate
                                                                  << "\"");
}

void ResolverLog::resolvedUnknown(const ExpressionBaseImpl& in_Unknown,
                                  const char* in_szCandidate) const {
    VELMORA_LOG_DEBUG(m_Logger,
                      "resolved expression=" << in_Unknown.getName() << " with " << in_szCandidate);
}

void ResolverLog::replacingChild(const ExpressionBaseImpl& in_Parent, long in_lChild,
                                 const ExpressionBaseImpl& in_Unknown, const char* in_szCandidate,
                                 const ExpressionBaseImpl& in_Expression) const {
    VELMORA_LOG_DEBUG(m_Logger, "Replacing " << in_Parent.getName() << " child[" << in_lChild
                                             << "]=" << in_Unknown.getName() << "("
                                             << in_Unknown.getId() << ") --> " << in_szCandidate
                                             << "(" << in_Expression.getId() << ")");
}

void ResolverLog::unresolved(const ExpressionBaseImpl& in_Unknown) const {
    VELMORA_LOG_ERROR(m_Logger, in_Unknown.getSourceInfo()
                                    << ":can't resolve expression: " << in_Unknown.getName());
}

void ResolverLog::noFunction(const ExpressionBaseImpl& in_Unknown) const {
    VELMORA_LOG_ERROR(m_Logger, in_Unknown.getSourceInfo()
                                    << ":can't call an expression that isn't a function: "
                                    << in_Unknown.getName());
}

void ResolverLog::recursive(const ExpressionBaseImpl& in_Expression) const {
    VELMORA_LOG_ERROR(m_Logger, in_Expression.getSourceInfo()
                                    << ":recursive expression calls detected for expression: "
                                    << in_Expression.getName()
                                    << ". Recursive expression calls are not allowed.");
}

void ResolverLog::tooManyNames(const ExpressionBaseImpl& in_Expression,
                               std::size_t in_uiLimit) const {
    VELMORA_LOG_ERROR(m_Logger, in_Expression.getSourceInfo()
                                    << ":too many names depend on each other at expression: "
                                    << in_Expression.getName() << ". A chain of at most "
                                    << in_uiLimit << " names is allowed.");
}

void ResolverLog::tooManyCopies(const ExpressionBaseImpl& in_Unknown,
                                std::size_t in_uiLimit) const {
    VELMORA_LOG_ERROR(m_Logger, in_Unknown.getSourceInfo()
                                    << ":too many copies of functions for expression: "
                                    << in_Unknown.getName() << ". Each use copies all that a "
                                    << "function calls; at most " << in_uiLimit
                                    << " copied nodes are allowed. A variable is shared by its "
                                    << "uses.");
}

void ResolverLog::foreignExpression() const {
    VELMORA_LOG_ERROR(m_Logger, "Must use same implementation base for all expressions.");
}

} // namespace Velmora::Math::Xpr
