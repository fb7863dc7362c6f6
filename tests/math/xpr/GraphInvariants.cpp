#include "support/GraphInvariants.h"

#include <algorithm>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <velmora/math/xpr/BinaryOperatorImpl.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>
#include <velmora/math/xpr/OperatorIf.h>
#include <velmora/math/xpr/ScriptFunctionImpl.h>
#include <velmora/math/xpr/VariableImpl.h>
#include <velmora/math/xpr/XaryFunction.h>

#include "math/xpr/src/UnknownFunction.h"
#include "math/xpr/src/UnknownVariable.h"

namespace Velmora::Testing {

using namespace Math::Xpr;

namespace {

using Node = Handle<ExpressionBaseImpl>;

template <class T>
const T* as(const ExpressionBaseImpl& in_Node) {
    return dynamic_cast<const T*>(&in_Node);
}

bool isOperator(const ExpressionBaseImpl& in_Node) {
    return as<BinaryOperatorImplNoT>(in_Node) != nullptr || as<XaryFunctionNoT>(in_Node) != nullptr;
}

class Checker {
public:
    explicit Checker(Evaluations in_Evaluations) : m_Evaluations(in_Evaluations) {}

    /// Checks what hangs below a root, without recursion.
    void check(const ExpressionBaseImpl& in_Root) {
        struct Place {
            const ExpressionBaseImpl* m_pNode;
            const Node* m_pNextChild;
        };
        std::vector<Place> vPath;
        const auto enter = [&](const ExpressionBaseImpl& in_Node) {
            State& state = m_mapStates[&in_Node];
            if (state == State::OnPath) {
                report(in_Node, "stands on a cycle");
            } else if (state == State::New) {
                state = State::OnPath;
                checkNode(in_Node);
                vPath.push_back({&in_Node, in_Node.getChildBegin()});
            }
        };
        enter(in_Root);
        while (!vPath.empty()) {
            Place& place = vPath.back();
            if (place.m_pNextChild == place.m_pNode->getChildEnd()) {
                m_mapStates[place.m_pNode] = State::Done;
                vPath.pop_back();
            } else if (const Node& pChild = *place.m_pNextChild++; !pChild.isNull()) {
                enter(*pChild);
            }
        }
    }

    ::testing::AssertionResult result() const {
        return m_Faults.str().empty() ? ::testing::AssertionSuccess()
                                      : ::testing::AssertionFailure() << m_Faults.str();
    }

private:
    enum class State { New, OnPath, Done };

    void report(const ExpressionBaseImpl& in_Node, const std::string& in_strFault) {
        m_Faults << in_Node.getName() << " (" << in_Node.getId() << ") " << in_strFault << "\n";
    }

    static std::ptrdiff_t countParent(const ExpressionBaseImpl& in_Child,
                                      const ExpressionBaseImpl& in_Parent) {
        return std::count_if(in_Child.getParentBegin(), in_Child.getParentEnd(),
                             [&](const auto& in_pEntry) { return &*in_pEntry == &in_Parent; });
    }

    static std::ptrdiff_t countChild(const ExpressionBaseImpl& in_Parent,
                                     const ExpressionBaseImpl& in_Child) {
        return std::count_if(in_Parent.getChildBegin(), in_Parent.getChildEnd(),
                             [&](const auto& in_pEntry) { return in_pEntry.get() == &in_Child; });
    }

    void checkNode(const ExpressionBaseImpl& in_Node) {
        for (const Node* pChild = in_Node.getChildBegin(); pChild != in_Node.getChildEnd();
             ++pChild) {
            if (pChild->isNull()) {
                report(in_Node, "has a null child");
                continue;
            }
            const std::ptrdiff_t iEntries = countParent(**pChild, in_Node);
            const std::ptrdiff_t iLinks = countChild(in_Node, **pChild);
            if (iEntries < iLinks || (iEntries > iLinks && !isOperator(in_Node))) {
                report(in_Node, "is listed " + std::to_string(iEntries) + " times by its child " +
                                    (*pChild)->getName() + " for " + std::to_string(iLinks) +
                                    " links");
            }
        }
        for (const auto* pParent = in_Node.getParentBegin(); pParent != in_Node.getParentEnd();
             ++pParent) {
            if (countChild(**pParent, in_Node) == 0 && !isOperator(**pParent)) {
                report(in_Node, std::string("lists a parent that hasn't it as a child: ") +
                                    (*pParent)->getName());
            }
        }
        if (in_Node.isValid() && m_Evaluations == Evaluations::Succeeded) {
            checkInputs(in_Node);
        }
    }

    void checkInputs(const ExpressionBaseImpl& in_Node) {
        if (const auto* pVariable = as<VariableImpl>(in_Node)) {
            checkInput(in_Node, pVariable->getValue());
        } else if (const auto* pFunction = as<ScriptFunctionImpl>(in_Node)) {
            checkInput(in_Node, pFunction->getImplementation());
        } else if (as<OperatorIf>(in_Node) != nullptr) {
            checkInput(in_Node, in_Node.getChildAt(0));
        } else if (isOperator(in_Node)) {
            for (const Node* pChild = in_Node.getChildBegin(); pChild != in_Node.getChildEnd();
                 ++pChild) {
                checkInput(in_Node, *pChild);
            }
        }
    }

    // A sealed operator reads past its arguments, which stay invalid.
    void checkInput(const ExpressionBaseImpl& in_Node, const Node& in_pInput) {
        if (!in_pInput->isValid() && !ExpressionBaseImpl::getYoungerChild(in_pInput)->isValid()) {
            report(in_Node,
                   std::string("is valid, and what it reads isn't: ") + in_pInput->getName());
        }
    }

    Evaluations m_Evaluations;
    std::map<const ExpressionBaseImpl*, State> m_mapStates;
    std::ostringstream m_Faults;
};

} // namespace

::testing::AssertionResult checkInvariants(const Handle<Expression>& in_pRoot,
                                           Evaluations in_Evaluations) {
    const Node pRoot(in_pRoot);
    if (pRoot.isNull()) {
        return ::testing::AssertionFailure() << "the root is null";
    }
    Checker checker(in_Evaluations);
    checker.check(*pRoot);
    return checker.result();
}

::testing::AssertionResult checkInvariants(const Dictionnary& in_Dictionnary,
                                           Evaluations in_Evaluations) {
    Checker checker(in_Evaluations);
    for (auto iteEntry = in_Dictionnary.begin(); iteEntry != in_Dictionnary.end(); ++iteEntry) {
        const Node pRoot(iteEntry->second);
        if (pRoot.isNull()) {
            return ::testing::AssertionFailure() << iteEntry->first << " is null";
        }
        checker.check(*pRoot);
    }
    return checker.result();
}

::testing::AssertionResult checkLinked(const Dictionnary& in_Dictionnary) {
    std::ostringstream faults;
    std::map<const ExpressionBaseImpl*, bool> mapSeen;
    std::vector<Node> vPending;
    for (auto iteEntry = in_Dictionnary.begin(); iteEntry != in_Dictionnary.end(); ++iteEntry) {
        vPending.push_back(Node(iteEntry->second));
    }
    while (!vPending.empty()) {
        const Node pNode(vPending.back());
        vPending.pop_back();
        if (!mapSeen.emplace(pNode.get(), true).second) {
            continue;
        }
        if (as<UnknownFunction>(*pNode) != nullptr || as<UnknownVariable>(*pNode) != nullptr) {
            faults << pNode->getName() << " is a placeholder\n";
        }
        vPending.insert(vPending.end(), pNode->getChildBegin(), pNode->getChildEnd());
    }
    return faults.str().empty() ? ::testing::AssertionSuccess()
                                : ::testing::AssertionFailure() << faults.str();
}

} // namespace Velmora::Testing
