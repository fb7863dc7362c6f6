#pragma once

#include <velmora/DefaultStaticMemAllocator.h>
#include <velmora/NoSizeMemAllocator.h>

#include <cstddef>

/// Macros that put a class under an account of the allocators.
///
/// They stand in the class's public part, declare `getMemAccountName()` and the class-level
/// allocation, and leave the access at public. Allocation gives null when memory is exhausted, so
/// `new T` of such a class is null then and constructs nothing. A derived class without an account
/// of its own allocates under its base's.

// Each library has an account object of its own: one for all would keep a plugin from being
// unloaded. In a class that no other file knows the attribute says nothing new.
#define VELMORA_MEM_ACCOUNT_NAME(account)                                                          \
    static const char* getMemAccountName() noexcept {                                              \
        return account;                                                                            \
    }                                                                                              \
    _Pragma("GCC diagnostic push") _Pragma("GCC diagnostic ignored \"-Wattributes\"")              \
        [[gnu::visibility("hidden")]] static ::Velmora::MemAccountName&                            \
        velmoraMemAccount() noexcept {                                                             \
        static ::Velmora::MemAccountName s_Account(account);                                       \
        return s_Account;                                                                          \
    }                                                                                              \
    _Pragma("GCC diagnostic pop")

#define VELMORA_MEM_ACCOUNT_PLACEMENT_FORMS                                                        \
    static void* operator new(std::size_t, void* in_pPlace) noexcept {                             \
        return in_pPlace;                                                                          \
    }                                                                                              \
    static void* operator new[](std::size_t, void* in_pPlace) noexcept {                           \
        return in_pPlace;                                                                          \
    }                                                                                              \
    static void operator delete(void*, void*) noexcept {}                                          \
    static void operator delete[](void*, void*) noexcept {}

// What the next two stand for are declarations.
// NOLINTBEGIN(bugprone-macro-parentheses)

/// Account through `DefaultStaticMemAllocator`, which counts bytes too.
#define VELMORA_MEM_ACCOUNT(account)                                                               \
public:                                                                                            \
    static void* operator new(std::size_t in_uiSize) noexcept {                                    \
        return ::Velmora::DefaultStaticMemAllocator::allocate(in_uiSize, velmoraMemAccount());     \
    }                                                                                              \
    static void* operator new[](std::size_t in_uiSize) noexcept {                                  \
        return ::Velmora::DefaultStaticMemAllocator::allocate(in_uiSize, velmoraMemAccount());     \
    }                                                                                              \
    static void operator delete(void* in_pBlock, std::size_t in_uiSize) noexcept {                 \
        ::Velmora::DefaultStaticMemAllocator::deallocate(in_pBlock, in_uiSize,                     \
                                                         velmoraMemAccount());                     \
    }                                                                                              \
    static void operator delete[](void* in_pBlock, std::size_t in_uiSize) noexcept {               \
        ::Velmora::DefaultStaticMemAllocator::deallocate(in_pBlock, in_uiSize,                     \
                                                         velmoraMemAccount());                     \
    }                                                                                              \
    VELMORA_MEM_ACCOUNT_NAME(account)                                                              \
    VELMORA_MEM_ACCOUNT_PLACEMENT_FORMS

/// Account through `NoSizeMemAllocator`, which counts blocks only.
#define VELMORA_MEM_ACCOUNT_NO_SIZE(account)                                                       \
public:                                                                                            \
    static void* operator new(std::size_t in_uiSize) noexcept {                                    \
        return ::Velmora::NoSizeMemAllocator::allocate(in_uiSize, velmoraMemAccount());            \
    }                                                                                              \
    static void* operator new[](std::size_t in_uiSize) noexcept {                                  \
        return ::Velmora::NoSizeMemAllocator::allocate(in_uiSize, velmoraMemAccount());            \
    }                                                                                              \
    static void operator delete(void* in_pBlock, std::size_t) noexcept {                           \
        ::Velmora::NoSizeMemAllocator::deallocate(in_pBlock, velmoraMemAccount());                 \
    }                                                                                              \
    static void operator delete[](void* in_pBlock, std::size_t) noexcept {                         \
        ::Velmora::NoSizeMemAllocator::deallocate(in_pBlock, velmoraMemAccount());                 \
    }                                                                                              \
    VELMORA_MEM_ACCOUNT_NAME(account)                                                              \
    VELMORA_MEM_ACCOUNT_PLACEMENT_FORMS

// NOLINTEND(bugprone-macro-parentheses)
