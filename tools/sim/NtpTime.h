#ifndef VELMO_KVO_SIM_NTPTIME_H
#define VELMO_KVO_SIM_NTPTIME_H

#include <cstdint>

namespace velmo {
namespace kvo {
namespace sim {

// The host's wall clock as a 64-bit NTP timestamp: seconds since 1900 in the
// upper 32 bits, the fraction of a second in the lower 32.
std::uint64_t ntpNow();

// A duration in the same units, so it can be added to an NTP timestamp.
std::uint64_t ntpFromMilliseconds(std::uint64_t milliseconds);
// The same for a span with a fraction of a millisecond, rounded to the nearest unit.
std::uint64_t ntpFromFractionalMilliseconds(double milliseconds);

} // namespace sim
} // namespace kvo
} // namespace velmo

#endif
