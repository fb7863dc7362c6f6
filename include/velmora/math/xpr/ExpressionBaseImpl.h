#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <boost/container/small_vector.hpp>
#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <velmora/Handle.h>
#include <velmora/math/Reductions.h>
#include <velmora/math/xpr/Expression.h>
#include <velmora/math/xpr/ParentList.h>
#include <velmora/math/xpr/SourcePosition.h>

namespace Velmora::Math::Xpr {

class DomainValueKeeper;
class ExpressionImplCopier;
class GraphWalk;
class ScriptFunctionImpl;
class SealedPlan;
class VariableImpl;

/// Count the nodes that have a plan, which goes with the last of them.
void intrusive_ptr_add_ref(SealedPlan* inout_pPlan) noexcept;
void intrusive_ptr_release(SealedPlan* inout_pPlan) noexcept;

/// What all nodes share: identity, links, the cached value and its validity.
///
/// Always true of a graph:
/// - it has no cycle, as long as links are made with their checks;
/// - a node stands in the parent list of each child once for each link, and once more for each time
///   that a sealed operator registered itself with the node that it reads;
/// - a node is valid only if everything that its value was computed from was valid then, so an
///   invalid node has no valid ancestor that reads through it. (A sealed operator reads past its
///   arguments; that is why it is a direct parent of what it reads.)
///
/// Children are owned, parents are not: the graph is held from its roots downward. `m_pValue` never
/// owns: it points at a vector of a node or of the host.
///
/// A node is identified by its identifier, never by its address or name.
class VELMORA_EXPORT ExpressionBaseImpl : public virtual Expression {
public:
    /// What the operations that number a child return when there is none.
    static constexpr unsigned long NoChild = 4294967295UL;

    /// Visits of one walk (`seal`, `configure`, `reset`, a dump) up to which a node is visited once
    /// for each path that leads to it. A graph with more paths gets one visit per node, so that the
    /// walk costs no more than the graph is large. The values are the same in both cases. There
    /// `configure` and `reset` go to the nodes' own parts, `configure_i` and `reset_i`: a class
    /// that has something to do then overrides these.
    static constexpr std::size_t MaxVisitsPerWalk = 65536;

    ExpressionBaseImpl();
    ~ExpressionBaseImpl() override;
    ExpressionBaseImpl(const ExpressionBaseImpl&) = delete;
    ExpressionBaseImpl& operator=(const ExpressionBaseImpl&) = delete;

    std::ostream& write(std::ostream& out_Stream) const override;
    bool configure(const TSHandle<VirtualFileSystem>& in_pFileSystem) override;
    bool evaluate(DoubleVector& out) override;
    bool evaluate(LimitedObjPtr<DoubleVector>& out) override;
    bool dump(const char* in_szFileName) const override;
    bool reset() override;
    ExpressionBaseImpl* asNode() noexcept override { return this; }

    /// The name for people and dictionaries. Need not be unique.
    virtual const char* getName() const = 0;

    /// Makes the parents of this node point at another node. True unless the other node is this
    /// one.
    ///
    /// The walk goes over the positions that the parent list had at the start while the list
    /// shrinks beneath it, so that of three and more parents every second one is passed over and
    /// keeps this node; its caller repeats the call for what must move completely.
    virtual bool replace(const Handle<ExpressionBaseImpl>& in_pNewExpression);

    /// The identity: unique in the process, given at construction, never copied.
    unsigned long getId() const { return m_id; }

    /// What walks ask of every node, at a tenth of what a cast costs: the node as a variable or a
    /// script function, null if it is none; is it a `ConstantImpl`, or a domain value?
    virtual VariableImpl* asVariable() { return nullptr; }
    virtual ScriptFunctionImpl* asScriptFunction() { return nullptr; }
    virtual bool isConstant() const { return false; }
    virtual bool isDomainValue() const { return false; }

    /// A free label of the host's; nothing in the library reads it, copies carry it along.
    const char* getType() const { return m_pLabels == nullptr ? "" : m_pLabels->m_strType.c_str(); }
    void setType(const char* in_szType);

    /// Where in a script the node came from; empty on a node made by hand. The text of a position
    /// is made when it is first asked for, so that one thread at a time may ask.
    const char* getSourceInfo() const;
    bool hasSourceInfo() const;
    void setSourceInfo(const char* in_szSourceInfo);
    void setSourceInfo(const SourcePosition& in_Position);
    void copySourceInfo(const ExpressionBaseImpl& in_Source);

    /// Whether the cached value is current.
    bool isValid() const { return *m_pValid != 0; }

    /// The node's name in Graphviz output; good until the next call.
    const char* getDotName() const;

    /// The parents, one entry for each link, and the children, both in their order.
    const LimitedObjPtr<ExpressionBaseImpl>* getParentBegin() const { return m_Parents.begin(); }
    const LimitedObjPtr<ExpressionBaseImpl>* getParentEnd() const { return m_Parents.end(); }

    /// The children in their order.
    const Handle<ExpressionBaseImpl>* getChildBegin() const { return m_Childs.data(); }
    const Handle<ExpressionBaseImpl>* getChildEnd() const {
        return m_Childs.data() + m_Childs.size();
    }

    /// The child of that number; null, without a message, for a number out of range.
    Handle<ExpressionBaseImpl> getChildAt(long in_lIndex) const;

    /// Is one of the direct children this node?
    bool isChild(const ExpressionBaseImpl& in_Expression) const;

    /// Is the variable this node or one of its transitive parents? (The name says the opposite.)
    bool isDependantOf(const Handle<ExpressionBaseImpl>& in_pExpression) const;

    /// The node that really computes the value of another: variables and script functions are
    /// stripped. A variable without a value stands for itself; a function without a body gives
    /// null.
    static Handle<ExpressionBaseImpl>
    getYoungerChild(const Handle<ExpressionBaseImpl>& in_pExpression);

    /// Appends to the parent list. A parent that comes after `seal` gets no invalidation until the
    /// next `seal`.
    void addParent(const LimitedObjPtr<ExpressionBaseImpl>& in_pParent);

    /// Removes the first entry of that parent. False, with an ERROR line, when there is none.
    bool removeParent(const LimitedObjPtr<ExpressionBaseImpl>& in_pParent);

    /// Puts a new child in the place of an old one, with the checks of `addChild`, and returns its
    /// number. Of a child that stands twice, the last entry is replaced. The flag isn't looked at.
    /// Nothing is invalidated.
    unsigned long replaceChild(ExpressionBaseImpl& in_OldChild,
                               const Handle<ExpressionBaseImpl>& in_pNewChild, bool in_bCheck);

    /// Computes the value whether or not it is current: for a parent that has tested the flag.
    bool doEvaluate(LimitedObjPtr<DoubleVector>& out);

    /// As `evaluate`, but true in every case; a failure leaves `out` as it was.
    bool quickEvaluate(LimitedObjPtr<DoubleVector>& out);

    /// Marks this node and all that depends on it as not current; nothing on an invalid node.
    void invalidate() {
        if (isValid()) {
            invalidate_i();
        }
    }

    /// Prepares a finished graph for fast repeated evaluation: each node remembers the parents that
    /// it has, and each operator gets direct links to the nodes that compute its inputs. The
    /// structure is frozen from then on: only the contents of domain values may change.
    void seal();

    /// A copy of the graph below this node, with new identities, invalid and not sealed.
    Handle<ExpressionBaseImpl> copy() const;

    /// As above within one copying operation: what the copier has seen isn't copied again.
    Handle<ExpressionBaseImpl> copy(ExpressionImplCopier& inout_Copier) const;

protected:
    /// Hooks of the node kinds, called by this class. What a node computes is said by `evaluate_i`:
    /// in a sealed graph it may be called without `evaluate`, and never where the value is current.
    virtual bool configure_i(const TSHandle<VirtualFileSystem>& in_pFileSystem) = 0;
    virtual bool evaluate_i(LimitedObjPtr<DoubleVector>& out) = 0;
    virtual bool reset_i() = 0;
    virtual void seal_i();
    virtual void replaceChild_i(ExpressionBaseImpl& in_OldChild,
                                const Handle<ExpressionBaseImpl>& in_pNewChild);
    virtual Handle<ExpressionBaseImpl> copy_i(ExpressionImplCopier& inout_Copier) const = 0;
    virtual bool isDependantOf_i(const Handle<ExpressionBaseImpl>& in_pExpression) const = 0;

    /// Lists the nodes that an evaluation of this sealed node reads, in their order. False for a
    /// node that chooses among them, and for a kind that doesn't say: evaluation takes the long way
    /// there. A class that overrides `evaluate_i` of one that says overrides this too; what derives
    /// from a variable, a script function or a concatenation is left to the long way in any case.
    virtual bool getSealedInputs(std::vector<ExpressionBaseImpl*>& out_vInputs) const;

    /// Nodes that one call of `evaluateTogether_i` computes at most.
    static constexpr std::size_t MaxTogether = 8;

    /// Do several nodes of this class cost less together than one by one?
    virtual bool isBetterTogether() const { return false; }

    /// Computes this node and others of its class, the first of which it is, where all read one
    /// vector that is known, and hands out their values in their order. False, and they are as they
    /// were, for all else: they are computed one by one then.
    virtual bool evaluateTogether_i(ExpressionBaseImpl* const* in_ppNodes, std::size_t in_uiNodes,
                                    LimitedObjPtr<DoubleVector>* out_pValues);

    /// Is the value, wherever its only input has elements, the number that a reduction makes of
    /// them? Then nothing else comes of an evaluation, and it may be left to the reduction, which
    /// writes over the number that the node handed out before.
    virtual bool getReduction(Reductions::Kind& out_eKind) const;

    /// Links a child and returns its number, or `NoChild` when a check refuses it. Without the
    /// check a cycle can be made, and nothing works on a cycle.
    unsigned long addChild(const Handle<ExpressionBaseImpl>& in_pChild, bool in_bCheck);

    /// Is the node among the transitive parents of this one? Never for a constant.
    bool isParent(const ExpressionBaseImpl& in_Expression) const;

    /// Whether `seal` has been here.
    bool isSealed() const { return m_bSealed; }

    /// As `invalidate`.
    void invalidate_i();
    void quickInvalidate() { invalidate(); }

    /// The part of a copy that every kind shares.
    void fill(const ExpressionBaseImpl& in_Source, ExpressionImplCopier& inout_Copier);

    /// The value of a node by the shortest way: its flag is read here, and its failure isn't told.
    static void readValue(ExpressionBaseImpl& in_Node, LimitedObjPtr<DoubleVector>& out) {
        if (in_Node.isValid()) {
            out = in_Node.m_pValue;
        } else {
            in_Node.doEvaluate(out);
        }
    }

    /// False, with the ERROR line that names this node, when the pointer was never filled. Whoever
    /// is about to read through a pointer from below asks this first.
    bool checkValue(const LimitedObjPtr<DoubleVector>& in_pValue) const {
        return !in_pValue.isNull() || reportNoValue();
    }
    /// Writes the ERROR line "no value to compute from" for this node; returns false.
    bool reportNoValue() const;

    /// Forgets the cached pointer, when what it points at may go.
    void forgetValue() { m_pValue = nullptr; }

    /// Is the pointer what the node handed out last?
    static bool isValueOf(const ExpressionBaseImpl& in_Node,
                          const LimitedObjPtr<DoubleVector>& in_pValue) {
        return in_Node.m_pValue == in_pValue;
    }

    /// Nodes that a node has read, and holds because its cached pointer leads into one of them.
    using FormerNodes = std::vector<Handle<ExpressionBaseImpl>>;

    /// For a valid node whose value comes from another that is about to be replaced: holds whatever
    /// the cached pointer leads into, and, where it is known, nothing else.
    void keepFormer(const Handle<ExpressionBaseImpl>& in_pOld, FormerNodes& inout_vFormer) const;

    /// The nodes that this one holds like that, and the one that it passes on now; null if it
    /// passes on none.
    virtual const FormerNodes* getFormer(Handle<ExpressionBaseImpl>& out_pPassedOn) const;

    /// A handle of this node out of a parent's children, for what may take the last handle away
    /// beneath a running operation; null if no parent has one.
    Handle<ExpressionBaseImpl> holdByParent() const;

    /// What this node reads isn't what it was: a plan that was made of it can't be used any more.
    void noteChange() const;

    /// Takes one entry of this node out of another's parents, for a destructor: as `removeParent`,
    /// but what depends on the other stays as it is.
    void unregisterFrom(ExpressionBaseImpl& inout_Other);

    /// For a node that registered itself as a parent of another beyond its links and is about to
    /// die or to forget that other: turns its entries beyond the links into those of a node that is
    /// never valid, so that nothing follows a parent that is dead.
    void retireFrom(ExpressionBaseImpl& inout_Child);

    /// The same for many nodes, each any number of times; nulls are passed over.
    void retireFrom(const std::vector<Handle<ExpressionBaseImpl>>& in_vChilds);

private:
    /// What a link to a child would make.
    enum class Loop { None, OnParent, OnDependant };

    friend class DomainValueKeeper;
    friend class GraphWalk;
    friend class SealedPlan;

    bool checkNewChild(const Handle<ExpressionBaseImpl>& in_pChild) const;
    Loop findLoop(const Handle<ExpressionBaseImpl>& in_pChild) const;
    bool evaluateSealed(LimitedObjPtr<DoubleVector>& out);
    bool evaluateTheLongWay(LimitedObjPtr<DoubleVector>& out);
    void invalidateTheLongWay();
    void joinPlan(const boost::intrusive_ptr<SealedPlan>& in_pPlan, std::uint32_t in_uiIndex);
    bool eraseParent(const LimitedObjPtr<ExpressionBaseImpl>& in_pParent);
    void sealAlongPaths();

    // What walks over a whole graph touch stands together: such a walk waits for memory.
    unsigned long m_id;
    /// Most nodes have one child or two, which then stand in the node itself.
    boost::container::small_vector<Handle<ExpressionBaseImpl>, 2> m_Childs;
    /// What the last walk that came here left behind: its number and, if it makes a list, the place
    /// of this node. No walk needs a table of the nodes that it has seen.
    std::uint64_t m_uiLastWalk = 0;
    std::uint32_t m_uiWalkPlace = 0;
    ParentList m_Parents;
    bool m_bSealed = false;
    std::uint8_t m_bValid = 0;
    // What a frame touches stands together as well, down to the plan.
    std::uint32_t m_uiPlanIndex = 0;
    LimitedObjPtr<DoubleVector> m_pValue;
    /// The next node of a running invalidation: a list through the nodes needs neither the stack
    /// nor memory, however deep the graph.
    ExpressionBaseImpl* m_pNextInvalid = nullptr;
    /// Where the validity flag is: in the node, or side by side with those of its plan.
    std::uint8_t* m_pValid = &m_bValid;
    boost::intrusive_ptr<SealedPlan> m_pPlan;

    // What frames and walks don't touch.
    SourcePosition m_Position;
    /// What few nodes have; null for the others.
    struct Labels {
        std::string m_strType;
        std::string m_strDotName;
        /// What was set, or the text of the position.
        std::string m_strSourceInfo;
    };
    Labels& labels() const;
    mutable std::unique_ptr<Labels> m_pLabels;
};

} // namespace Velmora::Math::Xpr
