#ifndef VELMO_KVO_SIM_FAULTPLAN_H
#define VELMO_KVO_SIM_FAULTPLAN_H

#include "Fault.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace velmo {
namespace kvo {
namespace sim {

// The faults the user asked for, by request number. A rule for one request
// number takes precedence over the `*` rule; two rules for the same request
// are refused, so that no order between them has to be guessed.
class FaultPlan
{
public:
    bool add(const std::string& rule, std::string& error);
    // One fault per line; blank lines and lines starting with '#' are skipped.
    bool addFile(const std::string& path, std::string& error);
    const Fault* find(std::uint64_t requestNumber) const;

private:
    std::map<std::uint64_t, Fault> _faults;
};

} // namespace sim
} // namespace kvo
} // namespace velmo

#endif
