#pragma once

#include <velmora/CachedLLLogger.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>

#include "NodeKind.h"

namespace Velmora::Math::Xpr {

/// The lines that the resolver logs.
///
/// They are built out of line: resolving goes as deep as definitions stand on each other, and the
/// functions that call each other keep their frames small.
class ResolverLog {
public:
    /// The logger outlives this object.
    explicit ResolverLog(const CachedLLLogger& in_Logger) : m_Logger(in_Logger) {}

    /// A step: the three texts in a row.
    void step(const char* in_szBefore, const char* in_szName, const char* in_szBehind = "") const;

    void resolvingLinks(NodeKind in_Kind, const ExpressionBaseImpl& in_Expression) const;
    void resolvingUnknown(NodeKind in_Kind, const ExpressionBaseImpl& in_Unknown) const;
    void tryingCandidate(const ExpressionBaseImpl& in_Unknown, const char* in_szCandidate) const;
    void resolvedUnknown(const ExpressionBaseImpl& in_Unknown, const char* in_szCandidate) const;
    void replacingChild(const ExpressionBaseImpl& in_Parent, long in_lChild,
                        const ExpressionBaseImpl& in_Unknown, const char* in_szCandidate,
                        const ExpressionBaseImpl& in_Expression) const;

    // Failures, each with the place in a script that it concerns.
    void unresolved(const ExpressionBaseImpl& in_Unknown) const;
    void noFunction(const ExpressionBaseImpl& in_Unknown) const;
    void recursive(const ExpressionBaseImpl& in_Expression) const;
    void tooManyNames(const ExpressionBaseImpl& in_Expression, std::size_t in_uiLimit) const;
    void tooManyCopies(const ExpressionBaseImpl& in_Unknown, std::size_t in_uiLimit) const;

    /// A built-in that wasn't written on this library's nodes.
    void foreignExpression() const;

private:
    const CachedLLLogger& m_Logger;
};

} // namespace Velmora::Math::Xpr
