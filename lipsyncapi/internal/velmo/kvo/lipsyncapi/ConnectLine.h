#ifndef VELMO_KVO_LIPSYNCAPI_CONNECTLINE_H
#define VELMO_KVO_LIPSYNCAPI_CONNECTLINE_H

#include "velmo/kvo/lipsyncapi/Logger.h"
#include "velmo/kvo/lipsyncapi/Service.h"
#include "velmo/kvo/log/ApiLog.h"

#include <string>

namespace velmo {
namespace kvo {
namespace lipsyncapi {

// The log line of a connect: written by Service::connect, and by the C
// interface, which opens the socket itself but must leave the same line.
inline void logConnect(const std::string& socketName, const Service::ServiceResult& result)
{
    log::ApiLog<Logger> apiLog;
    apiLog.addInputParam("lipsyncSocketName", socketName).setResult(result).event("Client is connecting");
}

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo

#endif
