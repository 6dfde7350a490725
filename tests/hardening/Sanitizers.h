#ifndef AKVO_TESTS_HARDENING_SANITIZERS_H
#define AKVO_TESTS_HARDENING_SANITIZERS_H

// AKVO_UNDER_ASAN is defined when the build runs under AddressSanitizer, with GCC or clang.
#if defined(__SANITIZE_ADDRESS__)
#define AKVO_UNDER_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define AKVO_UNDER_ASAN 1
#endif
#endif

#endif
