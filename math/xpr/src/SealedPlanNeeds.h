#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "FlagPattern.h"
#include "ScalarProgram.h"
#include "SealedPlan.h"
#include "VectorProgram.h"

namespace Velmora::Math::Xpr {

/// What is done in evaluations of a set that begin alike: the program for scalars if it's usable,
/// else the other.
struct SealedPlan::Program {
    FlagPattern m_Pattern;
    ScalarProgram m_Scalars;
    VectorProgram m_Vectors;
};

/// What a node that was asked for needs, itself included.
struct SealedPlan::Needs {
    NodeSet m_Set;
    /// The order in which the recursion comes to the nodes.
    std::vector<Index> m_vOrder;
    /// Is that the order of the list, as far as anybody can see?
    bool m_bInOrder = false;
    /// Has all of it been computed? From then on every variable points where it always will: one
    /// that was computed ahead of its turn can be taken back without a trace.
    bool m_bComputed = false;
    /// Programs for the patterns of flags that came up last: a host that sets all inputs ahead of
    /// one call and a single one ahead of the next has two. None where there is no room for any.
    std::vector<Program> m_Programs;
    /// Does a program of vectors go on, whose nodes may evaluate anything on the way?
    bool m_bRunning = false;
    class Running {
    public:
        explicit Running(Needs& inout_Needs)
            : m_Needs(inout_Needs), m_bOuter(inout_Needs.m_bRunning) {
            m_Needs.m_bRunning = true;
        }
        ~Running() { m_Needs.m_bRunning = m_bOuter; }
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;

    private:
        Needs& m_Needs;
        bool m_bOuter;
    };
    /// Are all nodes of kinds that a program for scalars knows?
    bool m_bMayBeScalars = false;
    /// For the programs, the flags of the set word after word, those between its words included,
    /// in whole blocks.
    std::vector<Flags> m_vFlags;
    std::size_t m_uiFirstPlace = 0;
    /// A digest of the flags that were set ahead of the last evaluation without a program, and of
    /// the plan's scalars.
    Flags m_Pattern = 0;
    /// Which program gives way to the next.
    std::size_t m_uiNext = 0;

    /// The program for the plan's scalars and flags; null if there is none.
    Program* findProgram(const SealedPlan& in_Plan) {
        for (Program& program : m_Programs) {
            if (program.m_Pattern.fits(in_Plan, m_vFlags, m_uiFirstPlace)) {
                return &program;
            }
        }
        return nullptr;
    }
};

} // namespace Velmora::Math::Xpr
