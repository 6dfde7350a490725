#ifndef VELMO_KVO_LIPSYNCAPI_SERVICE_H
#define VELMO_KVO_LIPSYNCAPI_SERVICE_H

#include "velmo/kvo/common/LipSyncNtpTimestamps.h"
#include "velmo/utilities/Export.h"
#include "velmo/utilities/result/Result.h"

#include <cstdint>
#include <string>

namespace velmo {
namespace kvo {
namespace cmdfrmwrk {
class Client;
} // namespace cmdfrmwrk

namespace lipsyncapi {

// The application's handle on the audio engine's lip-sync service. Every call
// blocks the calling thread until it is done; one Service must be used by one
// thread at a time, and no two calls that wait for the engine may run at the
// same time anywhere in the process.
class VELMO_EXPORT Service
{
public:
    enum ResultCode : int32_t
    {
        Success = 1000,
        UnknownError = 1001,
        InvalidParam = 1002,
        BadState = 1003,
        CannotConnect = 1004,
        TransportError = 1005,
        ServerError = 1006,
        NotInCall = 1007
    };

    struct ResultTrait
    {
        typedef Service::ResultCode ResultCode;
        static constexpr ResultCode successCode = Success;
        static const char* toString(ResultCode code);
    };

    typedef velmo::utilities::result::Result<ResultTrait> ServiceResult;

    static const std::string defaultLipsyncSocketName;
    static const uint32_t capabilityMaxAudioDelayMargin = 100;
    static const uint32_t capabilityGranularityMs = 20;

    Service();
    ~Service();

    ServiceResult connect(const std::string& socketName = defaultLipsyncSocketName);
    ServiceResult disconnect();

    ServiceResult getCapabilities(unsigned long long& granularityMs,
                                  unsigned long long& maxAudioDelayMargin) const;
    ServiceResult setAudioDelayMargin(unsigned long long delayMs);
    ServiceResult getAudioDelayMargin(unsigned long long& delayMs) const;
    ServiceResult getAudioTimestamps(velmo::kvo::common::LipSyncNtpTimestamps& timestamps) const;
    ServiceResult setVideoTimestamps(const velmo::kvo::common::LipSyncNtpTimestamps& timestamps);

    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

private:
    friend struct ServiceTestAccess;
    // The C interface closes a late exchange's socket from a watchdog thread.
    friend struct ServiceLink;

    ServiceResult connectInternal(const std::string& socketName);
    ServiceResult disconnectInternal();
    ServiceResult setAudioDelayMarginInternal(unsigned long long delayMs);
    ServiceResult getAudioTimestampsInternal(velmo::kvo::common::LipSyncNtpTimestamps& timestamps) const;

    velmo::kvo::cmdfrmwrk::Client* _commandClient;
    int32_t _connected;
    unsigned long long _audioDelayMargin;
};

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo

#endif
