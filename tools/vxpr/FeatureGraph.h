#pragma once

#include <velmora/Handle.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>

#include <cstddef>
#include <unordered_map>
#include <vector>

namespace Vxpr {

/// What the value of a feature is computed from, and whether all of it could be.
///
/// The engine stops a failure at the next variable or function of a script: that one succeeds with
/// the value that it had before, counts as current, and so keeps it when the next frame comes. A
/// table must neither show such a value nor be stuck with it. The graph knows which node reads
/// which, finds the nodes that read past a failure, and makes them compute again.
///
/// It is built of linked expressions, whose structure doesn't change any more.
class FeatureGraph {
public:
    using Node = Velmora::Math::Xpr::ExpressionBaseImpl;
    using NodeHandle = Velmora::Handle<Node>;

    /// A value as a node reads it: the node that computes it, and what merely hands it on.
    struct Source {
        Node* m_pNode = nullptr; ///< null if a function has no body
        std::vector<Node*> m_vChain;
    };

    /// A node that computes, and what it reads.
    struct Reader {
        Node* m_pNode = nullptr;
        bool m_bChooses = false; ///< reads its first source, and one of the others
        std::vector<Source> m_vSources;
    };

    /// Adds a feature and all that it reads; returns its number, which counts from 0.
    std::size_t addFeature(const NodeHandle& in_pRoot);

    /// The input variables that the features read, each once.
    const std::vector<Node*>& getInputs() const { return m_vInputs; }

    /// The features' own values, in the order in which they were added.
    const std::vector<Source>& getFeatures() const { return m_vRootSources; }

    /// What the node reads; null for a node that reads nothing.
    const Reader* findReader(const Node* in_pNode) const;

    /// Whether the reader reads that source on this frame: a condition leaves one of its values
    /// unread, and both as long as it isn't known.
    static bool isRead(const Reader& in_Reader, std::size_t in_uiSource);

    /// A function whose argument is read although nothing gives it a value.
    struct Uncalled {
        const Velmora::Math::Xpr::FunctionBaseImpl* m_pFunction =
            nullptr; ///< null if there is none
        const Node* m_pPosition =
            nullptr; ///< what uses the function, or the nearest one with a place
    };

    /// Whether the node is a variable that nothing ever gives a value to. Inputs are fed.
    static bool isUnset(const Node* in_pNode);

    /// The function that such a variable is the argument of.
    static Uncalled findUncalled(const Node& in_Unset);

    /// The functions that are used without their arguments, each once.
    std::vector<Uncalled> findUncalled() const;

    /// Whether any node has read past a failure since the last repair(); cheap enough for every
    /// frame.
    bool hasFailure() const;

    /// What failed.
    struct Failure {
        const Node* m_pNode = nullptr;     ///< the node that couldn't be computed
        const Node* m_pPosition = nullptr; ///< the nearest one whose place in a script is known
        std::vector<std::size_t> m_vSizes; ///< of the values that it was to be computed from
    };

    /// Whether the feature, which has been evaluated, has read past a failure.
    bool findFailure(std::size_t in_uiFeature, Failure& out_Failure) const;

    /// Makes everything that has read past a failure compute again.
    void repair();

private:
    Source follow(const NodeHandle& in_pStart);
    void addReaders(Node* in_pStart);
    static bool isFailed(const Reader& in_Reader, std::size_t in_uiSource);
    static const Source* findFailed(const Reader& in_Reader);
    Failure descend(const Source& in_Failed) const;
    static void invalidate(const Source& in_Source);

    std::vector<NodeHandle> m_vRoots; ///< they keep every node below alive
    std::vector<Source> m_vRootSources;
    std::vector<Node*> m_vInputs;
    std::vector<Reader> m_vReaders;
    std::unordered_map<const Node*, std::size_t> m_mapReaders; ///< positions in m_vReaders
};

} // namespace Vxpr
