#include "NtpTime.h"

#include <cmath>
#include <time.h>

namespace velmo {
namespace kvo {
namespace sim {

namespace {

// Seconds from 1900-01-01 (NTP era 0) to 1970-01-01 (Unix epoch).
constexpr std::uint64_t ntpUnixOffset = 2208988800ULL;

} // namespace

std::uint64_t ntpNow()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    std::uint64_t seconds = static_cast<std::uint64_t>(now.tv_sec) + ntpUnixOffset;
    std::uint64_t fraction = (static_cast<std::uint64_t>(now.tv_nsec) << 32) / 1000000000ULL;
    return (seconds << 32) | fraction;
}

std::uint64_t ntpFromMilliseconds(std::uint64_t milliseconds)
{
    return (milliseconds << 32) / 1000ULL;
}

std::uint64_t ntpFromFractionalMilliseconds(double milliseconds)
{
    return static_cast<std::uint64_t>(std::llround(milliseconds * 4294967.296));
}

} // namespace sim
} // namespace kvo
} // namespace velmo
