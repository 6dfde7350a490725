#include "EngineMessages.h"
#include "Simulator.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sys/socket.h>
#include <thread>

namespace akvo {
namespace test {
namespace {

// A field of /proc/PID/status in KiB, such as VmRSS (resident now) or VmHWM (the peak).
long statusKib(pid_t pid, const std::string& field)
{
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    std::string name;
    long kib = -1;
    while (status >> name && name != field + ":") {
        status.ignore(1 << 16, '\n');
    }
    status >> kib;
    return kib;
}

// Sends what the socket takes at once; returns how many bytes that was.
size_t sendWithoutWaiting(int fd, const std::string& bytes, size_t from)
{
    size_t sent = from;
    ssize_t count;
    while (sent < bytes.size() &&
           (count = send(fd, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT)) > 0) {
        sent += static_cast<size_t>(count);
    }
    EXPECT_TRUE(sent == bytes.size() || errno == EAGAIN) << std::strerror(errno);
    return sent - from;
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// The sanitizers keep freed memory and shadows of their own: the figures would be theirs.
constexpr bool memoryIsMeasurable = false;
#else
constexpr bool memoryIsMeasurable = true;
#endif

// Unbounded, 20 MB of requests cost the simulator about 120 MB of answers.
constexpr long residentBoundKib = 40 * 1024;

TEST(SimUnreadAnswers, StopReadingAClientThatDoesNotReadAndServeItAllOnceItDoes)
{
    SimulatorProcess sim({"--fixed"});
    RawClient client(sim.socketPath());
    const std::string request = framed(getAudioTsRequest);
    const size_t requests = 20 * 1000 * 1000 / request.size();
    std::string requestBytes;
    for (size_t i = 0; i < requests; ++i) {
        requestBytes += request;
    }

    // The server serves its clients in turn: once another client has had its
    // answer, a server that still reads this client has made room for more.
    size_t sent = 0;
    size_t progress;
    do {
        progress = sendWithoutWaiting(client.fd(), requestBytes, sent);
        sent += progress;
        ASSERT_EQ(framed(fixedGetAudioTsAnswer), serverReply(sim.socketPath(), request));
    } while (progress > 0 && sent < requestBytes.size());
    EXPECT_LT(sent, requestBytes.size()) << "the server read every request while no answer was read";
    if (memoryIsMeasurable) {
        EXPECT_LT(statusKib(sim.pid(), "VmRSS"), residentBoundKib);
    }

    std::thread writer([&] { EXPECT_TRUE(client.write(requestBytes.substr(sent))); });
    size_t answered = 0;
    std::string answer;
    while (answered < requests && client.readMessage(answer) && answer == fixedGetAudioTsAnswer) {
        ++answered;
    }
    writer.join();
    EXPECT_EQ(requests, answered) << "the answer after " << answered << ": " << answer;
    if (memoryIsMeasurable) {
        EXPECT_LT(statusKib(sim.pid(), "VmHWM"), residentBoundKib);
    }
}

} // namespace
} // namespace test
} // namespace akvo
