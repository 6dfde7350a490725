#ifndef VELMO_KVO_SIM_REQUESTHANDLER_H
#define VELMO_KVO_SIM_REQUESTHANDLER_H

#include "Connection.h"

#include <cstdint>
#include <string>

namespace velmo {
namespace kvo {
namespace sim {

class Engine;
class FaultPlan;
class Log;

// Turns each message from a client into what goes back: the engine's answer,
// bent by the fault planned for the request's number, or a close when the
// message is not a request.
class RequestHandler
{
public:
    RequestHandler(Engine& engine, const FaultPlan& faults, const Log& log);
    Delivery handle(std::uint64_t client, const std::string& message, Clock::time_point now);

private:
    Engine& _engine;
    const FaultPlan& _faults;
    const Log& _log;
    // Counted over the whole life of the server, across clients, as faults name them.
    std::uint64_t _requests = 0;
};

} // namespace sim
} // namespace kvo
} // namespace velmo

#endif
