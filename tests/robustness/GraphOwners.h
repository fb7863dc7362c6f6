#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include <velmora/Handle.h>
#include <velmora/TSHandle.h>
#include <velmora/VirtualFileSystem.h>
#include <velmora/math/DoubleVector.h>
#include <velmora/math/xpr/Dictionnary.h>
#include <velmora/math/xpr/Evaluator.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>
#include <velmora/math/xpr/FeatureComputer.h>

namespace Velmora::Testing {

/// What a host can destroy, and do with a node that it has kept.
enum class Step {
    DestroyEvaluator,
    DestroyClone,
    DestroyDictionnary,
    DestroyCopy,
    DestroyVariable,
    DestroyComputer,
    DestroySharingComputer,
    SetInput,
    SetKept,
    Evaluate,
    DumpAndInvalidate
};
constexpr std::size_t StepCount = 11;
constexpr std::size_t DestructionCount = 7;

/// All owners of graphs that there are, over one script:
/// - an evaluator, and a clone of it;
/// - a dictionary of the host's with the evaluator's own expressions, which seals them once more;
/// - a copy of that dictionary, which shares the inputs' values with it;
/// - a handle of an input;
/// - a computer with an evaluator of its own, and one that shares the evaluator.
///
/// The host keeps one node of each of the four graphs, and uses it whoever has died.
class GraphOwners {
public:
    enum class Destruction { Real, Noted };

    /// The number says which node of each graph is kept. With noted destructions nobody dies, and
    /// what was to die isn't used any more: so the values are those that there have to be.
    GraphOwners(bool in_bOptimize, std::size_t in_uiKept, Destruction in_eDestruction);
    GraphOwners(const GraphOwners&) = delete;
    GraphOwners& operator=(const GraphOwners&) = delete;
    ~GraphOwners();

    void run(Step in_eStep);

    /// All that was evaluated so far: for each value whether there was one, and its elements.
    /// Nothing more comes to it once a node other than an input was set: the structure of a sealed
    /// graph is frozen, and what it gives behind a change isn't told.
    const std::vector<double>& getValues() const { return m_vValues; }

    /// The nodes of the evaluator's graph.
    static std::size_t countNodes(bool in_bOptimize);

    static const char* nameOf(Step in_eStep);

private:
    using Node = Handle<Math::Xpr::ExpressionBaseImpl>;

    /// Shows the nodes of its evaluator.
    class Computer : public Math::Xpr::FeatureComputer {
    public:
        using FeatureComputer::FeatureComputer;
        using FeatureComputer::getEvaluator;
    };

    static std::vector<Node> listNodes(const std::vector<Handle<Math::Xpr::Expression>>& in_vRoots);
    template <class T>
    void destroy(Step in_eOwner, T& inout_pOwner);
    bool isAlive(Step in_eOwner) const {
        return !m_bDestroyed[static_cast<std::size_t>(in_eOwner)];
    }
    const Math::DoubleVector& newVector();
    void evaluate(Math::Xpr::Expression& inout_Node);
    void compute(Computer& inout_Computer);
    void setKept();
    void record(bool in_bSuccess, const Math::DoubleVector& in_vValue);

    const Destruction m_eDestruction;
    bool m_bDestroyed[DestructionCount] = {};
    std::vector<double> m_vValues;
    bool m_bStructureChanged = false;
    /// Live longer than the graphs that point at them.
    std::deque<Math::DoubleVector> m_vVectors;
    std::vector<Node> m_vKept;
    std::unique_ptr<Math::Xpr::Evaluator> m_pEvaluator;
    std::unique_ptr<Math::Xpr::Evaluator> m_pClone;
    std::unique_ptr<Math::Xpr::Dictionnary> m_pDictionnary;
    std::unique_ptr<Math::Xpr::Dictionnary> m_pCopy;
    Handle<Math::Xpr::Variable> m_pVariable;
    std::unique_ptr<Computer> m_pComputer;
    std::unique_ptr<Computer> m_pSharingComputer;
};

} // namespace Velmora::Testing
