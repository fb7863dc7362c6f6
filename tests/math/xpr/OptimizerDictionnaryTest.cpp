// The index of one optimisation pass: who stands in it, how often, in which order.

#include "math/xpr/src/OptimizerDictionnary.h"

#include <velmora/math/xpr/OperatorDivide.h>
#include <velmora/math/xpr/OperatorIf.h>
#include <velmora/math/xpr/OperatorMinus.h>
#include <velmora/math/xpr/OperatorMultiply.h>
#include <velmora/math/xpr/OperatorSlice.h>

#include <map>

#include "math/xpr/OptimizerGraphs.h"
#include "math/xpr/WalkingReader.h"
#include "support/GraphTest.h"
#include "support/PunctuatedLocale.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

using Ids = std::vector<unsigned long>;
using InstanceList = OptimizerDictionnary::FunctionInstanceList;

class OptimizerDictionnaryTest : public GraphTest {
protected:
    template <class T>
    static void add(Dictionnary& inout_Dictionnary, const Handle<T>& in_pExpression) {
        ASSERT_TRUE(inout_Dictionnary.add(Handle<Expression>(in_pExpression), false));
    }

    /// The identifiers in each list, in its order.
    static std::map<std::string, Ids> listIds(const OptimizerDictionnary& in_Index) {
        std::map<std::string, Ids> mapIds;
        for (auto ite = in_Index.getFunctionBegin(); ite != in_Index.getFunctionEnd(); ++ite) {
            Ids& vIds = mapIds[ite->first];
            for (const auto& pData : *ite->second) {
                vIds.push_back(pData->getExpression()->getId());
            }
        }
        return mapIds;
    }

    static InstanceList& listOf(const OptimizerDictionnary& in_Index, const char* in_szName) {
        auto ite = in_Index.getFunctionBegin();
        while (ite->first != in_szName) {
            ++ite;
        }
        return *ite->second;
    }

    static std::string keyOf(const OptimizerExpressionData& in_Data) { return in_Data.key(); }

    static Texts debugLines(const LogCapture& in_Log) {
        return in_Log.messages(log4cplus::DEBUG_LOG_LEVEL);
    }

    static std::string addedText(std::size_t in_uiFunctions, std::size_t in_uiExpressions) {
        return "\nadded: \n" + std::to_string(in_uiFunctions) + " function(s)\n" +
               std::to_string(in_uiExpressions) + " expression(s)\n";
    }
};

TEST_F(OptimizerDictionnaryTest, DictionnaryWithoutEntriesInitialisesWithNothing) {
    const Dictionnary none("none");
    OptimizerDictionnary index;
    const LogCapture log(OptimizerDictionnaryLogger);
    EXPECT_TRUE(index.initialize(none));
    EXPECT_EQ(debugLines(log),
              (Texts{"initializing with the Dictionnary=none...", addedText(0, 0)}));
    EXPECT_TRUE(index.getFunctionBegin() == index.getFunctionEnd());
    EXPECT_FALSE(index.hasOneVisitEach());
}

TEST_F(OptimizerDictionnaryTest, EmptyDumpHasAnEmptyLineAndTheFrame) {
    EXPECT_EQ(OptimizerDictionnary().dump(), "\n<OptimizerDictionnary>\n</OptimizerDictionnary>\n");
}

TEST_F(OptimizerDictionnaryTest, FunctionThatIsAChildOfTwoStandsTwiceInItsList) {
    Dictionnary dictionnary("d");
    const auto pShared = call("shared");
    const auto pTop = call("top", {Node(pShared), Node(pShared)});
    add(dictionnary, pTop);
    OptimizerDictionnary index;
    const LogCapture log(OptimizerDictionnaryLogger);
    ASSERT_TRUE(index.initialize(dictionnary));
    EXPECT_EQ(listIds(index),
              (std::map<std::string, Ids>{{"shared", {pShared->getId(), pShared->getId()}},
                                          {"top", {pTop->getId()}}}));
    const InstanceList& instances = listOf(index, "shared");
    EXPECT_NE(instances.front().get(), instances.back().get());
    EXPECT_EQ(keyOf(*instances.front()), keyOf(*instances.back()));
    // The function, its arguments and the shared one.
    EXPECT_EQ(debugLines(log).back(), addedText(2, 4));
}

TEST_F(OptimizerDictionnaryTest, DataOfTheFirstVisitIsTheOneWhoseKeyIsFixed) {
    Dictionnary dictionnary("d");
    const auto pShared = call("shared");
    add(dictionnary, call("top", {Node(pShared), Node(pShared)}));
    OptimizerDictionnary index;
    LogCapture log(KeyLogger);
    ASSERT_TRUE(index.initialize(dictionnary));
    const InstanceList& instances = listOf(index, "shared");
    log.clear();
    EXPECT_EQ(keyOf(*instances.front()), "#shared");
    EXPECT_EQ(debugLines(log), Texts());
    EXPECT_EQ(keyOf(*instances.back()), "#shared");
    EXPECT_EQ(debugLines(log), Texts{"#shared"});
}

TEST_F(OptimizerDictionnaryTest, EntriesBelowEntriesAreVisitedOnceMore) {
    Dictionnary dictionnary("d");
    const auto pInner = call("f");
    const auto pInnerVariable = variable("inner", Node(pInner));
    add(dictionnary, pInnerVariable);
    add(dictionnary, variable("outer", Node(pInnerVariable)));
    add(dictionnary, variable("again", Node(pInner)));
    OptimizerDictionnary index;
    ASSERT_TRUE(index.initialize(dictionnary));
    EXPECT_EQ(listIds(index), (std::map<std::string, Ids>{
                                  {"f", {pInner->getId(), pInner->getId(), pInner->getId()}}}));
}

TEST_F(OptimizerDictionnaryTest, InstancesStandInTheOrderOfTheirDiscovery) {
    Dictionnary dictionnary("d");
    const auto pFirst = call("f");
    const auto pSecond = call("f");
    const auto pOuter = call("f", {Node(pSecond), Node(pFirst)});
    const auto pLast = call("f");
    add(dictionnary, variable("x", Node(call("g", {Node(pOuter), Node(pLast)}))));
    OptimizerDictionnary index;
    const LogCapture log(OptimizerDictionnaryLogger);
    ASSERT_TRUE(index.initialize(dictionnary));
    EXPECT_EQ(listIds(index)["f"],
              (Ids{pOuter->getId(), pSecond->getId(), pFirst->getId(), pLast->getId()}));
    EXPECT_EQ(debugLines(log),
              (Texts{"initializing with the Dictionnary=d...", "adding function: g",
                     "adding function: f", "adding function: f", "adding function: f",
                     "adding function: f", addedText(2, 10)}));
}

TEST_F(OptimizerDictionnaryTest, InstancesAreGroupedByTheNamesOfTheirFunctions) {
    Dictionnary dictionnary("d");
    const Node pA(variable("a"));
    const Handle<OperatorConcatenate> pParsed(new OperatorConcatenate);
    const Handle<OperatorIf> pIf(new OperatorIf);
    const NodeList functions{
        Node(binary(pA, pA)),
        Node(binary<OperatorMinus>(pA, pA)),
        Node(binary<OperatorMultiply>(pA, pA)),
        Node(binary<OperatorDivide>(pA, pA)),
        Node(binary<OperatorSlice>(pA, pA)),
        Node(pParsed),
        Node(concatenation({pA})),
        Node(pIf),
        Node(scriptFunction("s.f", Node(constant({1.0})))),
    };
    Texts vNames;
    for (const Node& pFunction : functions) {
        add(dictionnary, pFunction);
    }
    OptimizerDictionnary index;
    ASSERT_TRUE(index.initialize(dictionnary));
    for (const auto& [strName, vIds] : listIds(index)) {
        vNames.push_back(strName);
        EXPECT_EQ(vIds.size(), 1u) << strName;
    }
    EXPECT_EQ(vNames,
              (Texts{"Slice", "add", "concat", "div", "if", "mult", "s.f", "sub", "unamed"}));
}

TEST_F(OptimizerDictionnaryTest, ConstantsAndVariablesAreNoFunctions) {
    Dictionnary dictionnary("d");
    add(dictionnary, constant({1.0}));
    add(dictionnary, variable("x", Node(constant({2.0}))));
    OptimizerDictionnary index;
    const LogCapture log(OptimizerDictionnaryLogger);
    ASSERT_TRUE(index.initialize(dictionnary));
    EXPECT_EQ(debugLines(log).back(), addedText(0, 3));
}

TEST_F(OptimizerDictionnaryTest, DumpShowsEveryInstanceUnderItsFunction) {
    Dictionnary dictionnary("d");
    const auto pFirst = call("f", {Node(variable("a"))});
    const auto pSecond = call("f", {Node(variable("b"))});
    add(dictionnary, variable("x", Node(pFirst)));
    add(dictionnary, variable("y", Node(pSecond)));
    OptimizerDictionnary index;
    ASSERT_TRUE(index.initialize(dictionnary));
    EXPECT_EQ(index.dump(), "\n<OptimizerDictionnary>\n"
                            "\t<function name=\"f\">\n"
                            "\t\t<data valid=\"1\"xprID=\"" +
                                std::to_string(pFirst->getId()) +
                                "\">#f#a</data>\n"
                                "\t\t<data valid=\"1\"xprID=\"" +
                                std::to_string(pSecond->getId()) +
                                "\">#f#b</data>\n"
                                "\t</function>\n"
                                "</OptimizerDictionnary>\n");
}

TEST_F(OptimizerDictionnaryTest, DumpShowsDataThatWasInvalidated) {
    Dictionnary dictionnary("d");
    add(dictionnary, call("f"));
    OptimizerDictionnary index;
    ASSERT_TRUE(index.initialize(dictionnary));
    listOf(index, "f").front()->invalidate();
    EXPECT_NE(index.dump().find("<data valid=\"0\"xprID=\""), std::string::npos);
}

TEST_F(OptimizerDictionnaryTest, ErasedInstanceStaysValidAndTheOneBehindItIsReturned) {
    // Without a parent that would keep it valid.
    Dictionnary dictionnary("d");
    const auto pFirst = call("f");
    const auto pSecond = call("f");
    add(dictionnary, pFirst);
    add(dictionnary, variable("y", Node(pSecond)));
    OptimizerDictionnary index;
    ASSERT_TRUE(index.initialize(dictionnary));
    InstanceList& instances = listOf(index, "f");
    const CountedObjPtr<OptimizerExpressionData> pData(instances.front());
    auto iteFirst = instances.begin();
    const auto iteBehind = index.eraseFunctionInstance(iteFirst, instances);
    EXPECT_TRUE(pData->isValid());
    EXPECT_TRUE(iteBehind == instances.begin());
    EXPECT_EQ(listIds(index)["f"], Ids{pSecond->getId()});
}

TEST_F(OptimizerDictionnaryTest, ErasedInstanceThatIsInvalidStaysSo) {
    Dictionnary dictionnary("d");
    add(dictionnary, call("f"));
    OptimizerDictionnary index;
    ASSERT_TRUE(index.initialize(dictionnary));
    InstanceList& instances = listOf(index, "f");
    const CountedObjPtr<OptimizerExpressionData> pData(instances.front());
    pData->invalidate();
    auto iteFirst = instances.begin();
    index.eraseFunctionInstance(iteFirst, instances);
    EXPECT_FALSE(pData->isValid());
    EXPECT_TRUE(instances.empty());
}

TEST_F(OptimizerDictionnaryTest, ErasingAtTheEndFailsAnAssertionAndReturnsTheEnd) {
    Dictionnary dictionnary("d");
    add(dictionnary, call("f"));
    OptimizerDictionnary index;
    ASSERT_TRUE(index.initialize(dictionnary));
    InstanceList& instances = listOf(index, "f");
    auto iteEnd = instances.end();
    EXPECT_TRUE(index.eraseFunctionInstance(iteEnd, instances) == instances.end());
    EXPECT_EQ(takeAssertions(), Texts{"in_InstancesList.end() != in_iteFunctionInstance"});
    EXPECT_EQ(instances.size(), 1u);
}

TEST_F(OptimizerDictionnaryTest, NameStaysWithAnEmptyListWhenAllItsInstancesAreErased) {
    Dictionnary dictionnary("d");
    add(dictionnary, variable("x", Node(call("f"))));
    add(dictionnary, variable("y", Node(call("f"))));
    OptimizerDictionnary index;
    ASSERT_TRUE(index.initialize(dictionnary));
    InstanceList& instances = listOf(index, "f");
    for (auto ite = instances.begin(); ite != instances.end();) {
        ite = index.eraseFunctionInstance(ite, instances);
    }
    EXPECT_EQ(listIds(index), (std::map<std::string, Ids>{{"f", {}}}));
    EXPECT_EQ(index.dump(), "\n<OptimizerDictionnary>\n"
                            "\t<function name=\"f\">\n"
                            "\t</function>\n"
                            "</OptimizerDictionnary>\n");
}

TEST_F(OptimizerDictionnaryTest, KeysAreFixedBeforeTheGraphChanges) {
    Dictionnary dictionnary("d");
    const auto pFirst = call("f", {Node(variable("a"))});
    const auto pSecond = call("g", {Node(variable("b"))});
    add(dictionnary, call("top", {Node(pFirst), Node(pFirst)}));
    add(dictionnary, pSecond);
    OptimizerDictionnary index;
    ASSERT_TRUE(index.initialize(dictionnary));
    pFirst->replace(Node(pSecond));
    EXPECT_EQ(keyOf(*listOf(index, "top").front()), "#top#f#a#f#a");
}

TEST_F(OptimizerDictionnaryTest, KeysAreLoggedOnceEachAndBehindThoseThatTheyAreMadeOf) {
    Dictionnary dictionnary("d");
    const auto pInput = variable("in");
    const Node pShared(call("f", {Node(pInput)}));
    const Node pOther(variable("other"));
    add(dictionnary, variable("x", Node(call("g", {pShared, pShared, pOther}))));
    add(dictionnary, pInput);
    const LogCapture log(KeyLogger);
    OptimizerDictionnary index;
    ASSERT_TRUE(index.initialize(dictionnary));
    // Children in their order: the input, its argument, the function and the argument over it; the
    // other two arguments; then the function and the variable above all.
    EXPECT_EQ(debugLines(log), (Texts{"#in", "#in", "#f#in", "#f#in", "#f#in", "#other", "#other",
                                      "#g#f#in#f#in#other", "#g#f#in#f#in#other"}));
}

TEST_F(OptimizerDictionnaryTest, NoKeyBecomesTextBeforeSomebodyReadsIt) {
    Dictionnary dictionnary("d");
    add(dictionnary, call("f", {Node(variable("a"))}));
    OptimizerDictionnary index;
    ASSERT_TRUE(index.initialize(dictionnary));
    const LogCapture log(KeyLogger);
    EXPECT_EQ(keyOf(*listOf(index, "f").front()), "#f#a");
    EXPECT_EQ(debugLines(log), Texts{"#f#a"});
}

TEST_F(OptimizerDictionnaryTest, ForeignExpressionAmongTheEntriesFailsTheInitialisation) {
    Dictionnary dictionnary("d");
    add(dictionnary, call("ahead"));
    add(dictionnary, Handle<Expression>(new ForeignVariable));
    add(dictionnary, call("behind"));
    OptimizerDictionnary index;
    EXPECT_FALSE(index.initialize(dictionnary));
    EXPECT_EQ(takeAssertions(),
              (Texts{"!pData.isNull()", "insertExpression( (*iteExpr).second )"}));
    const auto mapIds = listIds(index);
    EXPECT_EQ(mapIds.count("ahead"), 1u);
    EXPECT_EQ(mapIds.count("behind"), 0u);
}

TEST_F(OptimizerDictionnaryTest, MapGivesNoDataForAForeignExpressionAndFailsAnAssertion) {
    OptimizerDictionnary::ExpressionMap map;
    const Handle<Expression> pForeign(new ForeignVariable);
    EXPECT_TRUE(map.get(*pForeign).isNull());
    EXPECT_EQ(takeAssertions(), Texts{"pXpr != 0 && \"Unsupported Expression implementation\""});
}

TEST_F(OptimizerDictionnaryTest, MapMakesAnEmptyEntryForAnUnknownExpression) {
    OptimizerDictionnary::ExpressionMap map;
    const auto pVariable = variable("v");
    EXPECT_TRUE(map.get(*pVariable).isNull());
    EXPECT_EQ(map.count(pVariable->getId()), 1u);
    map[pVariable->getId()] = map.newData(map, Node(pVariable));
    EXPECT_EQ(map.get(*pVariable)->getExpression(), Node(pVariable));
    EXPECT_EQ(map.size(), 1u);
}

TEST_F(OptimizerDictionnaryTest, UnknownKindOfNodeIsIndexedLikeALeaf) {
    Dictionnary dictionnary("d");
    const Node pUnknown(new RecordingNode);
    add(dictionnary, call("f", {pUnknown}));
    OptimizerDictionnary index;
    EXPECT_TRUE(index.initialize(dictionnary));
    EXPECT_EQ(takeAssertions(), Texts{"false && \"Unknown expression type\""});
    EXPECT_EQ(keyOf(*listOf(index, "f").front()), "#f#" + std::to_string(pUnknown->getId()));
}

TEST_F(OptimizerDictionnaryTest, UnknownKindOfNodeIsIndexedLikeALeafBeyondTheLimitOfVisitsToo) {
    VisitLimit limit;
    const Node pUnknown(new RecordingNode);
    add(limit.m_Dictionnary, call("f", {pUnknown}));
    OptimizerDictionnary index;
    EXPECT_TRUE(index.initialize(limit.m_Dictionnary));
    EXPECT_TRUE(index.hasOneVisitEach());
    EXPECT_EQ(takeAssertions(), Texts{"false && \"Unknown expression type\""});
    EXPECT_EQ(keyOf(*listOf(index, "f").front()), "#f#" + std::to_string(pUnknown->getId()));
}

TEST_F(OptimizerDictionnaryTest, UpToTheLimitOfVisitsThereIsAnEntryForEach) {
    const VisitLimit limit;
    OptimizerDictionnary index;
    LogCapture log(OptimizerDictionnaryLogger);
    ASSERT_TRUE(index.initialize(limit.m_Dictionnary));
    EXPECT_FALSE(index.hasOneVisitEach());
    std::map<unsigned long, std::size_t> mapCounts;
    const Ids vIds = listIds(index)["add"];
    for (const unsigned long ulId : vIds) {
        ++mapCounts[ulId];
    }
    for (std::size_t uiLevel = 1; uiLevel <= 13; ++uiLevel) {
        EXPECT_EQ(mapCounts[limit.sum(uiLevel)->getId()], VisitLimit::visitsOfSum(uiLevel));
    }
    EXPECT_EQ(debugLines(log).back(), addedText(1, VisitLimit::Expressions));
}

TEST_F(OptimizerDictionnaryTest, BeyondTheLimitOfVisitsThereIsAnEntryForEachExpression) {
    VisitLimit limit;
    limit.addVisit("one more");
    OptimizerDictionnary index;
    LogCapture log(OptimizerDictionnaryLogger);
    ASSERT_TRUE(index.initialize(limit.m_Dictionnary));
    EXPECT_TRUE(index.hasOneVisitEach());
    Ids vExpected;
    for (std::size_t uiLevel = 13; uiLevel != 0; --uiLevel) {
        vExpected.push_back(limit.sum(uiLevel)->getId());
    }
    EXPECT_EQ(listIds(index)["add"], vExpected);
    EXPECT_EQ(debugLines(log).back(), addedText(1, VisitLimit::Expressions + 1));
}

TEST_F(OptimizerDictionnaryTest, UpToTheLimitOfVisitsKeysAreWrittenWholeAndBeyondItShortened) {
    for (const bool bBeyond : {false, true}) {
        VisitLimit limit;
        if (bBeyond) {
            limit.addVisit("one more");
        }
        for (std::size_t uiLevel = 1; uiLevel <= 13; ++uiLevel) {
            limit.sum(uiLevel)->setName("addition");
        }
        OptimizerDictionnary index;
        ASSERT_TRUE(index.initialize(limit.m_Dictionnary));
        const ExpressionBaseImpl& leaf = *limit.m_vDoubled.front()->getValue();
        std::string strWhole = "#" + std::to_string(leaf.getId());
        for (int i = 0; i != 13; ++i) {
            strWhole = "#addition" + strWhole + strWhole;
        }
        ASSERT_GT(strWhole.size(), OptimizerKeyTable::MaxText);
        const OptimizerExpressionData& data = *listOf(index, "addition").front();
        EXPECT_EQ(data.getExpression(), Node(limit.sum(13)));
        EXPECT_EQ(data.hash(), plainHash(strWhole));
        EXPECT_EQ(data.key() == strWhole, !bBeyond);
        EXPECT_LE(data.key().size(), bBeyond ? OptimizerKeyTable::MaxText + 3 : strWhole.size());
        EXPECT_EQ(index.dump().find("...") != std::string::npos, bBeyond);
    }
}

TEST_F(OptimizerDictionnaryTest, BeyondTheLimitTheIndexIsTheSameWhetherKeysAreLoggedOrNot) {
    VisitLimit limit;
    limit.addVisit("one more");
    const Node pFirst(call("f", {Node(limit.sum(2)), Node(limit.sum(1))}));
    const Node pSecond(call("f", {Node(constant({1.0})), Node(variable("a"))}));
    add(limit.m_Dictionnary, variable("first", pFirst));
    add(limit.m_Dictionnary, variable("second", pSecond));
    OptimizerDictionnary silent;
    ASSERT_TRUE(silent.initialize(limit.m_Dictionnary));
    const LogCapture log(KeyLogger);
    OptimizerDictionnary logged;
    ASSERT_TRUE(logged.initialize(limit.m_Dictionnary));
    EXPECT_GT(debugLines(log).size(), 0u);
    EXPECT_TRUE(silent.hasOneVisitEach());
    EXPECT_EQ(listIds(silent), listIds(logged));
    for (const char* const szName : {"add", "f"}) {
        auto iteLogged = listOf(logged, szName).begin();
        for (const auto& pData : listOf(silent, szName)) {
            EXPECT_EQ(pData->hash(), (*iteLogged)->hash());
            EXPECT_EQ(pData->key(), (*iteLogged)->key());
            ++iteLogged;
        }
    }
}

TEST_F(OptimizerDictionnaryTest, WhoReadsTheLogMayWalkOverTheGraph) {
    constexpr int Levels = 60;
    const auto pTop = doubled(variable("x0"), Levels);
    Dictionnary dictionnary("d");
    add(dictionnary, pTop);
    for (const char* const szLogger : {OptimizerDictionnaryLogger, KeyLogger}) {
        const LogCapture log(szLogger);
        const WalkingReader reader(szLogger, *pTop);
        OptimizerDictionnary index;
        EXPECT_TRUE(index.initialize(dictionnary));
        EXPECT_EQ(listOf(index, "add").size(), std::size_t(Levels));
        EXPECT_GE(reader.countLines(), unsigned(Levels));
    }
}

TEST_F(OptimizerDictionnaryTest, WhoHearsOfAnUnknownKindMayWalkOverTheGraph) {
    constexpr int Levels = 60;
    const auto pTop = doubled(variable("x0"), Levels);
    const Node pUnknown(new RecordingNode);
    const Node pLast(call("f", {pUnknown, Node(pTop)}));
    Dictionnary dictionnary("d");
    add(dictionnary, pTop);
    add(dictionnary, pLast);
    OptimizerDictionnary index;
    static const ExpressionBaseImpl* s_pTop;
    s_pTop = pTop.get();
    const Assertion::Handler pFormer = Assertion::setHandler(
        [](const char*, const char*, int) { EXPECT_FALSE(GraphWalk::isShort(*s_pTop)); });
    EXPECT_TRUE(index.initialize(dictionnary));
    Assertion::setHandler(pFormer);
    EXPECT_EQ(listOf(index, "add").size(), std::size_t(Levels));
    EXPECT_EQ(listOf(index, "f").size(), 1U);
}

TEST_F(OptimizerDictionnaryTest, EachVisitIsTraced) {
    for (const int iLevels : {2, 30}) {
        Dictionnary dictionnary("d");
        add(dictionnary, doubled(variable("x0"), iLevels));
        const LogCapture log(OptimizerDictionnaryLogger, log4cplus::TRACE_LOG_LEVEL);
        OptimizerDictionnary index;
        ASSERT_TRUE(index.initialize(dictionnary));
        // A variable, an operator and its two arguments for each level; along every path of two.
        const std::size_t uiVisits = iLevels == 2 ? 16 : 4 * 30 + 1;
        EXPECT_EQ(
            log.count(log4cplus::TRACE_LOG_LEVEL, "ENTER: OptimizerDictionnary::insertExpression"),
            uiVisits);
    }
}

TEST_F(OptimizerDictionnaryTest, NumbersInADumpAreTheSameUnderEveryLocaleOfTheHost) {
    Dictionnary dictionnary("d");
    Node pLast(call("f"));
    // The number of the last node has several groups of digits.
    while (pLast->getId() < 1000) {
        pLast = Node(call("f"));
    }
    add(dictionnary, pLast);
    OptimizerDictionnary index;
    ASSERT_TRUE(index.initialize(dictionnary));
    const GlobalPunctuation punctuation;
    EXPECT_NE(index.dump().find("xprID=\"" + std::to_string(pLast->getId()) + "\""),
              std::string::npos);
}

TEST_F(OptimizerDictionnaryTest, DumpOfGreatKeysEnds) {
    Dictionnary dictionnary("d");
    add(dictionnary, doubled(variable("x0"), 300));
    OptimizerDictionnary index;
    ASSERT_TRUE(index.initialize(dictionnary));
    const std::string strDump = index.dump();
    EXPECT_LT(strDump.size(), OptimizerKeyTable::MaxTexts + OptimizerKeyTable::MaxText + 300 * 400);
}

TEST_F(OptimizerDictionnaryTest, DumpHasEveryKeyWholeAsLongAsThereAreFewVisits) {
    const std::string strLong(OptimizerKeyTable::MaxTexts / 2, 'x');
    Dictionnary dictionnary("d");
    Node pLast(variable("frame"));
    for (int i = 0; i != 3; ++i) {
        const auto pFunction = call("f", {pLast});
        newParameter(*pFunction, "text")->setValue(ParameterValue(i == 0 ? strLong.c_str() : ""));
        pLast = pFunction;
    }
    add(dictionnary, pLast);
    OptimizerDictionnary index;
    ASSERT_TRUE(index.initialize(dictionnary));
    const std::string strDump = index.dump();
    EXPECT_EQ(strDump.find("..."), std::string::npos);
    EXPECT_GT(strDump.size(), 3 * strLong.size());
}

TEST_F(OptimizerDictionnaryTest, TraceOfTheDataHasTheMakingOfEachKey) {
    Dictionnary dictionnary("d");
    add(dictionnary, call("f"));
    const LogCapture log("quillmark.math.xpr.OptimizerExpressionData", log4cplus::TRACE_LOG_LEVEL);
    OptimizerDictionnary index;
    ASSERT_TRUE(index.initialize(dictionnary));
    EXPECT_EQ(log.count(log4cplus::TRACE_LOG_LEVEL, "ENTER: OptimizerExpressionDataImpl::key"), 1u);
}

TEST_F(OptimizerDictionnaryTest, EveryOperationIsTraced) {
    Dictionnary dictionnary("d");
    add(dictionnary, call("f"));
    const LogCapture log(OptimizerDictionnaryLogger, log4cplus::TRACE_LOG_LEVEL);
    {
        OptimizerDictionnary index;
        ASSERT_TRUE(index.initialize(dictionnary));
        InstanceList& instances = listOf(index, "f");
        auto iteFirst = instances.begin();
        index.eraseFunctionInstance(iteFirst, instances);
    }
    const std::string strClass = "OptimizerDictionnary::";
    Texts vExpected;
    const auto expect = [&](const char* in_szMark, const char* in_szOperation) {
        vExpected.push_back(in_szMark + strClass + in_szOperation);
    };
    expect("ENTER: ", "OptimizerDictionnary");
    expect("EXIT: ", "OptimizerDictionnary");
    expect("ENTER: ", "initialize");
    expect("ENTER: ", "insertExpression");
    expect("ENTER: ", "insertFunctionInstance");
    expect("EXIT: ", "insertFunctionInstance");
    expect("EXIT: ", "insertExpression");
    expect("EXIT: ", "initialize");
    expect("ENTER: ", "eraseFunctionInstance");
    expect("EXIT: ", "eraseFunctionInstance");
    expect("ENTER: ", "~OptimizerDictionnary");
    expect("EXIT: ", "~OptimizerDictionnary");
    EXPECT_EQ(log.messages(log4cplus::TRACE_LOG_LEVEL), vExpected);
}

TEST_F(OptimizerDictionnaryTest, ExpressionsOutliveTheIndexAndItsDataDoesNot) {
    Dictionnary dictionnary("d");
    const auto pFunction = call("f");
    add(dictionnary, pFunction);
    const std::size_t uiHandles = pFunction.getReferenceCount();
    {
        OptimizerDictionnary index;
        ASSERT_TRUE(index.initialize(dictionnary));
        EXPECT_GT(pFunction.getReferenceCount(), uiHandles);
    }
    EXPECT_EQ(pFunction.getReferenceCount(), uiHandles);
    EXPECT_STREQ(OptimizerDictionnary::getMemAccountName(), "OptimizerDictionnary");
}

} // namespace

} // namespace Velmora::Math::Xpr
