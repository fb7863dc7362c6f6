#pragma once

#include <cstdlib>

namespace Velmora::Testing {

/// With VELMORA_TEST_EVERY_CASE set the tests that go through many cases go through all of them,
/// for minutes; without it they take about a second and pass over most.
inline bool isEveryCaseAsked() {
    const char* szValue = std::getenv("VELMORA_TEST_EVERY_CASE");
    return szValue != nullptr && *szValue != '\0';
}

} // namespace Velmora::Testing
