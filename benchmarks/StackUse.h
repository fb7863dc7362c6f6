#pragma once

#include <cstddef>
#include <functional>

namespace Velmora::Benchmarks {

/// How many bytes of stack the function uses at most, up to a mebibyte, on a thread of its own.
std::size_t measureStackUse(const std::function<void()>& in_Function);

} // namespace Velmora::Benchmarks
