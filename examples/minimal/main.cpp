// The smallest useful application: connect, read the capabilities, set a
// delay margin, fetch the audio timestamps and disconnect.
#include <velmo/kvo/lipsyncapi/Service.h>

#include <cstdio>

using velmo::kvo::lipsyncapi::Service;

int main(int argc, char** argv)
{
    const std::string socketName = argc > 1 ? argv[1] : Service::defaultLipsyncSocketName;
    Service service;
    Service::ServiceResult result = service.connect(socketName);
    if (result.isFailure()) {
        std::printf("connect: %s\n", result.format().c_str());
        return 1;
    }
    unsigned long long granularityMs = 0;
    unsigned long long maxMarginMs = 0;
    result = service.getCapabilities(granularityMs, maxMarginMs);
    std::printf("capabilities: %s (granularity %llu ms, maximum %llu ms)\n", result.format().c_str(),
                granularityMs, maxMarginMs);
    result = service.setAudioDelayMargin(2 * granularityMs);
    std::printf("set margin: %s\n", result.format().c_str());
    velmo::kvo::common::LipSyncNtpTimestamps timestamps = {0, 0, 0, 0};
    result = service.getAudioTimestamps(timestamps);
    std::printf("timestamps: %s (capture %llu, rendering %llu, receiving %llu, depth %llu)\n",
                result.format().c_str(), timestamps.tCap, timestamps.tRdr, timestamps.tRcv,
                timestamps.jbmDepth);
    const bool ok = result.isSuccess();
    service.disconnect();
    return ok ? 0 : 1;
}
