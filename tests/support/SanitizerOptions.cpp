// What the address sanitizer is told about the libraries beneath ours.

#if defined(__SANITIZE_ADDRESS__)

// When an XML archive is read, Boost compares a tag with the expected name over the length of the
// tag. The comparison ends at the first difference, at the latest at the end of the name; the
// strict check looks at the whole length.
extern "C" const char* __asan_default_options() { // NOLINT(bugprone-reserved-identifier)
    return "strict_memcmp=0";
}

#endif
