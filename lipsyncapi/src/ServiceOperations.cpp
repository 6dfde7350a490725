#include "velmo/kvo/lipsyncapi/Service.h"

#include "ExchangeResult.h"
#include "NotConnected.h"
#include "WithoutExceptions.h"
#include "velmo/kvo/cmdfrmwrk/Client.h"
#include "velmo/kvo/lipsync/GetAudioTs.h"
#include "velmo/kvo/lipsync/LipSyncSerializer.h"
#include "velmo/kvo/lipsync/SetAudioDelay.h"
#include "velmo/kvo/lipsyncapi/Logger.h"
#include "velmo/kvo/lipsyncapi/TimestampsLine.h"
#include "velmo/kvo/log/ApiLog.h"
#include "velmo/utilities/log/Assertion.h"

namespace velmo {
namespace kvo {
namespace lipsyncapi {

using velmo::utilities::assertThat;

// The assertion texts below are fixed output: each names a source line
// that is not the one it stands on, and stays so byte for byte.

Service::ServiceResult Service::getCapabilities(unsigned long long& granularityMs,
                                                unsigned long long& maxAudioDelayMargin) const
{
    return withoutExceptions([&] {
        if (_connected != 1) {
            return notConnected();
        }
        assertThat(_commandClient != nullptr,
                   "lipsyncapi/src/Service:114: Assertion _commandClient != NULL failed: "
                   "Inconsistent state client is null");
        granularityMs = capabilityGranularityMs;
        maxAudioDelayMargin = capabilityMaxAudioDelayMargin;
        return ServiceResult::success();
    });
}

Service::ServiceResult Service::setAudioDelayMargin(unsigned long long delayMs)
{
    return withoutExceptions([&] {
        const ServiceResult result = setAudioDelayMarginInternal(delayMs);
        log::ApiLog<Logger> apiLog;
        apiLog.addInputParam("delayMs", delayMs)
            .setResult(result)
            .event("Client is setting the audio delay margin");
        return result;
    });
}

Service::ServiceResult Service::setAudioDelayMarginInternal(unsigned long long delayMs)
{
    if (_connected != 1) {
        return notConnected();
    }
    if (delayMs > capabilityMaxAudioDelayMargin) {
        // Fixed output, leading and doubled blanks included.
        return ServiceResult(InvalidParam) << " audio delay margin " << delayMs << " is not in range "
                                           << "[0.." << capabilityMaxAudioDelayMargin << "]";
    }
    if (delayMs % capabilityGranularityMs != 0) {
        return ServiceResult(InvalidParam) << " audio delay margin " << delayMs << " doesn't match "
                                           << " granularity of " << capabilityGranularityMs << "ms.";
    }
    assertThat(_commandClient != nullptr,
               "lipsyncapi/src/Service:205: Assertion _commandClient != NULL failed: "
               "Inconsistent state client is null");
    lipsync::SetAudioDelay::Request request;
    request.delayMs = delayMs;
    lipsync::SetAudioDelay::Answer answer;
    const ServiceResult result =
        toServiceResult(_commandClient->executeCommand<lipsync::SetAudioDelay, lipsync::LipSyncXmlSerializer>(
                            request, answer),
                        answer);
    if (result.isSuccess()) {
        _audioDelayMargin = delayMs;
    }
    return result;
}

Service::ServiceResult Service::getAudioDelayMargin(unsigned long long& delayMs) const
{
    return withoutExceptions([&] {
        if (_connected != 1) {
            return notConnected();
        }
        delayMs = _audioDelayMargin;
        return ServiceResult::success();
    });
}

Service::ServiceResult Service::getAudioTimestamps(common::LipSyncNtpTimestamps& timestamps) const
{
    return withoutExceptions([&] {
        const ServiceResult result = getAudioTimestampsInternal(timestamps);
        logTimestampsRequest<Logger>(timestamps, result);
        return result;
    });
}

Service::ServiceResult Service::getAudioTimestampsInternal(common::LipSyncNtpTimestamps& timestamps) const
{
    if (_connected != 1) {
        return notConnected();
    }
    assertThat(_commandClient != nullptr,
               "lipsyncapi/src/Service:142: Assertion _commandClient != NULL failed: "
               "Inconsistent state client is null");
    lipsync::GetAudioTs::Request request;
    lipsync::GetAudioTs::Answer answer;
    const ServiceResult result = toServiceResult(
        _commandClient->executeCommand<lipsync::GetAudioTs, lipsync::LipSyncXmlSerializer>(request, answer),
        answer);
    if (result.isSuccess()) {
        timestamps = answer.timestamps;
    }
    return result;
}

Service::ServiceResult Service::setVideoTimestamps(const common::LipSyncNtpTimestamps&)
{
    return withoutExceptions([&] {
        if (_connected != 1) {
            return notConnected();
        }
        return ServiceResult::success();
    });
}

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo
