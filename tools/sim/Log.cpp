#include "Log.h"

#include <cstdio>

namespace velmo {
namespace kvo {
namespace sim {

const char* const programName = "akvo-lipsync-sim";

void Log::verbose(const std::string& line) const
{
    if (_verbose) {
        error(line);
    }
}

void Log::error(const std::string& line) const
{
    std::fprintf(stderr, "%s: %s\n", programName, line.c_str());
}

} // namespace sim
} // namespace kvo
} // namespace velmo
