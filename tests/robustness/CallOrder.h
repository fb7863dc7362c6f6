#pragma once

#include <cstddef>
#include <cstdio>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include <velmora/math/DoubleVector.h>

#include "robustness/EveryCase.h"
#include "robustness/ScriptFiles.h"

/// What the calls in any order are made with.
namespace Velmora::Testing::CallOrder {

inline constexpr const char* Script = "inputvar x\ny = sum(x) + 1\nf(a) = a + x\nz = f(x)\n";

inline TSHandle<VirtualFileSystem> newFiles() {
    static const std::map<std::string, std::string> s_mapTexts{{"./s.xpr", Script}};
    return TSHandle<VirtualFileSystem>(new ScriptFiles(s_mapTexts));
}

inline const Math::DoubleVector& someVector() {
    static const Math::DoubleVector s_vVector{1.0, 2.0};
    return s_vVector;
}

inline void report(const char* in_szClass, std::size_t in_uiPairs) {
    EXPECT_GT(in_uiPairs, std::size_t(0));
    if (isEveryCaseAsked()) {
        std::printf("%s: %zu pairs\n", in_szClass, in_uiPairs);
    }
}

/// The condition of many an operation that is given a null name.
inline constexpr const char* NullName = "0 != in_szName";

/// What an evaluator says to a script or an expression that comes too late.
inline constexpr const char* LinkedAlready =
    "!m_bLinked && \"evaluator contains linked expressions.  Can't \" "
    "\"add expression to evaluator when the evaluator \" "
    "\"when the eveluator contains linked expressions.\"";

inline std::string notConfigured(const std::string& in_strOperation) {
    return "!m_pDictionnary.isNull() && \"please call configure prior to " + in_strOperation +
           "()\"";
}

inline std::string notLinked(const std::string& in_strOperation) {
    return "m_bLinked && \"please call link() prio to call " + in_strOperation + "()\"";
}

} // namespace Velmora::Testing::CallOrder
