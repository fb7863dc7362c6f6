#include "RandomTree.h"

#include <set>
#include <tuple>

#include "Frames.h"

namespace Velmora::Benchmarks {

class RandomTree::Grower {
public:
    Grower(RandomTree& inout_Tree, std::uint64_t in_uiSeed, double in_dFirstInput)
        : m_Tree(inout_Tree), m_Numbers(in_uiSeed), m_dFirstInput(in_dFirstInput) {}

    /// Grows a part with that many operators and returns its root.
    std::size_t grow(std::size_t in_uiOperators) {
        Node node;
        if (in_uiOperators == 0) {
            node.m_uiInput = chooseInput();
        } else if (in_uiOperators == 1) {
            node = growPair();
        } else {
            const std::size_t uiLeft = m_Numbers.below(in_uiOperators);
            node.m_uiLeft = grow(uiLeft);
            node.m_uiRight = grow(in_uiOperators - 1 - uiLeft);
            node.m_cOperator = chooseOperator(uiLeft + 1 == in_uiOperators);
        }
        return add(node);
    }

private:
    std::size_t chooseInput() {
        return m_Numbers.between(0.0, 1.0) < m_dFirstInput ? 0 : 1 + m_Numbers.below(INPUTS - 1);
    }

    char chooseOperator(bool in_bRightIsInput) {
        return "+-*/"[m_Numbers.below(in_bRightIsInput ? 4 : 3)];
    }

    std::size_t add(const Node& in_Node) {
        m_Tree.m_vNodes.push_back(in_Node);
        return m_Tree.m_vNodes.size() - 1;
    }

    /// An operator over two inputs that isn't there yet. All above it then differ as well. Two
    /// times the same input is what a clever compiler turns into something else.
    Node growPair() {
        Node left;
        Node right;
        Node node;
        do {
            left.m_uiInput = chooseInput();
            right.m_uiInput = chooseInput();
            node.m_cOperator = chooseOperator(true);
        } while (left.m_uiInput == right.m_uiInput ||
                 !m_Pairs.insert({node.m_cOperator, left.m_uiInput, right.m_uiInput}).second);
        node.m_uiLeft = add(left);
        node.m_uiRight = add(right);
        return node;
    }

    RandomTree& m_Tree;
    Numbers m_Numbers;
    double m_dFirstInput;
    std::set<std::tuple<char, std::size_t, std::size_t>> m_Pairs;
};

RandomTree::RandomTree(std::uint64_t in_uiSeed, double in_dFirstInput) {
    Grower(*this, in_uiSeed, in_dFirstInput).grow(OPERATORS);
}

RandomTree RandomTree::findWithReach(std::size_t in_uiReach) {
    for (std::uint64_t uiSeed = 1;; ++uiSeed) {
        RandomTree tree(uiSeed, 1.0 / 40.0);
        if (tree.countReached() == in_uiReach) {
            return tree;
        }
    }
}

std::string RandomTree::nameOf(std::size_t in_uiInput) {
    return {static_cast<char>('a' + in_uiInput)};
}

std::size_t RandomTree::countReached() const {
    std::vector<bool> vReached(m_vNodes.size());
    std::size_t uiCount = 0;
    for (std::size_t i = 0; i != m_vNodes.size(); ++i) {
        const Node& node = m_vNodes[i];
        if (node.m_cOperator == 0) {
            vReached[i] = node.m_uiInput == 0;
        } else if (vReached[node.m_uiLeft] || vReached[node.m_uiRight]) {
            vReached[i] = true;
            ++uiCount;
        }
    }
    return uiCount;
}

std::string RandomTree::toText() const {
    return toText(m_vNodes.size() - 1);
}

std::string RandomTree::toText(std::size_t in_uiNode) const {
    const Node& node = m_vNodes[in_uiNode];
    if (node.m_cOperator == 0) {
        return nameOf(node.m_uiInput);
    }
    return "(" + toText(node.m_uiLeft) + node.m_cOperator + toText(node.m_uiRight) + ")";
}

double RandomTree::compute(const Inputs& in_Inputs) const {
    std::vector<double> vValues(m_vNodes.size());
    for (std::size_t i = 0; i != m_vNodes.size(); ++i) {
        const Node& node = m_vNodes[i];
        const double dLeft = vValues[node.m_uiLeft];
        const double dRight = vValues[node.m_uiRight];
        switch (node.m_cOperator) {
        case '+':
            vValues[i] = dLeft + dRight;
            break;
        case '-':
            vValues[i] = dLeft - dRight;
            break;
        case '*':
            vValues[i] = dLeft * dRight;
            break;
        case '/':
            vValues[i] = dLeft / dRight;
            break;
        default:
            vValues[i] = in_Inputs[node.m_uiInput];
        }
    }
    return vValues.back();
}

} // namespace Velmora::Benchmarks
