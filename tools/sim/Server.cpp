#include "Server.h"

#include "Log.h"
#include "ScenarioEngine.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <vector>

namespace velmo {
namespace kvo {
namespace sim {

namespace {

// A client that sends this much without an end marker is not speaking the protocol.
constexpr std::size_t maxMessageSize = 1 << 20;
constexpr std::chrono::milliseconds acceptPause{100};

} // namespace

Server::Server(int listenFd, int stopFd, RequestHandler& handler, const Log& log, ScenarioEngine* scenario)
    : _listenFd(listenFd), _stopFd(stopFd), _handler(handler), _log(log), _scenario(scenario)
{
}

bool Server::run()
{
    std::vector<pollfd> fds;
    std::vector<std::uint64_t> polled;
    for (;;) {
        Clock::time_point now = Clock::now();
        fds.clear();
        polled.clear();
        fds.push_back({_stopFd, POLLIN, 0});
        fds.push_back({_listenFd, static_cast<short>(now >= _acceptPausedUntil ? POLLIN : 0), 0});
        for (auto& entry : _connections) {
            Connection& connection = *entry.second;
            short events = static_cast<short>((connection.wantsRead() ? POLLIN : 0) |
                                              (connection.wantsWrite() ? POLLOUT : 0));
            fds.push_back({connection.fd(), events, 0});
            polled.push_back(entry.first);
        }
        if (::poll(fds.data(), fds.size(), pollTimeout(now)) < 0) {
            if (errno == EINTR) {
                continue;
            }
            _log.error(std::string("poll failed: ") + std::strerror(errno));
            return false;
        }
        if (fds[0].revents != 0) {
            return true;
        }
        now = Clock::now();
        if (_scenario != nullptr && _scenario->restartDue(now)) {
            _log.verbose("engine restart: dropping " + std::to_string(_connections.size()) + " clients");
            _connections.clear();
            continue;
        }
        if (fds[1].revents != 0) {
            acceptClients(now);
        }
        for (std::size_t i = 0; i < polled.size(); ++i) {
            auto found = _connections.find(polled[i]);
            if (found != _connections.end()) {
                serve(*found->second, fds[i + 2].revents, now);
            }
        }
        for (auto it = _connections.begin(); it != _connections.end();) {
            auto current = it++;
            if (current->second->finished()) {
                drop(current->first, "closed");
            }
        }
    }
}

void Server::acceptClients(Clock::time_point now)
{
    for (;;) {
        int fd = ::accept4(_listenFd, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (fd >= 0) {
            std::uint64_t number = ++_clients;
            _connections.emplace(number, std::make_unique<Connection>(fd, number));
            _log.verbose("client " + std::to_string(number) + " connected");
            continue;
        }
        if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
            _log.error(std::string("cannot accept a client: ") + std::strerror(errno));
            _acceptPausedUntil = now + acceptPause;
        }
        if (errno != EINTR && errno != ECONNABORTED) {
            return;
        }
    }
}

void Server::serve(Connection& connection, short events, Clock::time_point now)
{
    if (events & (POLLIN | POLLHUP | POLLERR)) {
        std::vector<std::string> messages;
        Connection::Input input = connection.read(messages);
        for (const std::string& message : messages) {
            Delivery delivery = _handler.handle(connection.number(), message, now);
            bool closing = delivery.closeAfter;
            connection.queue(std::move(delivery));
            if (closing) {
                connection.stopReading();
                break;
            }
        }
        if (connection.bufferedInput() > maxMessageSize) {
            _log.verbose("client " + std::to_string(connection.number()) + ": " +
                         std::to_string(connection.bufferedInput()) +
                         " bytes without an end marker, closing");
            return drop(connection.number(), "dropped");
        }
        // POLLHUP: the client closed both directions, nobody is left to answer.
        if (input == Connection::Input::Failed || (events & (POLLHUP | POLLERR))) {
            return drop(connection.number(), "disconnected");
        }
    }
    connection.advance(now, _log);
    if (!connection.flush()) {
        drop(connection.number(), "disconnected");
    }
}

int Server::pollTimeout(Clock::time_point now) const
{
    std::optional<Clock::time_point> earliest;
    if (now < _acceptPausedUntil) {
        earliest = _acceptPausedUntil;
    }
    const std::optional<Clock::time_point> restart =
        _scenario != nullptr ? _scenario->nextRestart() : std::optional<Clock::time_point>();
    if (restart && (!earliest || *restart < *earliest)) {
        earliest = restart;
    }
    for (const auto& entry : _connections) {
        std::optional<Clock::time_point> due = entry.second->nextDue();
        if (due && (!earliest || *due < *earliest)) {
            earliest = due;
        }
    }
    if (!earliest) {
        return -1;
    }
    if (*earliest <= now) {
        return 0;
    }
    // Rounded up: waking a little early would only spin until the time is reached.
    auto wait = std::chrono::ceil<std::chrono::milliseconds>(*earliest - now);
    return static_cast<int>(wait.count());
}

void Server::drop(std::uint64_t number, const char* why)
{
    _log.verbose("client " + std::to_string(number) + " " + why);
    _connections.erase(number);
}

} // namespace sim
} // namespace kvo
} // namespace velmo
