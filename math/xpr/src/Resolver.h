#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include <velmora/CachedLLLogger.h>
#include <velmora/Handle.h>
#include <velmora/ObjectWithLogger.h>
#include <velmora/math/xpr/Dictionnary.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>
#include <velmora/math/xpr/Linker.h>

#include "IdSet.h"
#include "NodeKind.h"
#include "PrototypeCopier.h"
#include "RawExpressions.h"
#include "ResolverLog.h"

namespace Velmora::Math::Xpr {

/// The work of one `Linker::run`: finds what the placeholders stand for and puts it in their place.
///
/// A name is sought among what has been resolved, among the raw expressions, in the script of that
/// name, and among the built-ins, in this order. What is found is resolved once, as a prototype;
/// each use of anything but a variable gets a copy of the prototype.
///
/// Resolving a name ends at the variables below it, which are resolved under their own names, so
/// the work grows with the size of the scripts and not with the number of paths through them.
class Resolver : public ObjectWithLogger<CachedLLLogger> {
public:
    /// How many names may be in the middle of being resolved, each for the sake of the one before.
    static constexpr std::size_t MaxNames = 20000;

    /// How often the nodes of a run may be visited again: the body of a function leads to its
    /// arguments once for each place that reads them. Behind that, what was resolved is passed by.
    static constexpr std::size_t MaxRevisits = ExpressionBaseImpl::MaxVisitsPerWalk;

    /// How many names of a run may fail before a name that failed once is refused without another
    /// try. With one bad name at the bottom of a long script, each of its lines would otherwise
    /// report all lines below it again.
    static constexpr std::size_t MaxFailures = 1000;

    /// Copies the expressions; inputs of the copy and of the original are fed together.
    Resolver(const Linker& in_Linker, const Dictionnary& in_RawExpressions);

    /// Resolves everything below an expression, under its name. False, with the reason in the log.
    bool resolve(const Handle<ExpressionBaseImpl>& inout_pExpression, bool in_bTopLevel);

private:
    using Node = Handle<ExpressionBaseImpl>;

    void takeLogLevel();
    bool refuse();
    bool enter(const std::string& in_strName, const Node& in_pExpression, bool in_bTopLevel);
    bool leave(const std::string& in_strName, bool in_bResolved);

    bool resolveExpressionLinks(const Node& inout_pExpression, bool in_bTopLevel);
    bool resolveChilds(const Node& inout_pExpression, bool in_bTopLevel);
    bool resolveChild(const Node& inout_pParent, long in_lChild);
    bool resolvePlaceholder(const Node& inout_pParent, long in_lChild, const Node& in_pUnknown,
                            NodeKind in_Kind);
    bool resolveCall(const Node& inout_pFunction, const ExpressionBaseImpl& in_Unknown);
    bool shareConstant(const Node& inout_pParent, Node& inout_pConstant);
    Node findConstant(const ExpressionBaseImpl& in_Constant);
    void noteReplaced(const Node& in_pParent, const Node& in_pRaw, const Node& in_pNew);
    bool isPassedBy(const ExpressionBaseImpl& in_Expression);

    Node findCandidate(const ExpressionBaseImpl& in_Unknown, std::string& out_strCandidate);
    Node findExpression(const std::string& in_strName, const ExpressionBaseImpl& in_Unknown);
    Node findUnresolvedExpression(const std::string& in_strName);
    Node copyRaw(const Node& in_pExpression);
    Node loadExpressionFromScript(const std::string& in_strName);
    bool loadScript(const std::string& in_strFileName);

    bool addPrototype(const Node& in_pExpression);
    bool addLinkedExpression(const Node& in_pExpression, bool in_bIgnoreDuplicate);
    Node copyPrototype(const Node& in_pPrototype, const ExpressionBaseImpl& in_Unknown);

    const Linker& m_Linker;
    RawExpressions m_RawExpressions;
    Dictionnary m_LinkedExpressions;
    /// Constants of one number that were found among the linked expressions, which none ever
    /// leaves.
    std::unordered_map<std::uint64_t, Node> m_mapNumbers;
    std::unordered_map<std::string, Node> m_mapExpressionCalls;
    /// The same in their order.
    std::vector<const ExpressionBaseImpl*> m_vExpressionCalls;

    ResolverLog m_Log;
    PrototypeCopier m_Copier;
    NodeKinds m_Kinds;
    IdSet m_ResolvedIds;
    std::size_t m_uiRevisits = 0;
    /// Has a host linked a variable by hand? As long as every link to a variable is the work of
    /// this run, no link can make a loop: what it leads to was resolved to the end before, and a
    /// name that is needed for its own sake is refused.
    bool m_bForeignLinks = false;
    std::unordered_set<std::string> m_FailedNames;
    std::size_t m_uiFailures = 0;
    /// The names that failed since a limit of the run was reached below them. The limit is reported
    /// once; a line for each name above it would bury it.
    std::unordered_set<std::string> m_RefusedNames;
    /// Does what is being resolved fail for a limit?
    bool m_bRefused = false;
    bool m_bLimitReported = false;
    /// A script that was loaded once counts as loaded at every further try.
    std::unordered_set<std::string> m_LoadedScripts;
};

} // namespace Velmora::Math::Xpr
