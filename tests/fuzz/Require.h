#ifndef AKVO_FUZZ_REQUIRE_H
#define AKVO_FUZZ_REQUIRE_H

#include <cstdio>
#include <cstdlib>
#include <string>

namespace akvo {
namespace fuzz {

// A broken invariant is a finding like a crash: say which one and abort, so
// that libFuzzer keeps the input that broke it.
inline void require(bool condition, const char* invariant, const std::string& detail = std::string())
{
    if (!condition) {
        std::fprintf(stderr, "fuzz invariant broken: %s\n", invariant);
        if (!detail.empty()) {
            std::fprintf(stderr, "  %s\n", detail.c_str());
        }
        std::abort();
    }
}

inline bool startsWith(const std::string& text, const std::string& prefix)
{
    return text.compare(0, prefix.size(), prefix) == 0;
}

inline bool endsWith(const std::string& text, const std::string& suffix)
{
    return text.size() >= suffix.size() &&
           text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

} // namespace fuzz
} // namespace akvo

#endif
