#ifndef AKVO_TESTS_SUPPORT_TIMESTAMPS_H
#define AKVO_TESTS_SUPPORT_TIMESTAMPS_H

#include "velmo/kvo/common/LipSyncNtpTimestamps.h"

namespace akvo {
namespace test {

using velmo::kvo::common::LipSyncNtpTimestamps;

// What akvo-lipsync-sim --fixed reports (fixedTimestampTexts).
const LipSyncNtpTimestamps fixedTimestamps = {16045690984833536ULL, 16045690985263104ULL,
                                              16045690984404992ULL, 40};
// Values no answer carries: a failed call must leave them in the caller's record.
const LipSyncNtpTimestamps untouchedTimestamps = {1, 2, 3, 4};

inline bool sameTimestamps(const LipSyncNtpTimestamps& a, const LipSyncNtpTimestamps& b)
{
    return a.tCap == b.tCap && a.tRdr == b.tRdr && a.tRcv == b.tRcv && a.jbmDepth == b.jbmDepth;
}

} // namespace test
} // namespace akvo

#endif
