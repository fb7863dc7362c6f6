// A host may call the operations of a class in any order, and with null where a pointer or a handle
// goes in: an assertion says what is wrong, and nothing else happens.

#include <memory>
#include <sstream>

#include <velmora/ParameterTrie.h>
#include <velmora/math/xpr/ConstantImpl.h>
#include <velmora/math/xpr/Dictionnary.h>
#include <velmora/math/xpr/Evaluator.h>
#include <velmora/math/xpr/FeatureComputerWithInputs.h>
#include <velmora/math/xpr/InvalidExpression.h>
#include <velmora/math/xpr/Linker.h>
#include <velmora/math/xpr/OperatorPlus.h>
#include <velmora/math/xpr/Optimizer.h>
#include <velmora/math/xpr/Registry.h>
#include <velmora/math/xpr/ScriptLoaderStdIO.h>
#include <velmora/math/xpr/ScriptLoaderVFS.h>
#include <velmora/math/xpr/ScriptParser.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "robustness/CallPairs.h"
#include "robustness/EveryCase.h"
#include "robustness/ScriptFiles.h"
#include "support/LinkBench.h"

namespace Velmora::Testing {

namespace {

using Math::DoubleVector;
using namespace Math::Xpr;

const char* const Script = "inputvar x\ny = sum(x) + 1\nf(a) = a + x\nz = f(x)\n";

TSHandle<VirtualFileSystem> newFiles() {
    static const std::map<std::string, std::string> s_mapTexts{{"./s.xpr", Script}};
    return TSHandle<VirtualFileSystem>(new ScriptFiles(s_mapTexts));
}

const DoubleVector& someVector() {
    static const DoubleVector s_vVector{1.0, 2.0};
    return s_vVector;
}

void report(const char* in_szClass, std::size_t in_uiPairs) {
    EXPECT_GT(in_uiPairs, std::size_t(0));
    if (isEveryCaseAsked()) {
        std::printf("%s: %zu pairs\n", in_szClass, in_uiPairs);
    }
}

// --- Evaluator ---------------------------------------------------------------------------------

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

const char* const LinkedAlready =
    "!m_bLinked && \"evaluator contains linked expressions.  Can't \" "
    "\"add expression to evaluator when the evaluator \" "
    "\"when the eveluator contains linked expressions.\"";

std::string notConfigured(const std::string& in_strOperation) {
    return "!m_pDictionnary.isNull() && \"please call configure prior to " + in_strOperation +
           "()\"";
}

std::string notLinked(const std::string& in_strOperation) {
    return "m_bLinked && \"please call link() prio to call " + in_strOperation + "()\"";
}

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

const char* const NullName = "0 != in_szName";

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

// --- FeatureComputer ---------------------------------------------------------------------------

struct ComputerSubject {
    struct State {
        bool m_bShared = false;
        bool m_bEvaluator = false;
        bool m_bScript = false;
        bool m_bLinked = false;
        bool m_bInput = false;
        bool m_bSetUp = false;

        /// The evaluator of its own is configured, the shared one isn't.
        std::string notReady(const std::string& in_strOperation) const {
            return m_bShared ? notConfigured(in_strOperation) : notLinked(in_strOperation);
        }
    };
    Evaluator m_Evaluator;
    FeatureComputerWithInputs m_Computer{"y"};
};

/// What an evaluator says that isn't configured.
Conditions expectSetUp(ComputerSubject::State& inout_State) {
    inout_State.m_bSetUp = true;
    return inout_State.m_bInput
               ? Conditions{notConfigured("addExpression"), notConfigured("addScript")}
               : Conditions{notConfigured("addScript")};
}

Conditions expectScript(ComputerSubject::State& inout_State, bool in_bName) {
    if (!inout_State.m_bShared && inout_State.m_bEvaluator) {
        return {"m_bSharedEvaluator || (!m_bSharedEvaluator && m_pEvaluator.isNull())"};
    }
    if (!in_bName) {
        return {"in_szFileName"};
    }
    inout_State.m_bScript = true;
    if (inout_State.m_bShared && inout_State.m_bEvaluator) {
        return expectSetUp(inout_State);
    }
    if (!inout_State.m_bShared) {
        inout_State.m_bEvaluator = inout_State.m_bLinked = inout_State.m_bSetUp = true;
    }
    return Conditions();
}

Conditions expectInput(ComputerSubject::State& inout_State, bool in_bName) {
    if (!inout_State.m_bEvaluator) {
        return {"!m_pEvaluator.isNull()"};
    }
    if (!inout_State.m_bLinked) {
        return {inout_State.notReady("getVariable")};
    }
    return in_bName ? Conditions() : Conditions{NullName};
}

TEST(CallOrderTest, FeatureComputer) {
    using Call = Operation<ComputerSubject>;
    using State = ComputerSubject::State;
    const std::vector<Call> vOperations{
        {"setXprFilename", [](auto& s) { s.m_Computer.setXprFilename("s", newFiles()); },
         [](auto& st) { return expectScript(st, true); }},
        {"setXprFilename without files",
         [](auto& s) { s.m_Computer.setXprFilename("s", TSHandle<VirtualFileSystem>()); },
         [](auto& st) {
             // Nothing is found, so that there is nothing to link.
             const bool bWasLinked = st.m_bLinked;
             const Conditions vConditions = expectScript(st, true);
             st.m_bLinked = bWasLinked;
             return vConditions;
         }},
        {"setXprFilename null", [](auto& s) { s.m_Computer.setXprFilename(nullptr, newFiles()); },
         [](auto& st) { return expectScript(st, false); }},
        {"setEvaluator", [](auto& s) { s.m_Computer.setEvaluator(&s.m_Evaluator); },
         [](auto& st) -> Conditions {
             if (st.m_bEvaluator) {
                 return {"m_pEvaluator.isNull()"};
             }
             st.m_bShared = st.m_bEvaluator = true;
             // The script that waited is added to an evaluator that isn't configured.
             return st.m_bScript ? expectSetUp(st) : Conditions();
         }},
        {"setEvaluator null",
         [](auto& s) { s.m_Computer.setEvaluator(LimitedObjPtr<Evaluator>()); },
         [](auto& st) -> Conditions {
             if (st.m_bEvaluator) {
                 return {"m_pEvaluator.isNull()"};
             }
             st.m_bShared = true;
             return Conditions();
         }},
        {"setInputNames", [](auto& s) { s.m_Computer.setInputNames({"left"}); },
         [](auto& st) {
             st.m_bInput = st.m_bInput || !st.m_bSetUp;
             return Conditions();
         }},
        {"setInputNames without any", [](auto& s) { s.m_Computer.setInputNames({}); },
         [](auto& st) {
             st.m_bInput = st.m_bInput && st.m_bSetUp;
             return Conditions();
         }},
        {"setInput", [](auto& s) { s.m_Computer.setInput("left", someVector()); },
         [](auto& st) { return expectInput(st, true); }},
        {"setInput null", [](auto& s) { s.m_Computer.setInput(nullptr, someVector()); },
         [](auto& st) { return expectInput(st, false); }},
        {"computeFeatures",
         [](auto& s) {
             DoubleVector vFeature;
             s.m_Computer.computeFeatures(vFeature);
         },
         [](auto& st) -> Conditions {
             // Without a script there is no name to look for; with one, the evaluator speaks first.
             if (st.m_bScript && st.m_bEvaluator && !st.m_bLinked) {
                 return {st.notReady("getExpression"), "false"};
             }
             return st.m_bLinked || !st.m_bScript ? Conditions() : Conditions{"false"};
         }},
        {"reset", [](auto& s) { s.m_Computer.reset(); }, nothing<State>},
        {"a computer without a name", [](auto&) { const FeatureComputer computer(nullptr); },
         [](auto&) { return Conditions{"in_szFeatureName"}; }},
    };
    std::size_t uiPairs = callPairs(vOperations, {"setXprFilename", "computeFeatures"});
    uiPairs += callPairs(vOperations, {"setInputNames", "setEvaluator", "setXprFilename"});
    report("FeatureComputer", uiPairs);
}

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

// --- Registry ----------------------------------------------------------------------------------

struct OwnRegistry : public Registry {};

struct RegistrySubject {
    struct State {
        bool m_bFunction = false;
        bool m_bVariable = false;
    };
    OwnRegistry m_Registry;
};

TEST(CallOrderTest, Registry) {
    using Call = Operation<RegistrySubject>;
    using State = RegistrySubject::State;
    using FunctionAllocator = Registry::ExpressionAllocatorT<OperatorPlus>;
    using VariableAllocator = Registry::ExpressionAllocatorT<VariableImpl>;
    const char* const NoFunction =
        "!pFunction.isNull()&& \"the registered class is not a function \" \"expression.\"";
    const char* const NoVariable =
        "!pVariable.isNull()&& \"the registered class is not a variable \" \"expression.\"";
    const auto always = [](const char* in_szCondition) {
        return [=](State&) { return Conditions{in_szCondition}; };
    };
    const char* const NullDescription = "0 != in_szName && 0 != in_szDescription";
    const std::vector<Call> vOperations{
        {"registerFunction",
         [](auto& s) { s.m_Registry.registerFunction("f", new FunctionAllocator); },
         [](auto& st) {
             st.m_bFunction = true;
             return Conditions();
         }},
        {"registerFunction of a variable",
         [](auto& s) { s.m_Registry.registerFunction("f", new VariableAllocator); },
         always(NoFunction)},
        {"registerFunction null", [](auto& s) { s.m_Registry.registerFunction("f", nullptr); },
         always(NoFunction)},
        {"registerFunction without a name",
         [](auto& s) { s.m_Registry.registerFunction(nullptr, new FunctionAllocator); },
         always(NullName)},
        {"registerFunction without anything",
         [](auto& s) { s.m_Registry.registerFunction(nullptr, nullptr); }, always(NoFunction)},
        {"registerVariable",
         [](auto& s) { s.m_Registry.registerVariable("v", new VariableAllocator); },
         [](auto& st) {
             st.m_bVariable = true;
             return Conditions();
         }},
        {"registerVariable of a function",
         [](auto& s) { s.m_Registry.registerVariable("v", new FunctionAllocator); },
         always(NoVariable)},
        {"registerVariable null", [](auto& s) { s.m_Registry.registerVariable("v", nullptr); },
         always(NoVariable)},
        {"registerVariable without a name",
         [](auto& s) { s.m_Registry.registerVariable(nullptr, new VariableAllocator); },
         always(NullName)},
        {"newExpression",
         [](auto& s) { const Handle<Expression> p(s.m_Registry.newExpression("f")); },
         nothing<State>},
        {"newExpression null",
         [](auto& s) { EXPECT_EQ(s.m_Registry.newExpression(nullptr), nullptr); },
         always(NullName)},
        {"newFunction", [](auto& s) { const Handle<Function> p(s.m_Registry.newFunction("f")); },
         nothing<State>},
        {"newFunction of a variable",
         [](auto& s) { EXPECT_EQ(s.m_Registry.newFunction("v"), nullptr); },
         [](auto& st) {
             return st.m_bVariable
                        ? Conditions{"pFunction && \"requested expression is not a function\""}
                        : Conditions();
         }},
        {"newFunction null", [](auto& s) { EXPECT_EQ(s.m_Registry.newFunction(nullptr), nullptr); },
         always(NullName)},
        {"newVariable", [](auto& s) { const Handle<Variable> p(s.m_Registry.newVariable("v")); },
         nothing<State>},
        {"newVariable of a function",
         [](auto& s) { EXPECT_EQ(s.m_Registry.newVariable("f"), nullptr); },
         [](auto& st) {
             return st.m_bFunction
                        ? Conditions{"pVariable && \"requested expression is not a variable\""}
                        : Conditions();
         }},
        {"newVariable null", [](auto& s) { EXPECT_EQ(s.m_Registry.newVariable(nullptr), nullptr); },
         always(NullName)},
        {"getNames",
         [](auto& s) {
             std::vector<std::string> vNames;
             s.m_Registry.getNames(vNames);
         },
         nothing<State>},
        {"describe", [](auto& s) { s.m_Registry.describe("f", "a function"); }, nothing<State>},
        {"describe null", [](auto& s) { s.m_Registry.describe(nullptr, "a function"); },
         always(NullDescription)},
        {"describe by null", [](auto& s) { s.m_Registry.describe("f", nullptr); },
         always(NullDescription)},
        {"getDescription", [](auto& s) { EXPECT_NE(s.m_Registry.getDescription("f"), nullptr); },
         nothing<State>},
        {"getDescription null",
         [](auto& s) { EXPECT_STREQ(s.m_Registry.getDescription(nullptr), ""); }, nothing<State>},
        {"write",
         [](auto& s) {
             std::ostringstream stream;
             s.m_Registry.write(stream);
         },
         nothing<State>},
    };
    report("Registry", callPairs(vOperations, {"registerFunction", "registerVariable"}));
}

// --- Loaders -----------------------------------------------------------------------------------

struct FileLoader : public ScriptLoaderStdIO {};

struct TextLoader : public ScriptLoaderVFS {
    TextLoader() : ScriptLoaderVFS(newFiles()) {}
};

struct LoaderWithoutFiles : public ScriptLoaderVFS {
    LoaderWithoutFiles() : ScriptLoaderVFS(TSHandle<VirtualFileSystem>()) {}
};

template <class Loader>
struct LoaderSubject {
    struct State {};
    Loader m_Loader;
    Dictionnary m_Dictionnary{"d"};
};

template <class Loader>
class LoaderCallOrderTest : public testing::Test {};

using Loaders = testing::Types<FileLoader, TextLoader, LoaderWithoutFiles>;
TYPED_TEST_SUITE(LoaderCallOrderTest, Loaders);

TYPED_TEST(LoaderCallOrderTest, ScriptLoader) {
    using Subject = LoaderSubject<TypeParam>;
    using State = typename Subject::State;
    const auto load = [](Subject& inout_Subject, const char* in_szName) {
        std::istringstream stream(Script);
        ScriptLoader& loader = inout_Subject.m_Loader;
        loader.run(stream, in_szName, inout_Subject.m_Dictionnary);
    };
    const auto open = [](Subject& inout_Subject, const char* in_szName, bool in_bReport) {
        ScriptLoader& loader = inout_Subject.m_Loader;
        loader.run(in_szName, inout_Subject.m_Dictionnary, in_bReport);
    };
    const auto always = [](const char* in_szCondition) {
        return [=](State&) { return Conditions{in_szCondition}; };
    };
    const std::vector<Operation<Subject>> vOperations{
        {"configure", [](auto& s) { s.m_Loader.configure(scriptsIn(".")); }, nothing<State>},
        {"configure without directories", [](auto& s) { s.m_Loader.configure(ParameterTrie()); },
         nothing<State>},
        {"run", [=](auto& s) { open(s, "s", true); }, nothing<State>},
        {"run of an unknown name", [=](auto& s) { open(s, "unknown", false); }, nothing<State>},
        {"run without a name", [=](auto& s) { open(s, nullptr, true); },
         always("0 != in_szScriptName")},
        {"run of a stream", [=](auto& s) { load(s, "s"); }, nothing<State>},
        {"run of a stream without a name", [=](auto& s) { load(s, nullptr); },
         always("OS::stripFileName( in_szFilePath, strFileDirectory )")},
        {"run of a stream with an empty name", [=](auto& s) { load(s, ""); },
         always("OS::stripPathAndExtension( in_szScriptName, m_strScriptName )")},
        {"run of no stream",
         [](auto& s) {
             std::istream stream(nullptr);
             ScriptLoader& loader = s.m_Loader;
             loader.run(stream, "s", s.m_Dictionnary);
         },
         nothing<State>},
        {"clone", [](auto& s) { const std::unique_ptr<Cloneable> p(s.m_Loader.clone()); },
         nothing<State>},
    };
    report("a loader", callPairs(vOperations, {"configure", "run"}));
}

} // namespace

} // namespace Velmora::Testing
