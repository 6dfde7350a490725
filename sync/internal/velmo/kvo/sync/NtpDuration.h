#ifndef VELMO_KVO_SYNC_NTPDURATION_H
#define VELMO_KVO_SYNC_NTPDURATION_H

#include <cstdint>

namespace velmo {
namespace kvo {
namespace sync {

// 64-bit NTP timestamps count 2^-32 s. Differences are taken modulo 2^64 and
// read as signed, so a span across the seconds field's wrap (year 2036) is as
// short as it really is, and a later time before an earlier one comes out
// negative.
inline double ntpSpanMs(std::uint64_t from, std::uint64_t to)
{
    return static_cast<double>(static_cast<std::int64_t>(to - from)) * 1000.0 / 4294967296.0;
}

// A span in milliseconds as an NTP difference, rounded to the nearest unit.
inline std::uint64_t ntpFromMs(double ms)
{
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(ms * 4294967.296 + (ms < 0 ? -0.5 : 0.5)));
}

} // namespace sync
} // namespace kvo
} // namespace velmo

#endif
