#ifndef AKVO_TESTS_HARDENING_FIXEDENGINE_H
#define AKVO_TESTS_HARDENING_FIXEDENGINE_H

#include "velmo/kvo/common/LipSyncNtpTimestamps.h"

#include <string>

namespace akvo {
namespace test {

using velmo::kvo::common::LipSyncNtpTimestamps;

// What the engine simulator reports when started with --fixed.
extern const LipSyncNtpTimestamps fixedTimestamps;
// Values no answer carries: a failed call must leave them in the caller's record.
extern const LipSyncNtpTimestamps untouchedTimestamps;

bool sameTimestamps(const LipSyncNtpTimestamps& a, const LipSyncNtpTimestamps& b);

// A Service call whose connection the engine hung up on.
extern const char closedByDistantText[];
// A Service call whose socket read or write failed with `error`.
std::string ioErrorText(int error);

// The GetAudioTs answer, without its end marker, as the --fixed simulator
// serving at `socketPath` sends it; asked with a plain socket. Empty when the
// simulator did not answer.
std::string rawGetAudioTsAnswer(const std::string& socketPath);

} // namespace test
} // namespace akvo

#endif
