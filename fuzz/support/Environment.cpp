// What all targets have in common: the logging, and what the sanitizers are told.
//
// With VELMORA_FUZZ_LOG_LEVEL set (TRACE, DEBUG, ...), all messages from that level on are
// formatted, and go nowhere. Otherwise nothing is logged.

#include <cstdlib>

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>
#include <log4cplus/nullappender.h>

// libFuzzer's hooks have names of their own.
// NOLINTBEGIN(bugprone-reserved-identifier)

// When an XML archive is read, Boost compares a tag with the expected name over the length of the
// tag. The comparison ends at the first difference, at the latest at the end of the name; the
// strict check looks at the whole length.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() {
    return "strict_memcmp=0:malloc_context_size=12";
}

extern "C" const char* __ubsan_default_options();
extern "C" const char* __ubsan_default_options() {
    return "print_stacktrace=1";
}

// NOLINTEND(bugprone-reserved-identifier)

extern "C" int LLVMFuzzerInitialize(int* inout_pCount, char*** inout_pArguments);
extern "C" int LLVMFuzzerInitialize(int* /*inout_pCount*/, char*** /*inout_pArguments*/) {
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    const char* szLevel = std::getenv("VELMORA_FUZZ_LOG_LEVEL");
    if (szLevel == nullptr || *szLevel == '\0') {
        root.setLogLevel(log4cplus::OFF_LOG_LEVEL);
    } else {
        root.setLogLevel(log4cplus::getLogLevelManager().fromString(szLevel));
        root.addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender));
    }
    return 0;
}
