// Goes into the mutated copy of the support library. Which mutant is at work, if any, is read once
// from VELMORA_MUTANT; with VELMORA_MUTANTS_REACHED set, the mutants that are passed are noted.

#include <cstdlib>

#include "Mutation.h"

namespace Mutation {

namespace {

struct Choice {
    Choice() {
        const char* const szMutant = std::getenv("VELMORA_MUTANT");
        m_iMutant = szMutant == nullptr ? -1 : std::atoi(szMutant);
        m_bRecord = std::getenv("VELMORA_MUTANTS_REACHED") != nullptr;
    }

    int m_iMutant;
    bool m_bRecord;
};

// Ahead of all static objects of the library, whose construction is mutated as well.
__attribute__((init_priority(101))) Choice s_Choice;
bool s_aReached[MaxMutants];

} // namespace

bool active(int in_iMutant) {
    if (s_Choice.m_bRecord) {
        s_aReached[in_iMutant] = true;
    }
    return s_Choice.m_iMutant == in_iMutant;
}

bool takeReached(int in_iMutant) {
    const bool bReached = s_aReached[in_iMutant];
    s_aReached[in_iMutant] = false;
    return bReached;
}

} // namespace Mutation
