#ifndef VELMO_KVO_SIM_SERVER_H
#define VELMO_KVO_SIM_SERVER_H

#include "Connection.h"
#include "RequestHandler.h"

#include <cstdint>
#include <map>
#include <memory>

namespace velmo {
namespace kvo {
namespace sim {

class Log;
class ScenarioEngine;

// The single event loop: accepts clients, reads their messages, hands them
// to the request handler and writes the deliveries when their time comes,
// until a stop signal arrives. A scenario's engine restarts drop every client.
class Server
{
public:
    Server(int listenFd, int stopFd, RequestHandler& handler, const Log& log, ScenarioEngine* scenario);
    // Returns false when polling itself failed.
    bool run();

private:
    void acceptClients(Clock::time_point now);
    void serve(Connection& connection, short events, Clock::time_point now);
    int pollTimeout(Clock::time_point now) const;
    void drop(std::uint64_t number, const char* why);

    int _listenFd;
    int _stopFd;
    RequestHandler& _handler;
    const Log& _log;
    ScenarioEngine* _scenario;
    std::map<std::uint64_t, std::unique_ptr<Connection>> _connections;
    std::uint64_t _clients = 0;
    // Out of descriptors: accepting again at once would only spin.
    Clock::time_point _acceptPausedUntil{};
};

} // namespace sim
} // namespace kvo
} // namespace velmo

#endif
