#ifndef VELMO_KVO_COMMON_LIPSYNCNTPTIMESTAMPS_H
#define VELMO_KVO_COMMON_LIPSYNCNTPTIMESTAMPS_H

namespace velmo {
namespace kvo {
namespace common {

// The audio path's timestamps as the engine reports them. The three
// timestamps are NTP 64-bit values and the depth is the engine's own unit;
// the library passes all four through unchanged.
struct LipSyncNtpTimestamps
{
    unsigned long long tCap;
    unsigned long long tRdr;
    unsigned long long tRcv;
    unsigned long long jbmDepth;
};

} // namespace common
} // namespace kvo
} // namespace velmo

#endif
