// akvo-bench-server: the lip-sync server of the round-trip benchmarks. It
// answers every GetAudioTs request with one canned frame and every
// SetAudioDelay request with another, without parsing anything, so that the
// server's own cost is as small as the socket's. Each connection has a
// thread of its own, blocked in read like the single one was, so that the
// floor client and the library can be connected at once.

#include "Frames.h"
#include "UnixSocket.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace akvo::bench;

volatile sig_atomic_t stopRequested = 0;

void requestStop(int)
{
    stopRequested = 1;
}

// Without SA_RESTART, so that a blocked accept or read returns at once.
void installStopHandlers()
{
    struct sigaction action = {};
    action.sa_handler = requestStop;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
    signal(SIGPIPE, SIG_IGN);
}

bool writeAll(int fd, const char* data, size_t size)
{
    while (size > 0) {
        const ssize_t count = write(fd, data, size);
        if (count < 0 && errno == EINTR && !stopRequested) {
            continue;
        }
        if (count <= 0) {
            return false;
        }
        data += count;
        size -= static_cast<size_t>(count);
    }
    return true;
}

bool answer(int fd, const char* request, size_t size)
{
    const bool setDelay =
        memmem(request, size, setAudioDelayRequestTag, sizeof(setAudioDelayRequestTag) - 1) != nullptr;
    if (setDelay) {
        return writeAll(fd, setAudioDelayAnswerFrame, sizeof(setAudioDelayAnswerFrame) - 1);
    }
    return writeAll(fd, getAudioTsAnswerFrame, sizeof(getAudioTsAnswerFrame) - 1);
}

// Requests may arrive split or several in one read; each frame ends with two
// line feeds and gets exactly one answer.
void serve(int fd)
{
    char pending[65536];
    size_t used = 0;
    while (!stopRequested) {
        if (used == sizeof(pending)) {
            std::fprintf(stderr, "akvo-bench-server: request larger than %zu bytes\n", sizeof(pending));
            return;
        }
        const ssize_t count = read(fd, pending + used, sizeof(pending) - used);
        if (count <= 0) {
            if (count < 0 && errno == EINTR) {
                continue;
            }
            return;
        }
        used += static_cast<size_t>(count);
        size_t start = 0;
        for (;;) {
            const char* marker = static_cast<const char*>(memmem(pending + start, used - start, "\n\n", 2));
            if (marker == nullptr) {
                break;
            }
            const size_t end = static_cast<size_t>(marker - pending);
            if (!answer(fd, pending + start, end - start)) {
                return;
            }
            start = end + 2;
        }
        std::memmove(pending, pending + start, used - start);
        used -= start;
    }
}

// The connection's thread blocks the stop signals, so that they always reach
// the accepting thread and end the process.
void serveOnItsOwnThread(int client)
{
    sigset_t stopSignals;
    sigset_t previous;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGTERM);
    sigaddset(&stopSignals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &stopSignals, &previous);
    std::thread([client] {
        serve(client);
        close(client);
    }).detach();
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
}

int listenOn(const std::string& path)
{
    if (path.size() >= sizeof(sockaddr_un::sun_path)) {
        std::fprintf(stderr, "akvo-bench-server: socket path too long: %s\n", path.c_str());
        return -1;
    }
    unlink(path.c_str());
    const int fd = akvo::test::boundUnixSocket(SOCK_STREAM, path);
    if (fd < 0 || listen(fd, 8) != 0) {
        std::fprintf(stderr, "akvo-bench-server: cannot listen on %s: %s\n", path.c_str(),
                     std::strerror(errno));
        return -1;
    }
    return fd;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3 || std::strcmp(argv[1], "--socket") != 0) {
        std::fprintf(stderr, "usage: akvo-bench-server --socket PATH\n");
        return 2;
    }
    const std::string path = argv[2];
    installStopHandlers();
    const int listener = listenOn(path);
    if (listener < 0) {
        return 1;
    }
    std::printf("akvo-bench-server: listening on %s\n", path.c_str());
    std::fflush(stdout);
    while (!stopRequested) {
        const int client = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (client < 0) {
            if (errno == EINTR) {
                continue;
            }
            std::fprintf(stderr, "akvo-bench-server: accept failed: %s\n", std::strerror(errno));
            break;
        }
        serveOnItsOwnThread(client);
    }
    close(listener);
    unlink(path.c_str());
    return 0;
}
