#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include <velmora/math/xpr/Optimizer.h>

#include "math/xpr/OptimizerGraphs.h"
#include "support/GraphInvariants.h"
#include "support/GraphTest.h"
#include "support/LinkBench.h"

namespace Velmora::Testing {

using Math::Xpr::Dictionnary;
using Math::Xpr::Optimizer;

/// Runs the optimizer over graphs made by hand, and looks at what it did.
class OptimizerBench : public GraphTest {
protected:
    template <class T>
    static void add(Dictionnary& inout_Dictionnary, const Handle<T>& in_pExpression) {
        ASSERT_TRUE(inout_Dictionnary.add(Handle<Expression>(in_pExpression), false));
    }

    /// Runs over a dictionary of these entries.
    static void optimize(NodeList in_entries) {
        Dictionnary dictionnary("in");
        for (const Node& pEntry : in_entries) {
            add(dictionnary, pEntry);
        }
        optimize(dictionnary);
    }

    static void optimize(Dictionnary& inout_Dictionnary) {
        Dictionnary out("out");
        EXPECT_TRUE(Optimizer().run(inout_Dictionnary, out));
        EXPECT_TRUE(checkInvariants(out));
    }

    /// The lines "found COUNT similar instance(s) of the function NAME", as NAME to the counts.
    static std::map<std::string, std::vector<int>> listFound(const LogCapture& in_Log) {
        std::map<std::string, std::vector<int>> mapFound;
        const std::string strBetween = " similar instance(s) of the function ";
        for (const LogLine& line : in_Log.lines()) {
            const auto uiBetween = line.message.find(strBetween);
            if (line.logger == OptimizerLogger && line.message.rfind("found ", 0) == 0 &&
                uiBetween != std::string::npos) {
                mapFound[line.message.substr(uiBetween + strBetween.size())].push_back(
                    std::stoi(line.message.substr(6)));
            }
        }
        return mapFound;
    }

    static Nodes nodesOf(NodeList in_nodes) {
        Nodes vNodes;
        for (const Node& pNode : in_nodes) {
            vNodes.push_back(pNode.get());
        }
        return vNodes;
    }

    /// What the arguments are bound to, in their order.
    static Nodes valuesBoundBy(const FunctionBaseImpl& in_Function) {
        Nodes vValues;
        for (std::size_t ui = 0; ui != in_Function.getArgumentCount(); ++ui) {
            vValues.push_back(valueOf(in_Function, ui));
        }
        return vValues;
    }

    static Handle<Math::Xpr::OperatorConcatenate>
    concatenationOf(const Handle<VariableImpl>& in_pVariable) {
        return Handle<Math::Xpr::OperatorConcatenate>(in_pVariable->getValue());
    }

    /// Operators with any number of arguments that were ever made.
    static std::size_t countXaryFunctions() {
        for (const MemAccount& account : MemAccounts::snapshot()) {
            if (account.name == Math::Xpr::XaryFunctionNoT::getMemAccountName()) {
                return account.totalBlocks;
            }
        }
        return 0;
    }
};

/// A linked script, optimised.
class Optimized {
public:
    explicit Optimized(const std::string& in_strScript) {
        EXPECT_TRUE(m_Bench.load("s", in_strScript));
        EXPECT_TRUE(m_Bench.link());
        const LogCapture log(OptimizerLogger);
        EXPECT_TRUE(Optimizer().run(m_Bench.m_Linked, m_Out));
        EXPECT_TRUE(checkInvariants(m_Out));
        for (const LogLine& line : log.lines()) {
            m_vLog.push_back(line.message);
        }
        for (const auto& entry : m_Out) {
            entry.second->configure(TSHandle<VirtualFileSystem>());
        }
    }

    /// The function that computes the variable of that name.
    const ExpressionBaseImpl* computing(const char* in_szName) const {
        return ExpressionBaseImpl::getYoungerChild(Node(m_Out.findExpression(in_szName))).get();
    }

    Values value(const char* in_szName) const {
        return evaluated(*m_Out.findExpression(in_szName));
    }

    void set(const char* in_szName, const DoubleVector& in_vValue) const {
        m_Out.findVariable(in_szName)->setValue(in_vValue);
    }

    bool hasLogged(const std::string& in_strLine) const {
        return std::find(m_vLog.begin(), m_vLog.end(), in_strLine) != m_vLog.end();
    }

private:
    LinkBench m_Bench;
    Dictionnary m_Out{"out"};
    Texts m_vLog;
};

} // namespace Velmora::Testing
