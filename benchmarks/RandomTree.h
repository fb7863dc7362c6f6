#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Velmora::Benchmarks {

/// A tree of 200 operators over eight inputs, the same in every run.
///
/// No two of its operators compute the same from the same, so that sharing leaves all of them, and
/// no divisor can be zero for positive inputs.
class RandomTree {
public:
    static constexpr std::size_t OPERATORS = 200;
    static constexpr std::size_t INPUTS = 8;
    using Inputs = std::array<double, INPUTS>;

    /// `in_dFirstInput` is the share of the leaves that read the first input, about.
    RandomTree(std::uint64_t in_uiSeed, double in_dFirstInput);

    /// The first tree in which that many operators depend on the first input.
    static RandomTree findWithReach(std::size_t in_uiReach);

    static std::string nameOf(std::size_t in_uiInput);

    /// How many operators depend on the first input.
    std::size_t countReached() const;

    /// In the notation of scripts, with a pair of parentheses for each operator.
    std::string toText() const;

    double compute(const Inputs& in_Inputs) const;

private:
    struct Node {
        /// A leaf reads an input and has no sides.
        char m_cOperator = 0;
        std::size_t m_uiInput = 0;
        std::size_t m_uiLeft = 0;
        std::size_t m_uiRight = 0;
    };

    class Grower;

    std::string toText(std::size_t in_uiNode) const;

    /// A node stands behind its sides; the last is the root.
    std::vector<Node> m_vNodes;
};

} // namespace Velmora::Benchmarks
