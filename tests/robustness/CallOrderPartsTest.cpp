// The parts that an evaluator is made of. A host may call the operations of a class in any order,
// and with null where a pointer or a handle goes in: an assertion says what is wrong, and nothing
// else happens.

#include <memory>
#include <sstream>

#include <velmora/ParameterTrie.h>
#include <velmora/math/xpr/ConstantImpl.h>
#include <velmora/math/xpr/Dictionnary.h>
#include <velmora/math/xpr/InvalidExpression.h>
#include <velmora/math/xpr/Linker.h>
#include <velmora/math/xpr/OperatorPlus.h>
#include <velmora/math/xpr/Optimizer.h>
#include <velmora/math/xpr/ScriptLoaderVFS.h>
#include <velmora/math/xpr/ScriptParser.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "robustness/CallOrder.h"
#include "robustness/CallPairs.h"
#include "support/LinkBench.h"

namespace Velmora::Testing {

namespace {

using Math::DoubleVector;
using namespace Math::Xpr;
using namespace CallOrder;

// --- Linker ------------------------------------------------------------------------------------

struct LinkerSubject {
    struct State {
        bool m_bLoader = false;
        bool m_bFilled = false;
    };
    LinkerSubject() {
        std::istringstream stream(Script);
        ScriptLoaderVFS(newFiles()).run(stream, "s", m_Raw);
    }
    Linker m_Linker;
    Dictionnary m_Raw{"raw"};
    Dictionnary m_Empty{"empty"};
    Dictionnary m_Linked{"linked"};
};

TEST(CallOrderTest, Linker) {
    using Call = Operation<LinkerSubject>;
    using State = LinkerSubject::State;
    const auto configured = [](State& inout_State) {
        inout_State.m_bLoader = true;
        return Conditions();
    };
    const auto expectRun = [](State& inout_State, bool in_bFills) -> Conditions {
        if (!inout_State.m_bLoader) {
            return {"!m_pScriptLoader.isNull() && \"please call configure() prior to call run\""};
        }
        if (inout_State.m_bFilled) {
            return {"out_LinkedExpressions.size() == 0 && \"linked expression dictionnary is not "
                    "empty\""};
        }
        inout_State.m_bFilled = in_bFills;
        return {};
    };
    const std::vector<Call> vOperations{
        {"configure",
         [](auto& s) {
             s.m_Linker.configure(scriptsIn("."),
                                  Handle<ScriptLoader>(new ScriptLoaderVFS(newFiles())));
         },
         configured},
        {"configure without a loader",
         [](auto& s) { s.m_Linker.configure(scriptsIn("."), Handle<ScriptLoader>()); }, configured},
        {"configure without anything",
         [](auto& s) { s.m_Linker.configure(ParameterTrie(), Handle<ScriptLoader>()); },
         configured},
        {"run", [](auto& s) { s.m_Linker.run(s.m_Raw, s.m_Linked); },
         [=](auto& st) { return expectRun(st, true); }},
        {"run of nothing", [](auto& s) { s.m_Linker.run(s.m_Empty, s.m_Linked); },
         [=](auto& st) { return expectRun(st, false); }},
        {"run into its input", [](auto& s) { s.m_Linker.run(s.m_Raw, s.m_Raw); },
         [=](auto& st) -> Conditions {
             State filled{st.m_bLoader, true};
             return expectRun(filled, true);
         }},
        {"clone", [](auto& s) { const std::unique_ptr<Cloneable> p(s.m_Linker.clone()); },
         nothing<State>},
        {"assignment of a fresh one", [](auto& s) { s.m_Linker = Linker(); },
         [](auto& st) {
             st.m_bLoader = false;
             return Conditions();
         }},
    };
    report("Linker", callPairs(vOperations, {"configure", "run"}));
}

// --- Optimizer ---------------------------------------------------------------------------------

struct OptimizerSubject {
    struct State {};
    OptimizerSubject() {
        LinkBench bench;
        bench.load("s", Script);
        bench.link();
        m_Linked = bench.m_Linked;
        std::istringstream stream(Script);
        ScriptLoaderVFS(newFiles()).run(stream, "s", m_Raw);
    }
    Optimizer m_Optimizer;
    Dictionnary m_Raw{"raw"};
    Dictionnary m_Empty{"empty"};
    Dictionnary m_Linked{"linked"};
    Dictionnary m_Optimized{"optimized"};
};

TEST(CallOrderTest, Optimizer) {
    using Call = Operation<OptimizerSubject>;
    using State = OptimizerSubject::State;
    const std::vector<Call> vOperations{
        {"configure", [](auto& s) { s.m_Optimizer.configure(ParameterTrie()); }, nothing<State>},
        {"run", [](auto& s) { s.m_Optimizer.run(s.m_Linked, s.m_Optimized); }, nothing<State>},
        {"run of what isn't linked", [](auto& s) { s.m_Optimizer.run(s.m_Raw, s.m_Optimized); },
         nothing<State>},
        {"run of nothing", [](auto& s) { s.m_Optimizer.run(s.m_Empty, s.m_Optimized); },
         nothing<State>},
        {"run into its input", [](auto& s) { s.m_Optimizer.run(s.m_Linked, s.m_Linked); },
         nothing<State>},
        {"sealExpressions", [](auto& s) { s.m_Optimizer.sealExpressions(s.m_Linked); },
         nothing<State>},
        {"sealExpressions of what isn't linked",
         [](auto& s) { s.m_Optimizer.sealExpressions(s.m_Raw); }, nothing<State>},
        {"sealExpressions of nothing", [](auto& s) { s.m_Optimizer.sealExpressions(s.m_Empty); },
         nothing<State>},
        {"clone", [](auto& s) { const std::unique_ptr<Cloneable> p(s.m_Optimizer.clone()); },
         nothing<State>},
        {"evaluation",
         [](auto& s) {
             DoubleVector vValue;
             for (const auto& entry : s.m_Linked) {
                 entry.second->evaluate(vValue);
             }
         },
         nothing<State>},
    };
    report("Optimizer", callPairs(vOperations, {"run", "evaluation"}));
}

// --- ScriptParser ------------------------------------------------------------------------------

struct ParserSubject {
    struct State {
        bool m_bInitialized = false;
    };
    ScriptParser m_Parser;
};

TEST(CallOrderTest, ScriptParser) {
    using Call = Operation<ParserSubject>;
    using State = ParserSubject::State;
    const auto initialize = [](ScriptParser& inout_Parser, const char* in_szText,
                               const char* in_szName, const char* in_szDirectory) {
        std::istringstream stream(in_szText);
        inout_Parser.initialize(stream, in_szName, in_szDirectory);
    };
    const auto initialized = [](State& inout_State) {
        inout_State.m_bInitialized = true;
        return Conditions();
    };
    const char* const NoStem = "OS::stripPathAndExtension( in_szScriptName, m_strScriptName )";
    const auto expectExpression = [](State& inout_State) {
        return inout_State.m_bInitialized ? Conditions() : Conditions{"m_bInitialized"};
    };
    const std::vector<Call> vOperations{
        {"initialize", [=](auto& s) { initialize(s.m_Parser, Script, "s", "."); }, initialized},
        {"initialize with a fault", [=](auto& s) { initialize(s.m_Parser, "x = (\n", "s", "."); },
         initialized},
        {"initialize without a name",
         [=](auto& s) { initialize(s.m_Parser, Script, nullptr, "."); },
         [=](auto&) { return Conditions{NoStem}; }},
        {"initialize without a directory",
         [=](auto& s) { initialize(s.m_Parser, Script, "s", nullptr); }, initialized},
        {"initialize without a stream",
         [](auto& s) {
             std::istream stream(nullptr);
             s.m_Parser.initialize(stream, "s", ".");
         },
         initialized},
        {"getExpression", [](auto& s) { s.m_Parser.getExpression(); }, expectExpression},
        {"getExpression to the end",
         [](auto& s) {
             while (!s.m_Parser.getExpression().isNull()) {
             }
         },
         expectExpression},
        {"failed", [](auto& s) { s.m_Parser.failed(); }, nothing<State>},
        {"getScriptName", [](auto& s) { EXPECT_NE(s.m_Parser.getScriptName(), nullptr); },
         nothing<State>},
        {"a copy",
         [](auto& s) {
             ScriptParser copy(s.m_Parser);
             copy.getExpression();
         },
         expectExpression},
        {"assignment of a fresh one", [](auto& s) { s.m_Parser = ScriptParser(); },
         [](auto& st) {
             st.m_bInitialized = false;
             return Conditions();
         }},
    };
    report("ScriptParser", callPairs(vOperations, {"initialize", "getExpression"}));
}

// --- Dictionnary -------------------------------------------------------------------------------

struct DictionnarySubject {
    struct State {};
    Dictionnary m_Dictionnary{"d"};
};

TEST(CallOrderTest, Dictionnary) {
    using Call = Operation<DictionnarySubject>;
    using State = DictionnarySubject::State;
    const char* const Kind = "false && \"expression shall be a Function or a Variable\"";
    const auto kind = [=](State&) { return Conditions{Kind}; };
    const auto nullName = [](State&) { return Conditions{NullName}; };
    const std::vector<Call> vOperations{
        {"add a variable",
         [](auto& s) { s.m_Dictionnary.add(Handle<Expression>(new VariableImpl), false); },
         nothing<State>},
        {"add a function",
         [](auto& s) { s.m_Dictionnary.add(Handle<Expression>(new OperatorPlus), true); },
         nothing<State>},
        {"add a constant",
         [](auto& s) {
             s.m_Dictionnary.add(Handle<Expression>(new ConstantImpl(someVector())), false);
         },
         nothing<State>},
        {"add what is neither",
         [](auto& s) { s.m_Dictionnary.add(Handle<Expression>(new InvalidExpression), false); },
         kind},
        {"add null", [](auto& s) { s.m_Dictionnary.add(Handle<Expression>(), true); }, kind},
        {"find a variable",
         [](auto& s) { s.m_Dictionnary.find(Handle<Expression>(new VariableImpl)); },
         nothing<State>},
        {"find a constant",
         [](auto& s) { s.m_Dictionnary.find(Handle<Expression>(new ConstantImpl(someVector()))); },
         kind},
        {"find null", [](auto& s) { s.m_Dictionnary.find(Handle<Expression>()); }, kind},
        {"findExpression", [](auto& s) { s.m_Dictionnary.findExpression("unamed variable"); },
         nothing<State>},
        {"findExpression null", [](auto& s) { s.m_Dictionnary.findExpression(nullptr); }, nullName},
        {"findFunction", [](auto& s) { s.m_Dictionnary.findFunction("plus"); }, nothing<State>},
        {"findFunction null", [](auto& s) { s.m_Dictionnary.findFunction(nullptr); }, nullName},
        {"findVariable", [](auto& s) { s.m_Dictionnary.findVariable("x"); }, nothing<State>},
        {"findVariable null", [](auto& s) { s.m_Dictionnary.findVariable(nullptr); }, nullName},
        {"size and iteration",
         [](auto& s) {
             EXPECT_EQ(std::distance(s.m_Dictionnary.begin(), s.m_Dictionnary.end()),
                       static_cast<std::ptrdiff_t>(s.m_Dictionnary.size()));
         },
         nothing<State>},
        {"getName", [](auto& s) { EXPECT_NE(s.m_Dictionnary.getName(), nullptr); }, nothing<State>},
        {"clear", [](auto& s) { s.m_Dictionnary.clear(); }, nothing<State>},
        {"clone", [](auto& s) { const std::unique_ptr<Cloneable> p(s.m_Dictionnary.clone()); },
         nothing<State>},
        {"a copy", [](auto& s) { const Dictionnary copy(s.m_Dictionnary); }, nothing<State>},
        {"a deep copy without a name",
         [](auto& s) { const Dictionnary copy(s.m_Dictionnary, nullptr, false); }, nothing<State>},
        {"assignment of itself",
         [](auto& s) {
             const Dictionnary& self = s.m_Dictionnary;
             s.m_Dictionnary = self;
         },
         nothing<State>},
        {"assignment of one without a name",
         [](auto& s) { s.m_Dictionnary = Dictionnary(nullptr); }, nothing<State>},
        {"write",
         [](auto& s) {
             std::ostringstream stream;
             s.m_Dictionnary.write(stream);
         },
         nothing<State>},
        {"dump", [](auto& s) { EXPECT_TRUE(s.m_Dictionnary.dump("/dev/null")); }, nothing<State>},
        {"dump null", [](auto& s) { EXPECT_TRUE(s.m_Dictionnary.dump(nullptr)); },
         [](State&) { return Conditions{"0 != in_szFileName"}; }},
    };
    report("Dictionnary", callPairs(vOperations, {"add a variable", "add a function"}));
}

} // namespace

} // namespace Velmora::Testing
