#pragma once

#include <cstddef>
#include <cstdint>

/// What libFuzzer calls with each input; a target defines it. Returns 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* in_pData, std::size_t in_uiSize);
