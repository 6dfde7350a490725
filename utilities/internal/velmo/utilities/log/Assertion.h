#ifndef VELMO_UTILITIES_LOG_ASSERTION_H
#define VELMO_UTILITIES_LOG_ASSERTION_H

namespace velmo {
namespace utilities {

// Stops the process after logging `siteText` at the fatal level with the tag
// "VELMO". Each site passes its complete, fixed text ("path:line: Assertion
// cond failed: reason"), which is part of the library's observable output.
[[noreturn]] void failAssertion(const char* siteText);

inline void assertThat(bool condition, const char* siteText)
{
    if (!condition) {
        failAssertion(siteText);
    }
}

} // namespace utilities
} // namespace velmo

#endif
