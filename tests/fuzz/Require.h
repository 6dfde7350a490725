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
        std::fprintf(stderr, "fuzz invariant broken: %s\n  %s\n", invariant, detail.c_str());
        std::abort();
    }
}

} // namespace fuzz
} // namespace akvo

#endif
