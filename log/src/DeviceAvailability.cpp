#include "velmo/kvo/log/AndroidLog.h"

#include "LogSocket.h"

#include <atomic>
#include <unistd.h>

namespace {

enum DeviceState
{
    unknown = 0,
    notAvailable = 1,
    available = 2
};

std::atomic<int> deviceState{unknown};

} // namespace

// Decided once: the answer does not follow the daemon coming or going. It
// asks about the socket the writer connects to, AKVO_LOG_SOCKET's included.
extern "C" int __android_log_dev_available(void)
{
    if (deviceState == unknown) {
        const char* path = velmo::kvo::logwriter::logSocketPath();
        deviceState = path != nullptr && access(path, W_OK) == 0 ? available : notAvailable;
    }
    return deviceState == available ? 1 : 0;
}
