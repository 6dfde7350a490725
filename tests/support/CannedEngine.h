#ifndef AKVO_TESTS_SUPPORT_CANNEDENGINE_H
#define AKVO_TESTS_SUPPORT_CANNEDENGINE_H

#include "TempDir.h"
#include "UnixSocket.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace akvo {
namespace test {

// A lip-sync server for answers the simulator never sends: it accepts one
// client, reads its first request, writes `answer` as it stands (framing
// included, or not; nothing at all when empty) and hangs up. It listens in a
// fresh folder, removed again with it.
class CannedEngine
{
public:
    explicit CannedEngine(std::string answer)
        : _answer(std::move(answer)), _socketPath(_folder.file("engine")),
          _listener(listeningUnixSocket(_socketPath, 1))
    {
        if (_listener < 0) {
            ADD_FAILURE() << "cannot listen at " << _socketPath << ": " << std::strerror(errno);
        }
        _server = std::thread([this] { serve(); });
    }

    ~CannedEngine()
    {
        // Wakes an accept() that no client came for.
        shutdown(_listener, SHUT_RDWR);
        received();
        close(_listener);
    }

    const std::string& socketPath() const { return _socketPath; }

    // Waits until the engine has hung up; returns every byte it read.
    const std::string& received()
    {
        if (_server.joinable()) {
            _server.join();
        }
        return _request;
    }

    CannedEngine(const CannedEngine&) = delete;
    CannedEngine& operator=(const CannedEngine&) = delete;

private:
    void serve()
    {
        const int client = accept(_listener, nullptr, nullptr);
        if (client < 0) {
            return;
        }
        char chunk[512];
        ssize_t count;
        while (_request.find("\n\n") == std::string::npos &&
               (count = read(client, chunk, sizeof(chunk))) > 0) {
            _request.append(chunk, static_cast<size_t>(count));
        }
        // The client may give up half way; that must not raise SIGPIPE here.
        for (size_t sent = 0; sent < _answer.size(); sent += static_cast<size_t>(count)) {
            count = send(client, _answer.data() + sent, _answer.size() - sent, MSG_NOSIGNAL);
            if (count <= 0) {
                break;
            }
        }
        close(client);
    }

    TempDir _folder;
    std::string _answer;
    std::string _socketPath;
    int _listener;
    std::string _request;
    std::thread _server;
};

} // namespace test
} // namespace akvo

#endif
