#pragma once

#include <velmora/Assertion.h>

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

namespace Velmora {

/// Collects the assertions that fail while it lives, in place of the process's handler.
///
/// The innermost one collects; the former handler is restored on destruction. Thread-safe.
class AssertionCapture {
public:
    struct Failure {
        std::string expression;
        std::string file;
        int line;
    };

    AssertionCapture() : m_pOuter(innermost()) {
        innermost() = this;
        m_pFormer = Assertion::setHandler(&AssertionCapture::handle);
    }

    ~AssertionCapture() {
        Assertion::setHandler(m_pFormer);
        innermost() = m_pOuter;
    }

    AssertionCapture(const AssertionCapture&) = delete;
    AssertionCapture& operator=(const AssertionCapture&) = delete;

    std::vector<Failure> failures() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_vFailures;
    }

    /// The texts of the failed conditions, in order.
    std::vector<std::string> expressions() const {
        std::vector<std::string> vExpressions;
        for (const Failure& failure : failures()) {
            vExpressions.push_back(failure.expression);
        }
        return vExpressions;
    }

    std::size_t count() const { return failures().size(); }

    /// How often a condition of exactly that text failed.
    std::size_t count(const std::string& in_strExpression) const {
        const std::vector<std::string> vExpressions = expressions();
        return static_cast<std::size_t>(
            std::count(vExpressions.begin(), vExpressions.end(), in_strExpression));
    }

    /// Forgets the failures collected so far.
    void clear() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_vFailures.clear();
    }

private:
    static AssertionCapture*& innermost() {
        static AssertionCapture* s_pInnermost = nullptr;
        return s_pInnermost;
    }

    static void handle(const char* in_szExpression, const char* in_szFile, int in_iLine) {
        AssertionCapture& capture = *innermost();
        const std::lock_guard<std::mutex> lock(capture.m_mutex);
        capture.m_vFailures.push_back(Failure{in_szExpression, in_szFile, in_iLine});
    }

    AssertionCapture* m_pOuter;
    Assertion::Handler m_pFormer = nullptr;
    mutable std::mutex m_mutex;
    std::vector<Failure> m_vFailures;
};

} // namespace Velmora
