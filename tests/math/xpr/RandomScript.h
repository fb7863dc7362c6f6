#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// Makes scripts at random that load, link and, unless asked for, never fail: sizes fit, divisors
/// aren't zero, indices are in range. Equal seeds make equal scripts.
///
/// A script reads the inputs `left` and `right`, vectors of `FrameSize` elements, and `scalar`, and
/// uses every operator and built-in, definitions that stand ahead, and functions of its own with
/// arguments and parameters. What a function with memory reads changes on every frame: otherwise it
/// would stand still in a graph, and move on in a copy of it, which has to compute everything anew.
/// Nor does one stand in a branch of a condition, where it would move only when the branch is
/// chosen, unless it is merged with one that moves always.
class RandomScript {
public:
    static constexpr std::size_t FrameSize = 8;

    /// Whether operations may fail on some frames: divisions by `scalar`, which is zero now and
    /// then.
    enum class Failures { None, Some };

    /// Whether there may be conditions, whose nodes choose what they read.
    enum class Branches { None, Some };

    /// Numbers of which each makes one choice.
    using Choices = std::function<std::uint64_t()>;

    explicit RandomScript(std::uint64_t in_uiSeed, Failures in_eFailures = Failures::None,
                          Branches in_eBranches = Branches::Some);
    explicit RandomScript(Choices in_Choices, Failures in_eFailures = Failures::None,
                          Branches in_eBranches = Branches::Some);

    /// One statement a line.
    const std::vector<std::string>& getLines() const { return m_vLines; }

    /// The names of the definitions, without the script's name.
    const std::vector<std::string>& getFeatures() const { return m_vFeatures; }

    /// The features that the lines define, for a script that was cut.
    static std::vector<std::string> listFeatures(const std::vector<std::string>& in_vLines);

    static std::string join(const std::vector<std::string>& in_vLines);

private:
    /// What can be named, and how many elements it has.
    struct Name {
        std::string m_strName;
        std::size_t m_uiSize;
    };
    struct Function {
        std::string m_strName;
        bool m_bHasParameter;
        bool m_bHasMemory;
        std::vector<std::size_t> m_vArgumentSizes;
        std::size_t m_uiSize;
    };

    std::size_t pick(std::size_t in_uiCount);
    bool chance(unsigned int in_uiPercent) { return pick(100) < in_uiPercent; }
    std::string number();
    std::string nonZero();
    std::string parameter();
    std::size_t anySize();

    std::string expression(std::size_t in_uiSize, std::size_t in_uiDepth);
    std::string leaf(std::size_t in_uiSize);
    std::string operation(std::size_t in_uiSize, std::size_t in_uiDepth);
    std::string scalarCall(std::size_t in_uiDepth);
    std::string branch(std::size_t in_uiSize, std::size_t in_uiDepth);
    std::string memoryCall(std::size_t in_uiSize, std::size_t in_uiDepth);
    std::string vectorCall(std::size_t in_uiSize, std::size_t in_uiDepth);
    std::string call(std::size_t in_uiSize, std::size_t in_uiDepth);

    void addFeature();
    void addFunction();

    Choices m_Choices;
    std::vector<std::string> m_vLines;
    std::vector<std::string> m_vFeatures;
    std::vector<Name> m_vNames;
    std::vector<Function> m_vFunctions;
    std::string m_strParameter;
    /// May a function with memory stand here, and has one stood since this was last cleared?
    bool m_bMemory = true;
    bool m_bMemoryUsed = false;
    Failures m_eFailures;
    Branches m_eBranches;
};
