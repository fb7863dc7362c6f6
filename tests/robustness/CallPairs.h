#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/AssertionCapture.h"

namespace Velmora::Testing {

/// The conditions that fail, and behind them the results of a subject that tells them.
using Conditions = std::vector<std::string>;

/// A call that gave false or null.
inline constexpr const char* Refused = "-> false";

/// A subject whose calls say what they gave.
struct TellingSubject {
    void tell(bool in_bResult) {
        if (!in_bResult) {
            m_vTold.push_back(Refused);
        }
    }
    Conditions m_vTold;
};

/// What has to come of a call that doesn't assert.
inline Conditions resultIs(bool in_bResult) {
    return in_bResult ? Conditions() : Conditions{Refused};
}

/// What has to come of a call that asserts and gives false.
inline Conditions refusedWith(const std::string& in_strCondition) {
    return {in_strCondition, Refused};
}

/// One operation of a class, with certain arguments.
template <class Subject>
struct Operation {
    const char* m_szName;
    std::function<void(Subject&)> m_Call;
    /// What has to fail in the state that the calls before have left; takes the call into account.
    std::function<Conditions(typename Subject::State&)> m_Expect;
};

/// For operations that may be called at any time.
template <class State>
Conditions nothing(State&) {
    return Conditions();
}

/// Calls every pair of operations, in both orders, on a subject on which none, one, ... or all of
/// the prepared operations have been called before, and compares what fails with what has to.
/// Returns the number of pairs.
template <class Subject>
std::size_t callPairs(const std::vector<Operation<Subject>>& in_vOperations,
                      const std::vector<const char*>& in_vszPrepared = {}) {
    std::vector<const Operation<Subject>*> vPrepared;
    std::size_t uiPairs = 0;
    AssertionCapture assertions;
    for (std::size_t uiPrepared = 0;; ++uiPrepared) {
        for (const auto& first : in_vOperations) {
            for (const auto& second : in_vOperations) {
                Subject subject;
                typename Subject::State state;
                auto vCalls = vPrepared;
                vCalls.insert(vCalls.end(), {&first, &second});
                for (const auto* pOperation : vCalls) {
                    const Conditions vExpected = pOperation->m_Expect(state);
                    assertions.clear();
                    pOperation->m_Call(subject);
                    Conditions vFound = assertions.expressions();
                    if constexpr (std::is_base_of_v<TellingSubject, Subject>) {
                        const Conditions vTold = std::exchange(subject.m_vTold, {});
                        vFound.insert(vFound.end(), vTold.begin(), vTold.end());
                    }
                    EXPECT_EQ(vFound, vExpected)
                        << pOperation->m_szName << ", of the pair " << first.m_szName << ", "
                        << second.m_szName << ", behind " << uiPrepared << " others";
                }
                ++uiPairs;
            }
        }
        if (uiPrepared == in_vszPrepared.size()) {
            return uiPairs;
        }
        for (const auto& operation : in_vOperations) {
            if (std::string(operation.m_szName) == in_vszPrepared[uiPrepared]) {
                vPrepared.push_back(&operation);
            }
        }
    }
}

} // namespace Velmora::Testing
