#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "Host.h"
#include "RandomTree.h"

struct lua_State;

namespace mu {
class Parser;
}

namespace Velmora::Benchmarks {

/// The inputs of some frames of a tree, all different.
class TreeFrames {
public:
    static constexpr std::size_t COUNT = 16;

    TreeFrames();

    const RandomTree::Inputs& get(std::size_t in_uiFrame) const {
        return m_Frames[in_uiFrame % COUNT];
    }

    /// The same as the vectors that a host feeds.
    const Math::DoubleVector& getVector(std::size_t in_uiFrame, std::size_t in_uiInput) const {
        return m_vVectors[in_uiFrame % COUNT * RandomTree::INPUTS + in_uiInput];
    }

private:
    std::array<RandomTree::Inputs, COUNT> m_Frames{};
    std::vector<Math::DoubleVector> m_vVectors;
};

/// The tree as a script of the library.
class TreeHost {
public:
    explicit TreeHost(const RandomTree& in_Tree);

    void setInput(const TreeFrames& in_Frames, std::size_t in_uiFrame, std::size_t in_uiInput) {
        m_vInputs[in_uiInput]->setValue(in_Frames.getVector(in_uiFrame, in_uiInput));
    }
    void setInputs(const TreeFrames& in_Frames, std::size_t in_uiFrame) {
        for (std::size_t uiInput = 0; uiInput != RandomTree::INPUTS; ++uiInput) {
            setInput(in_Frames, in_uiFrame, uiInput);
        }
    }
    const Math::DoubleVector* compute() { return evaluate(*m_pRoot); }

private:
    Host m_Host;
    std::vector<Handle<Math::Xpr::Variable>> m_vInputs;
    Handle<Math::Xpr::Expression> m_pRoot;
};

/// The tree as an expression of muParser.
class TreeInMuParser {
public:
    explicit TreeInMuParser(const RandomTree& in_Tree);
    ~TreeInMuParser();

    double compute(const RandomTree::Inputs& in_Inputs);

private:
    RandomTree::Inputs m_Inputs{};
    std::unique_ptr<mu::Parser> m_pParser;
};

/// The tree as a function of Lua.
class TreeInLua {
public:
    explicit TreeInLua(const RandomTree& in_Tree);
    ~TreeInLua();
    TreeInLua(const TreeInLua&) = delete;
    TreeInLua& operator=(const TreeInLua&) = delete;

    double compute(const RandomTree::Inputs& in_Inputs);

private:
    lua_State* m_pState;
};

} // namespace Velmora::Benchmarks
