#ifndef VELMO_KVO_LIPSYNCAPI_TIMESTAMPSLINE_H
#define VELMO_KVO_LIPSYNCAPI_TIMESTAMPSLINE_H

#include "velmo/kvo/common/LipSyncNtpTimestamps.h"
#include "velmo/kvo/log/ApiLog.h"

namespace velmo {
namespace kvo {
namespace lipsyncapi {

// The line of a getAudioTimestamps call, written to `Logger`'s log; the
// benchmarks price it with a log that drops the line.
template <class Logger, class R>
void logTimestampsRequest(const common::LipSyncNtpTimestamps& timestamps, const R& result)
{
    log::ApiLog<Logger> apiLog;
    apiLog.addOutputParam("audioCaptureTimestamp", timestamps.tCap)
        .addOutputParam("audioRenderingTimestamp", timestamps.tRdr)
        .addOutputParam("audioReceivingTimestamp", timestamps.tRcv)
        .addOutputParam("jbmCurrentDepth", timestamps.jbmDepth)
        .setResult(result)
        .event("Client is requesting the NTP timestamp");
}

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo

#endif
