#pragma once

#include <pthread.h>

#include <cstddef>
#include <functional>

#include <gtest/gtest.h>

namespace Velmora::Testing {

constexpr std::size_t SmallStack = std::size_t(256) * 1024;

/// Calls the function on a thread of its own with a stack of that size.
inline void runOnStack(std::size_t in_uiStackSize, std::function<void()> in_Function) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, in_uiStackSize), 0);
    pthread_t thread;
    const auto run = [](void* in_pFunction) -> void* {
        (*static_cast<std::function<void()>*>(in_pFunction))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &in_Function), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

} // namespace Velmora::Testing
