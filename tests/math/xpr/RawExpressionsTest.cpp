// Linking gives the same whether what it resolves names with is copied at the start or when
// somebody asks for it.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <random>
#include <sstream>
#include <typeinfo>
#include <unordered_map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <velmora/math/xpr/ConstantImpl.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>

#include "math/xpr/RandomScript.h"
#include "support/AssertionCapture.h"
#include "support/LinkBench.h"
#include "support/LogCapture.h"

namespace Velmora::Math::Xpr {

namespace {

using Testing::LinkBench;
using Testing::MemoryFileSystem;

/// For a loader that isn't the library's, everything is copied at the start.
class HostLoader : public ScriptLoader {
public:
    explicit HostLoader(const TSHandle<VirtualFileSystem>& in_pFiles) : m_Loader(in_pFiles) {}

    Cloneable* clone() const override { return new HostLoader(*this); }
    bool configure(const ROConfiguration& in_Configuration) override {
        ScriptLoader& loader = m_Loader;
        return loader.configure(in_Configuration);
    }
    bool run(std::istream& inout_Stream, const char* in_szScriptName,
             Dictionnary& inout_Dictionnary) override {
        return m_Loader.run(inout_Stream, in_szScriptName, inout_Dictionnary);
    }
    bool run(const char* in_szScriptName, Dictionnary& inout_Dictionnary,
             bool in_bReportOpenFailure) override {
        return m_Loader.run(in_szScriptName, inout_Dictionnary, in_bReportOpenFailure);
    }

private:
    ScriptLoaderVFS m_Loader;
};

/// What a graph is, but for the identifiers: each node by the number in which it is first reached,
/// with its class, name, position, parameters, children and parents.
class GraphText {
public:
    void add(const Dictionnary& in_Dictionnary) {
        for (const auto& entry : in_Dictionnary) {
            m_Text << entry.first << ": " << numberOf(*entry.second->asNode()) << '\n';
        }
        for (std::size_t ui = 0; ui != m_vNodes.size(); ++ui) {
            number(*m_vNodes[ui]);
        }
        for (const ExpressionBaseImpl* pNode : m_vNodes) {
            add(*pNode);
        }
    }
    std::string get() const { return m_Text.str(); }

private:
    void number(const ExpressionBaseImpl& in_Node) {
        for (const auto* pChild = in_Node.getChildBegin(); pChild != in_Node.getChildEnd();
             ++pChild) {
            numberOf(**pChild);
        }
    }

    std::size_t numberOf(const ExpressionBaseImpl& in_Node) {
        const auto [iteNumber, bNew] = m_mapNumbers.emplace(&in_Node, m_vNodes.size());
        if (bNew) {
            m_vNodes.push_back(&in_Node);
        }
        return iteNumber->second;
    }

    void add(const ExpressionBaseImpl& in_Node) {
        m_Text << m_mapNumbers.at(&in_Node) << ' ' << typeid(in_Node).name();
        // An identifier stands in the names of domain values and behind those of arguments; the
        // arguments of some operators have no other name than a number made at random.
        if (const std::string strName(in_Node.isDomainValue() ? "" : in_Node.getName());
            std::count(strName.begin(), strName.end(), '-') != 4) {
            m_Text << ' ' << strName.substr(0, strName.find('&'));
        }
        m_Text << ' ' << in_Node.getSourceInfo();
        if (const auto* pFunction = dynamic_cast<const FunctionBaseImpl*>(&in_Node)) {
            for (auto ite = pFunction->getParameterBegin(); ite != pFunction->getParameterEnd();
                 ++ite) {
                m_Text << " <" << ite->first << '=' << ite->second->getValue() << '>';
            }
        }
        m_Text << " [";
        for (const auto* pChild = in_Node.getChildBegin(); pChild != in_Node.getChildEnd();
             ++pChild) {
            m_Text << m_mapNumbers.at(&**pChild) << ' ';
        }
        m_Text << "] (";
        for (const auto* pParent = in_Node.getParentBegin(); pParent != in_Node.getParentEnd();
             ++pParent) {
            const auto iteParent = m_mapNumbers.find(&**pParent);
            m_Text << (iteParent == m_mapNumbers.end() ? "other"
                                                       : std::to_string(iteParent->second))
                   << ' ';
        }
        m_Text << ")\n";
    }

    std::unordered_map<const ExpressionBaseImpl*, std::size_t> m_mapNumbers;
    std::vector<const ExpressionBaseImpl*> m_vNodes;
    std::ostringstream m_Text;
};

/// Links a script twice, with what it resolves names with copied at the start and when it is asked
/// for, and compares all that can be seen.
class RawExpressionsTest : public ::testing::Test {
protected:
    using Prepare = std::function<void(Dictionnary& inout_Raw)>;

    struct Outcome {
        bool m_bLoaded = false;
        bool m_bLinked = false;
        std::vector<std::string> m_vErrors;
        std::vector<std::string> m_vAssertions;
        std::string m_strGraph;
        /// Of each entry, or that it has none.
        std::string m_strValues;
    };

    static Outcome link(bool in_bAtStart, const std::string& in_strScript,
                        MemoryFileSystem::Files in_mapFiles, const Prepare& in_Prepare) {
        // Dictionaries remember the level at which they are made.
        LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
        LinkBench bench;
        in_mapFiles.emplace("scripts/s.xpr", in_strScript);
        for (const auto& file : in_mapFiles) {
            bench.files().setFile(file.first, file.second);
        }
        if (in_bAtStart) {
            const TSHandle<VirtualFileSystem> pFiles(new MemoryFileSystem(in_mapFiles));
            const Handle<ScriptLoader> pLoader(new HostLoader(pFiles));
            const ParameterTrie configuration = Testing::scriptsIn("scripts");
            pLoader->configure(configuration);
            bench.m_Linker.configure(configuration, pLoader);
        }
        Outcome outcome;
        outcome.m_bLoaded = bench.load("s", in_strScript);
        in_Prepare(bench.m_Raw);
        const AssertionCapture assertions;
        log.clear();
        outcome.m_bLinked = bench.link();
        outcome.m_vErrors = log.messages(log4cplus::ERROR_LOG_LEVEL);
        outcome.m_vAssertions = assertions.expressions();
        GraphText text;
        text.add(bench.m_Linked);
        text.add(bench.m_Raw);
        outcome.m_strGraph = text.get();
        std::ostringstream values;
        for (const auto& entry : bench.m_Linked) {
            DoubleVector vValue;
            values << entry.first << ": ";
            if (entry.second->evaluate(vValue)) {
                values << vValue;
            }
            values << '\n';
        }
        outcome.m_strValues = values.str();
        return outcome;
    }

    /// The outcome, which is the same in both cases.
    static Outcome compare(
        const std::string& in_strScript, const MemoryFileSystem::Files& in_mapFiles = {},
        const Prepare& in_Prepare = [](Dictionnary&) {}) {
        const Outcome late = link(false, in_strScript, in_mapFiles, in_Prepare);
        const Outcome atStart = link(true, in_strScript, in_mapFiles, in_Prepare);
        EXPECT_EQ(late.m_bLinked, atStart.m_bLinked) << in_strScript;
        EXPECT_EQ(late.m_vErrors, atStart.m_vErrors) << in_strScript;
        EXPECT_EQ(late.m_vAssertions, atStart.m_vAssertions) << in_strScript;
        EXPECT_EQ(late.m_strGraph, atStart.m_strGraph) << in_strScript;
        EXPECT_EQ(late.m_strValues, atStart.m_strValues) << in_strScript;
        return late;
    }

    static void compareBothOrders(std::vector<std::string> in_vLines,
                                  const MemoryFileSystem::Files& in_mapFiles = {}) {
        compare(RandomScript::join(in_vLines), in_mapFiles);
        std::reverse(in_vLines.begin(), in_vLines.end());
        compare(RandomScript::join(in_vLines), in_mapFiles);
    }
};

/// How many nodes linking a script makes, where nothing is logged.
unsigned long countMadeNodes(
    const std::string& in_strScript, bool in_bLinks = true,
    const std::function<void(Dictionnary&)>& in_Prepare = [](Dictionnary&) {},
    const char* in_szLogged = nullptr) {
    const LogCapture quiet(std::string(), log4cplus::ERROR_LOG_LEVEL);
    LinkBench bench;
    EXPECT_TRUE(bench.load("s", in_strScript));
    in_Prepare(bench.m_Raw);
    std::unique_ptr<LogCapture> pLog;
    if (in_szLogged != nullptr) {
        pLog = std::make_unique<LogCapture>(in_szLogged);
    }
    const unsigned long ulBefore = ConstantImpl(DoubleVector{}).getId();
    EXPECT_EQ(bench.link(), in_bLinks);
    return ConstantImpl(DoubleVector{}).getId() - ulBefore - 1;
}

TEST_F(RawExpressionsTest, NothingIsCopiedThatNobodyAsksFor) {
    EXPECT_EQ(countMadeNodes("a = 1\nb = a + a\nc = b * a\n"), 0u);
    // The variable, and the constant.
    EXPECT_EQ(countMadeNodes("c = a\na = 1\nb = a + a\n"), 2u);
}

TEST_F(RawExpressionsTest, WhereCopyingIsLoggedEverythingIsCopiedAtTheStart) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = 1\nb = a\n"));
    const LogCapture log("quillmark.math.xpr.ExpressionImpl");
    ASSERT_TRUE(bench.link());
    EXPECT_EQ(log.count(log4cplus::DEBUG_LOG_LEVEL, "copy variable: [s.a]"), 1u);
    EXPECT_EQ(log.count(log4cplus::DEBUG_LOG_LEVEL, "copy variable: [s.b]"), 1u);
}

TEST_F(RawExpressionsTest, EachLoggerThatTellsOfCopiesHasThemMadeAtTheStart) {
    const char* const Script = "a = 1\nb = a + a\n";
    EXPECT_EQ(countMadeNodes(Script), 0u);
    for (const char* szLogger :
         {"quillmark.ExpressionImplCopier", "quillmark.xpr.ExpressionImpl",
          "quillmark.math.xpr.ExpressionImpl", "quillmark.math.xpr.DomainValueImpl",
          "quillmark.math.xpr.Dictionnary",
          "quillmark.math.xpr.Dictionnary.resolver.raw_expressions"}) {
        EXPECT_GT(countMadeNodes(
                      Script, true, [](Dictionnary&) {}, szLogger),
                  0u)
            << szLogger;
    }
}

/// Sets a variable of the dictionary that it is to fill.
class SettingLoader : public ScriptLoaderVFS {
public:
    using ScriptLoaderVFS::run;
    using ScriptLoaderVFS::ScriptLoaderVFS;

    bool run(const char*, Dictionnary& inout_Dictionnary, bool) override {
        return inout_Dictionnary.findVariable("s.a")->setValue(m_vValue);
    }

    DoubleVector m_vValue{5.0};
};

TEST_F(RawExpressionsTest, ALoaderOfTheHostsNeverGetsTheOriginals) {
    const LogCapture quiet(std::string(), log4cplus::ERROR_LOG_LEVEL);
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = 1\nb = t.c\n"));
    const Handle<ScriptLoader> pLoader(
        new SettingLoader(TSHandle<VirtualFileSystem>(new MemoryFileSystem({}))));
    ASSERT_TRUE(bench.m_Linker.configure(Testing::scriptsIn("scripts"), pLoader));
    EXPECT_FALSE(bench.link());
    EXPECT_EQ(bench.value("s.a"), "[1]");
}

/// `x` is sought in the script first, where it fails with a report, and then in its own, where
/// `x.x` is sought alone. So each further try of either can be told from the lines.
const char* const FailingX = "x = nope\n";
const MemoryFileSystem::Files ScriptX{{"scripts/x.xpr", "x = 1\ny = 2\n"}};

TEST_F(RawExpressionsTest, AVariableThatFailedIsAskedForAsItWas) {
    const Outcome outcome = compare(FailingX + std::string("a = x + 2 * 3 + no\nb = a\n"), ScriptX);
    EXPECT_TRUE(outcome.m_bLoaded);
    EXPECT_FALSE(outcome.m_bLinked);
    EXPECT_EQ(std::count_if(outcome.m_vErrors.begin(), outcome.m_vErrors.end(),
                            [](const std::string& in_strError) {
                                return in_strError.find("s.nope") != std::string::npos;
                            }),
              3);
}

TEST_F(RawExpressionsTest, NamesOfOneVariableAreAgainEachWhatItWas) {
    compare(FailingX + std::string("a = x.x + sum(x) + no\nb = a\n"), ScriptX);
    compare(FailingX + std::string("a = x + f(x.x * max(x, x.x), 2) + 2 + no\nb = a\n"
                                   "f(p, q) = p + x + q\nc = f(x, sum(x.x + 1) + no)\nd = c\n"),
            ScriptX);
}

TEST_F(RawExpressionsTest, AVariableThatFailedIsCopiedWithoutWhatItLinksTo) {
    constexpr int Count = 100;
    std::string strScript = "v0 = 1\n";
    for (int i = 1; i != Count; ++i) {
        const std::string strBefore = "v" + std::to_string(i - 1);
        strScript += "v" + std::to_string(i) + " = " + strBefore + "\nw" + std::to_string(i) +
                     " = " + strBefore + " + no\n";
    }
    // Five nodes and an argument's initial value or two for each that fails.
    EXPECT_LT(countMadeNodes(strScript, false), Count * 10u);
}

TEST_F(RawExpressionsTest, TheScriptOfTheNamesIsNotLoadedAgain) {
    const Outcome outcome = compare("a = sum(2)\nb = = 3\n");
    EXPECT_FALSE(outcome.m_bLoaded);
    EXPECT_TRUE(outcome.m_bLinked);
    EXPECT_TRUE(outcome.m_vErrors.empty());
}

TEST_F(RawExpressionsTest, AVariableIsAskedForInTheMiddleOfItsOwnResolving) {
    const MemoryFileSystem::Files mapFiles{{"scripts/a.xpr", "a = 7\n"},
                                           {"scripts/t.xpr", "b = s.a\nc = 1\n"}};
    compare("x = 1\na = x + f(x + sum(x)) + b\nb = x + a\nf(p) = p * a + x\n", mapFiles);
    compare("x = 1\na = x + f(x + sum(x)) + b + nope\nb = x + a\nf(p) = p * a + x\n", mapFiles);
}

TEST_F(RawExpressionsTest, AScriptThatLoadedInPartIsFoundTheSecondTime) {
    const MemoryFileSystem::Files mapFiles{{"scripts/t.xpr", "b = 1\nc = 2\nd = = 3\n"}};
    compare("a = x + t.c + x\nx = 1\ny = a\nz = y + a\n", mapFiles);
}

TEST_F(RawExpressionsTest, EntriesThatShareNodesAreCopiedTogether) {
    const std::string strScript =
        FailingX + std::string("a = x + no + x\nb = 2\nc = b + a\nd = 3\ne = d + a\n");
    const auto shareNodes = [](Dictionnary& inout_Raw) {
        const Handle<VariableImpl> pA(inout_Raw.findExpression("s.a"));
        inout_Raw.findVariable("s.b")->setValue(Handle<Expression>(pA->getValue()));
        inout_Raw.findVariable("s.d")->setValue(Handle<Expression>(pA->getValue()->getChildAt(0)));
    };
    compare(strScript, ScriptX, shareNodes);
    const auto linkByHand = [](Dictionnary& inout_Raw) {
        inout_Raw.findVariable("s.b")->setValue(inout_Raw.findExpression("s.e"));
        inout_Raw.findVariable("s.d")->setValue(inout_Raw.findExpression("s.x"));
    };
    compare(strScript, ScriptX, linkByHand);
    const auto putAFunctionBelow = [](Dictionnary& inout_Raw) {
        inout_Raw.findVariable("s.d")->setValue(
            Handle<Expression>(Registry::getInstance().newExpression("sum")));
    };
    compare(strScript, ScriptX, putAFunctionBelow);
}

// The copy of an input begins at zero, and which nodes it gives its value to depends on the order
// in which they are copied.
TEST_F(RawExpressionsTest, ValuesOfInputsThatAHostPutsElsewhereAreCopiedInTheOrderOfTheEntries) {
    const DoubleVector vFive{5.0};
    const auto valueOf = [](const Handle<VariableImpl>& in_pInput) {
        return Handle<Expression>(in_pInput->getValue());
    };
    const auto setInput = [&](Dictionnary& inout_Raw) {
        const Handle<VariableImpl> pLeft(inout_Raw.findExpression("s.left"));
        Variable& interface = *pLeft;
        interface.setValue(vFive);
        return pLeft;
    };
    compare("b = a * 2\na = 1 + 1\ninputvar left\n", {}, [&](Dictionnary& inout_Raw) {
        const auto pLeft = setInput(inout_Raw);
        inout_Raw.findVariable("s.a")->setValue(valueOf(pLeft));
    });
    compare("b = a * 2\na = x + 1\ninputvar left\ninputvar x\n", {}, [&](Dictionnary& inout_Raw) {
        const auto pLeft = setInput(inout_Raw);
        const Handle<VariableImpl> pA(inout_Raw.findExpression("s.a"));
        const Handle<Function> pSum(pA->getValue());
        pSum->getArgument("Left")->setValue(valueOf(pLeft));
    });
    const auto newInput = [&] {
        const Handle<VariableImpl> pInput(new DomainVariableImpl);
        Variable& interface = *pInput;
        interface.setValue(vFive);
        return pInput;
    };
    compare("c = b * 2\na = 1 + 1\nb = 2 + 2\n", {}, [&](Dictionnary& inout_Raw) {
        const auto pInput = newInput();
        inout_Raw.findVariable("s.a")->setValue(Handle<Expression>(pInput));
        inout_Raw.findVariable("s.b")->setValue(valueOf(pInput));
    });
    compare("c = a * 2\na = 1 + 1\nf(p) = p + 1\n", {}, [&](Dictionnary& inout_Raw) {
        const auto pInput = newInput();
        const Handle<ScriptFunctionImpl> pFunction(inout_Raw.findExpression("s.f"));
        const Handle<Function> pBody(pFunction->getImplementation());
        pBody->getArgument("Right")->setValue(Handle<Expression>(pInput));
        inout_Raw.findVariable("s.a")->setValue(valueOf(pInput));
    });
}

/// A class of a host's.
class HostConstant : public ConstantImpl {
public:
    using ConstantImpl::ConstantImpl;
};

const char* const InOrder = "a = 1\nb = a + a\nc = b * a\n";

TEST_F(RawExpressionsTest, EntriesThatAHostHasChangedAreCopiedAtTheStart) {
    std::vector<Handle<VariableImpl>> vAbove;
    const auto putAParentAbove = [&](Dictionnary& inout_Raw) {
        vAbove.emplace_back(new VariableImpl);
        Variable& interface = *vAbove.back();
        interface.setValue(inout_Raw.findExpression("s.b"));
    };
    EXPECT_GT(countMadeNodes(InOrder, true, putAParentAbove), 0u);
    const auto addAVariable = [](Dictionnary& inout_Raw) {
        const Handle<VariableImpl> pOwn(new VariableImpl);
        pOwn->setName("s.own");
        Variable& interface = *pOwn;
        interface.setValue(Handle<Expression>(new ConstantImpl(DoubleVector{2.0})));
        inout_Raw.add(Handle<Expression>(pOwn), false);
    };
    EXPECT_GT(countMadeNodes(InOrder, true, addAVariable), 0u);
    const auto rename = [](Dictionnary& inout_Raw) {
        Handle<VariableImpl>(inout_Raw.findExpression("s.c"))->setName("s.other");
    };
    EXPECT_GT(countMadeNodes(InOrder, true, rename), 0u);
    const auto putAHostsNodeBelow = [](Dictionnary& inout_Raw) {
        inout_Raw.findVariable("s.a")->setValue(
            Handle<Expression>(new HostConstant(DoubleVector{2.0})));
    };
    EXPECT_GT(countMadeNodes(InOrder, true, putAHostsNodeBelow), 0u);
}

TEST_F(RawExpressionsTest, ASecondRunAfterAFailureGivesTheSame) {
    const auto linkOnce = [](Dictionnary& inout_Raw) {
        Linker linker;
        linker.configure(Testing::scriptsIn("scripts"),
                         Handle<ScriptLoader>(new ScriptLoaderVFS(
                             TSHandle<VirtualFileSystem>(new MemoryFileSystem({})))));
        Dictionnary linked("linked");
        EXPECT_FALSE(linker.run(inout_Raw, linked));
    };
    compare("c = a\na = 1\nb = a + t.c\ne = b\n", {{"scripts/t.xpr", "c = 4\n"}}, linkOnce);
}

TEST_F(RawExpressionsTest, EveryScriptOfTheTestsAndExamplesLinksTheSame) {
    namespace fs = std::filesystem;
    std::size_t uiScripts = 0;
    for (const char* szDirectory : {"/tests/scripts", "/examples/scripts"}) {
        const fs::path root(std::string(VELMORA_SOURCE_DIR) + szDirectory);
        for (const auto& file : fs::recursive_directory_iterator(root)) {
            if (file.path().extension() != ".xpr") {
                continue;
            }
            std::ifstream stream(file.path());
            std::stringstream text;
            text << stream.rdbuf();
            MemoryFileSystem::Files mapFiles;
            for (const auto& sibling : fs::directory_iterator(file.path().parent_path())) {
                std::ifstream other(sibling.path());
                std::stringstream otherText;
                otherText << other.rdbuf();
                mapFiles.emplace("scripts/" + sibling.path().filename().string(), otherText.str());
            }
            SCOPED_TRACE(file.path().string());
            compare(text.str(), mapFiles);
            ++uiScripts;
        }
    }
    EXPECT_GT(uiScripts, 100u);
}

TEST_F(RawExpressionsTest, RandomScriptsLinkTheSameInBothOrders) {
    for (std::uint64_t uiSeed = 0; uiSeed != 30; ++uiSeed) {
        std::vector<std::string> vLines = RandomScript(uiSeed).getLines();
        compareBothOrders(vLines);
        vLines.erase(vLines.begin() + static_cast<std::ptrdiff_t>(uiSeed % vLines.size()));
        compareBothOrders(vLines);
    }
}

/// Definitions that use each other without order: names that don't exist or are built in, calls of
/// too many arguments, circles.
std::vector<std::string> tangle(std::mt19937& inout_Random) {
    const auto pick = [&](std::size_t in_uiCount) { return inout_Random() % in_uiCount; };
    const auto name = [&] { return "v" + std::to_string(pick(9)); };
    const auto operand = [&] {
        const std::string strFirst = name();
        const std::string strSecond = name();
        const std::string choices[] = {strFirst,
                                       strFirst,
                                       strFirst,
                                       "0.5",
                                       "sum(" + strFirst + ")",
                                       "f(" + strFirst + ", " + strSecond + " * 0.5)",
                                       "g(" + strFirst + " + g(" + strSecond + "))",
                                       "max(" + strFirst + ", " + strSecond + ")",
                                       "t." + strFirst,
                                       "slidingWindow<3>(" + strFirst + ")"};
        return choices[pick(std::size(choices))];
    };
    std::vector<std::string> vLines{"inputvar v0\n", "f(a, b) = a + b * " + operand() + "\n",
                                    "g(a) = " + operand() + " - a\n"};
    for (int i = 1; i != 8; ++i) {
        std::string strLine = "v" + std::to_string(i) + " = " + operand();
        for (std::size_t ui = pick(3); ui != 0; --ui) {
            strLine += " + " + operand();
        }
        vLines.push_back(strLine + "\n");
    }
    std::shuffle(vLines.begin(), vLines.end(), inout_Random);
    return vLines;
}

TEST_F(RawExpressionsTest, TangledDefinitionsFailTheSame) {
    const MemoryFileSystem::Files mapFiles{
        {"scripts/v1.xpr", "v1 = 1\n"},
        {"scripts/v3.xpr", "v3 = s.v2 + v1\n"},
        {"scripts/v5.xpr", "v4 = 1\nv5 = s.v5\n"},
        {"scripts/t.xpr", "v1 = s.v1 + v2\nv2 = s.v4\nv3 = 3\nv4 = = 4\n"}};
    std::mt19937 random(1);
    for (int i = 0; i != 100; ++i) {
        compareBothOrders(tangle(random), mapFiles);
    }
}

} // namespace

} // namespace Velmora::Math::Xpr
