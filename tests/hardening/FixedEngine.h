#ifndef AKVO_TESTS_HARDENING_FIXEDENGINE_H
#define AKVO_TESTS_HARDENING_FIXEDENGINE_H

#include "ResultTexts.h"
#include "velmo/kvo/common/LipSyncNtpTimestamps.h"

#include <cstring>
#include <string>

namespace akvo {
namespace test {

using velmo::kvo::common::LipSyncNtpTimestamps;

// What the engine simulator reports when started with --fixed.
const LipSyncNtpTimestamps fixedTimestamps = {16045690984833536ULL, 16045690985263104ULL,
                                              16045690984404992ULL, 40};
// Values no answer carries: a failed call must leave them in the caller's record.
const LipSyncNtpTimestamps untouchedTimestamps = {1, 2, 3, 4};

inline bool sameTimestamps(const LipSyncNtpTimestamps& a, const LipSyncNtpTimestamps& b)
{
    return a.tCap == b.tCap && a.tRdr == b.tRdr && a.tRcv == b.tRcv && a.jbmDepth == b.jbmDepth;
}

inline std::string ioErrorText(int error)
{
    return "An error has occured in the transport layer (Code 1005): {Protocol error (Code 5902): "
           "{Link error (Code 40003): {I/O error (Code 10004): {" +
           errnoText(error) + "}}}}";
}

} // namespace test
} // namespace akvo

#endif
