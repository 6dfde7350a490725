#ifndef VELMO_KVO_SIM_OPTIONS_H
#define VELMO_KVO_SIM_OPTIONS_H

#include "FaultPlan.h"
#include "Scenario.h"

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
    std::optional<scenario::Scenario> scenario;
};

// Reads the command line into `options`. Returns an exit status when the
// program should stop at once, as tools::parseCommandLine does; faults that
// cannot be read are usage errors too.
std::optional<int> parseOptions(int argc, char** argv, Options& options);

} // namespace sim
} // namespace kvo
} // namespace velmo

#endif
