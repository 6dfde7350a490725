#ifndef VELMO_KVO_SIM_OPTIONS_H
#define VELMO_KVO_SIM_OPTIONS_H

#include "FaultPlan.h"

#include <optional>
#include <string>

namespace velmo {
namespace kvo {
namespace sim {

struct Options
{
    std::string socketPath;
    bool verbose = false;
    bool idle = false;
    bool fixed = false;
    FaultPlan faults;
};

// Exit status for bad input to the simulator itself.
constexpr int usageError = 2;

// Reads the command line into `options`. Returns an exit status when the
// program should stop at once: 0 after --help (printed on standard output),
// usageError after printing a one-line error on standard error.
std::optional<int> parseOptions(int argc, char** argv, Options& options);

} // namespace sim
} // namespace kvo
} // namespace velmo

#endif
