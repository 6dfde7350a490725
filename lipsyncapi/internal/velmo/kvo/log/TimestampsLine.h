#ifndef VELMO_KVO_LOG_TIMESTAMPSLINE_H
#define VELMO_KVO_LOG_TIMESTAMPSLINE_H

#include "velmo/kvo/common/LipSyncNtpTimestamps.h"
#include "velmo/kvo/log/ApiLog.h"

namespace velmo {
namespace kvo {
namespace log {

// The line of a getAudioTimestamps call, written to `Logger`'s log; the
// benchmarks price it with a log that drops the line.
template <class Logger, class R>
void logTimestampsRequest(const common::LipSyncNtpTimestamps& timestamps, const R& result)
{
    ApiLog<Logger> apiLog;
    apiLog.addOutputParam("audioCaptureTimestamp", timestamps.tCap)
        .addOutputParam("audioRenderingTimestamp", timestamps.tRdr)
        .addOutputParam("audioReceivingTimestamp", timestamps.tRcv)
        .addOutputParam("jbmCurrentDepth", timestamps.jbmDepth)
        .setResult(result)
        .event("Client is requesting the NTP timestamp");
}

} // namespace log
} // namespace kvo
} // namespace velmo

#endif
