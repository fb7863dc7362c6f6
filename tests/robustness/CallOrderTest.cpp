// A host may call the operations of a class in any order, and with null where a pointer or a handle
// goes in: an assertion says what is wrong, and nothing else happens.

#include <memory>
#include <sstream>

#include <velmora/ParameterTrie.h>
#include <velmora/math/xpr/Evaluator.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "robustness/CallOrder.h"
#include "robustness/CallPairs.h"
#include "support/LinkBench.h"

namespace Velmora::Testing {

namespace {

using namespace Math::Xpr;
using namespace CallOrder;

struct EvaluatorSubject {
    struct State {
        bool m_bDictionnary = false;
        bool m_bFindsScripts = false;
        bool m_bLinker = false;
        /// What the dictionary holds has placeholders in it.
        bool m_bRaw = false;
        bool m_bLinked = false;
    };
    Evaluator m_Evaluator;
};

using EvaluatorState = EvaluatorSubject::State;

Conditions expectAdding(const EvaluatorState& in_State, const char* in_szOperation) {
    if (in_State.m_bLinked) {
        return {LinkedAlready};
    }
    return in_State.m_bDictionnary ? Conditions() : Conditions{notConfigured(in_szOperation)};
}

/// An operation that goes on when it may, and asserts something itself then.
auto expectAddingNull(const char* in_szOperation, const char* in_szCondition) {
    return [=](EvaluatorState& inout_State) {
        const Conditions vConditions = expectAdding(inout_State, in_szOperation);
        return vConditions.empty() ? Conditions{in_szCondition} : vConditions;
    };
}

auto expectAdding(const char* in_szOperation) {
    return [=](EvaluatorState& inout_State) { return expectAdding(inout_State, in_szOperation); };
}

/// The condition that tells of an evaluator without a link has a text of its own for each look-up.
auto expectLookUp(const char* in_szOperation, const char* in_szNullName) {
    return [=](EvaluatorState& inout_State) -> Conditions {
        if (!inout_State.m_bDictionnary) {
            return {notConfigured(in_szOperation)};
        }
        if (!inout_State.m_bLinked) {
            return {notLinked(in_szOperation)};
        }
        return in_szNullName == nullptr ? Conditions() : Conditions{in_szNullName};
    };
}

Conditions expectLink(EvaluatorState& inout_State) {
    if (inout_State.m_bLinked) {
        return {"!m_bLinked && \"expressions are already linked --> \" \"skipping linking\""};
    }
    if (!inout_State.m_bDictionnary) {
        return {notConfigured("link")};
    }
    if (!inout_State.m_bLinker) {
        return {"!m_pLinker.isNull() && \"please call configure prior to link()\""};
    }
    inout_State.m_bLinked = true;
    inout_State.m_bRaw = false;
    return Conditions();
}

/// The file system, if there is one, has the script.
auto expectConfigure(bool in_bFiles, bool in_bDirectories) {
    return [=](EvaluatorState& inout_State) {
        inout_State.m_bDictionnary = true;
        inout_State.m_bFindsScripts = in_bFiles && in_bDirectories;
        inout_State.m_bLinker = inout_State.m_bLinker || in_bDirectories;
        inout_State.m_bRaw = false;
        return Conditions();
    };
}

auto expectScript(bool in_bStream) {
    return [=](EvaluatorState& inout_State) {
        const Conditions vConditions = expectAdding(inout_State, "addScript");
        const bool bLoaded = vConditions.empty() && (in_bStream || inout_State.m_bFindsScripts);
        inout_State.m_bRaw = inout_State.m_bRaw || bLoaded;
        return vConditions;
    };
}

TEST(CallOrderTest, Evaluator) {
    using Call = Operation<EvaluatorSubject>;
    const auto addStream = [](Evaluator& inout_Evaluator, const char* in_szName) {
        std::istringstream stream(Script);
        inout_Evaluator.addScript(stream, in_szName);
    };
    const std::vector<Call> vOperations{
        {"configure", [](auto& s) { s.m_Evaluator.configure(scriptsIn("."), newFiles()); },
         expectConfigure(true, true)},
        {"configure without files",
         [](auto& s) { s.m_Evaluator.configure(scriptsIn("."), TSHandle<VirtualFileSystem>()); },
         expectConfigure(false, true)},
        {"configure without directories",
         [](auto& s) { s.m_Evaluator.configure(ParameterTrie(), newFiles()); },
         expectConfigure(true, false)},
        {"addScript", [](auto& s) { s.m_Evaluator.addScript("s"); }, expectScript(false)},
        {"addScript null", [](auto& s) { s.m_Evaluator.addScript(nullptr); },
         expectAddingNull("addScript", "0 != in_szScriptName")},
        {"addScript from a stream", [=](auto& s) { addStream(s.m_Evaluator, "s"); },
         expectScript(true)},
        {"addScript null from a stream", [=](auto& s) { addStream(s.m_Evaluator, nullptr); },
         expectAddingNull("addScript", "OS::stripFileName( in_szFilePath, strFileDirectory )")},
        {"addExpression", [](auto& s) { s.m_Evaluator.addExpression(new VariableImpl); },
         expectAdding("addExpression")},
        {"addExpression null", [](auto& s) { s.m_Evaluator.addExpression(nullptr); },
         expectAddingNull("addExpression",
                          "in_pNewExpression && \"can't except null expression\"")},
        {"link", [](auto& s) { s.m_Evaluator.link(false); }, expectLink},
        {"link and optimize", [](auto& s) { s.m_Evaluator.link(true); }, expectLink},
        {"getExpression", [](auto& s) { s.m_Evaluator.getExpression("s.y"); },
         expectLookUp("getExpression", nullptr)},
        {"getVariable", [](auto& s) { s.m_Evaluator.getVariable("s.x"); },
         expectLookUp("getVariable", nullptr)},
        {"getFunction", [](auto& s) { s.m_Evaluator.getFunction("s.f"); },
         expectLookUp("getFunction", nullptr)},
        {"getExpression null", [](auto& s) { s.m_Evaluator.getExpression(nullptr); },
         expectLookUp("getExpression", NullName)},
        {"getVariable null", [](auto& s) { s.m_Evaluator.getVariable(nullptr); },
         expectLookUp("getVariable", NullName)},
        {"getFunction null", [](auto& s) { s.m_Evaluator.getFunction(nullptr); },
         expectLookUp("getFunction", NullName)},
        {"dump", [](auto& s) { s.m_Evaluator.dump("/dev/null"); },
         [](auto& st) {
             return st.m_bDictionnary ? Conditions() : Conditions{notConfigured("dump")};
         }},
        {"dump null", [](auto& s) { s.m_Evaluator.dump(nullptr); },
         [](auto& st) {
             return Conditions{st.m_bDictionnary ? "0 != in_szFileName" : notConfigured("dump")};
         }},
        {"reconfigureExpressions", [](auto& s) { s.m_Evaluator.reconfigureExpressions(); },
         [](auto& st) -> Conditions {
             if (!st.m_bDictionnary) {
                 return {"!m_pDictionnary.isNull() && \"please call configure prior to \" "
                         "\"reconfigureExpressions()\""};
             }
             // It ends at the first placeholder.
             return st.m_bRaw ? Conditions{"false && \"can't configure UnknownFunction\""}
                              : Conditions();
         }},
        {"clone", [](auto& s) { const std::unique_ptr<Cloneable> p(s.m_Evaluator.clone()); },
         nothing<EvaluatorState>},
        {"assignment of a fresh one", [](auto& s) { s.m_Evaluator = Evaluator(); },
         [](auto& st) {
             st = EvaluatorState();
             return Conditions();
         }},
    };
    report("Evaluator", callPairs(vOperations, {"configure", "addScript", "link and optimize"}));
}

} // namespace

} // namespace Velmora::Testing
