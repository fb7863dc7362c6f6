#pragma once

#include <velmora/CachedLLLogger.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>

namespace Velmora::Math::Xpr {

/// Gives a function what a script wrote at a call of it, by position: first to first.
///
/// Both operations give false, with an ERROR line at the position of the call, when the call has
/// another number than the function expects; nothing is given then.
class CallBinder {
public:
    /// The logger outlives the binder.
    explicit CallBinder(const CachedLLLogger& in_Logger) : m_Logger(in_Logger) {}

    bool copyFunctionParameters(FunctionBaseImpl& out_Function,
                                const FunctionBaseImpl& in_Unknown) const;
    bool copyFunctionArguments(FunctionBaseImpl& out_Function,
                               const FunctionBaseImpl& in_Unknown) const;

private:
    const CachedLLLogger& getLogger() const { return m_Logger; }
    void logStart(const char* in_szOperation, const char* in_szWhat,
                  const FunctionBaseImpl& in_Unknown, const FunctionBaseImpl& in_Function) const;
    bool checkCount(std::size_t in_uiGiven, std::size_t in_uiExpected, const char* in_szWhat,
                    const FunctionBaseImpl& in_Unknown, const FunctionBaseImpl& in_Function) const;

    const CachedLLLogger& m_Logger;
};

} // namespace Velmora::Math::Xpr
