// What the sanitizers are told about all tests.

// Both stop at an allocation that can't succeed unless they are told to let it fail.

#if defined(__SANITIZE_ADDRESS__)

// When an XML archive is read, Boost compares a tag with the expected name over the length of the
// tag. The comparison ends at the first difference, at the latest at the end of the name; the
// strict check looks at the whole length.
extern "C" const char* __asan_default_options() { // NOLINT(bugprone-reserved-identifier)
    return "allocator_may_return_null=1:strict_memcmp=0";
}

#elif defined(__SANITIZE_THREAD__)

extern "C" const char* __tsan_default_options() { // NOLINT(bugprone-reserved-identifier)
    return "allocator_may_return_null=1";
}

#endif
