#include "velmo/kvo/lipsyncapi/Service.h"

#include "NotConnected.h"
#include "WithoutExceptions.h"
#include "velmo/kvo/cmdfrmwrk/Client.h"
#include "velmo/kvo/comms/Client.h"
#include "velmo/kvo/lipsyncapi/ConnectLine.h"
#include "velmo/kvo/lipsyncapi/Logger.h"
#include "velmo/kvo/log/ApiLog.h"

#include <memory>

namespace velmo {
namespace kvo {
namespace lipsyncapi {

const std::string Service::defaultLipsyncSocketName("/dev/socket/akvo_lipsync");
const uint32_t Service::capabilityMaxAudioDelayMargin;
const uint32_t Service::capabilityGranularityMs;

Service::Service() : _commandClient(nullptr), _connected(0), _audioDelayMargin(0) {}

Service::~Service()
{
    disconnect();
}

Service::ServiceResult Service::connect(const std::string& socketName)
{
    return withoutExceptions([&] {
        const ServiceResult result = connectInternal(socketName);
        logConnect(socketName, result);
        return result;
    });
}

Service::ServiceResult Service::disconnect()
{
    return withoutExceptions([&] {
        const ServiceResult result = disconnectInternal();
        log::ApiLog<Logger> apiLog;
        apiLog.setResult(result).event("Client is disconnected");
        return result;
    });
}

Service::ServiceResult Service::connectInternal(const std::string& socketName)
{
    // Any non-zero state counts as connected here, so a damaged flag never
    // leads to a second connection being opened over the first.
    if (_connected != 0) {
        return ServiceResult(BadState) << "Already connected to the audio KVO";
    }
    comms::Link* link = nullptr;
    const comms::Client::ClientResult connection = comms::Client::connectUnixServer(socketName.c_str(), link);
    if (connection.isFailure()) {
        delete link;
        return ServiceResult(CannotConnect) << connection;
    }
    // Should the command client not fit in memory, the link is not leaked.
    std::unique_ptr<comms::Link> pendingLink(link);
    _commandClient = new cmdfrmwrk::Client(pendingLink.get());
    pendingLink.release();
    _connected = 1;
    return ServiceResult::success();
}

Service::ServiceResult Service::disconnectInternal()
{
    if (_connected != 1) {
        return notConnected();
    }
    delete _commandClient;
    _commandClient = nullptr;
    _connected = 0;
    return ServiceResult::success();
}

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo
