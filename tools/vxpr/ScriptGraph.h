#pragma once

#include <velmora/Handle.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Vxpr {

/// What a script computes, as a person wants to see it: each node that computes, each literal and
/// each input once, and arrows from what is read to what reads it.
///
/// The engine's own nodes that only hand a value on (variables, arguments, calls of script
/// functions) don't appear; the node that they lead to bears their names. So definitions whose
/// nodes were merged show as several names on one node.
///
/// It is built of lists instead of recursion, each engine node visited once: scripts may chain and
/// share definitions as they like.
class ScriptGraph {
public:
    using NodeHandle = Velmora::Handle<Velmora::Math::Xpr::ExpressionBaseImpl>;

    enum class Kind {
        Operation,   ///< an operator or a built-in function
        Literal,     ///< a constant
        Input,       ///< what the host sets before each frame
        Argument,    ///< of a script function that isn't called here
        Name,        ///< a name that the parser hasn't looked up
        FunctionName ///< the same, called like a function
    };

    /// A definition that has the value of a node.
    struct Name {
        std::string m_strScript;  ///< empty for the script that is shown
        std::string m_strName;    ///< without the script's
        std::size_t m_uiLine = 0; ///< 0 if it isn't known
    };

    /// What a node reads.
    struct Source {
        std::size_t m_uiNode = 0;
        std::string m_strRole; ///< empty where there is nothing to tell apart
    };

    struct Node {
        Kind m_Kind = Kind::Operation;
        std::string m_strText;      ///< the operator, the call without its arguments, the value
        bool m_bMemory = false;     ///< keeps something from frame to frame
        std::vector<Name> m_vNames; ///< of the script that is shown, by line; then those of others
        std::vector<std::string> m_vCalls; ///< script functions that have the node's value
        std::vector<Source> m_vSources;
        std::string m_strPlace;  ///< where a script says it, such as `s.xpr:3:5`; empty if nowhere
        bool m_bReached = false; ///< the nodes asked for read it, or it is one of them
    };

    /// A definition of the script that is shown.
    struct Definition {
        std::string m_strName;
        std::string m_strArguments; ///< such as `<n>(x)`
        std::size_t m_uiLine = 0;
        NodeHandle m_pExpression;
        bool m_bAsked = true; ///< what it reads is part of the picture
    };

    /// The definitions are those of the whole script, so that all names of a node are known.
    ScriptGraph(const std::string& in_strScript, const std::vector<Definition>& in_vDefinitions);

    /// Each behind those that it reads.
    const std::vector<Node>& getNodes() const { return m_vNodes; }

private:
    std::vector<Node> m_vNodes;
};

} // namespace Vxpr
