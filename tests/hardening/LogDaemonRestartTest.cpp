#include "LogReceiver.h"
#include "WriterMessages.h"
#include "velmo/kvo/log/AndroidLog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace akvo::test;

namespace {

constexpr int recordsPerWriter = 20000;

// A log daemon that restarts every few milliseconds. Each new socket is bound
// beside the path and renamed onto it, so the path always names a live
// socket: a writer whose socket died always finds the next one, and every
// record it reports as sent may arrive at most once.
class RestartingDaemon
{
public:
    explicit RestartingDaemon(const std::string& path)
        : _path(path), _next(path + ".next"), _receiver(startNext())
    {
    }

    ~RestartingDaemon() { unlink(_path.c_str()); }

    // Restarts until `running` turns false; returns every record it read.
    std::vector<LogRecord> serve(const std::atomic<bool>& running)
    {
        while (running) {
            readFor(std::chrono::milliseconds(3));
            // What the old daemon still holds is lost with it, as on a real
            // restart: writers keep sending to it until they notice.
            _receiver = startNext();
            ++_restarts;
        }
        readFor(std::chrono::milliseconds(50));
        return std::move(_records);
    }

    int restarts() const { return _restarts; }

private:
    std::unique_ptr<LogReceiver> startNext()
    {
        auto receiver = std::make_unique<LogReceiver>(_next);
        std::rename(_next.c_str(), _path.c_str());
        return receiver;
    }

    void readFor(std::chrono::milliseconds duration)
    {
        const auto until = std::chrono::steady_clock::now() + duration;
        while (std::chrono::steady_clock::now() < until) {
            if (std::optional<LogRecord> record = _receiver->nextRecord(std::chrono::milliseconds(1))) {
                _records.push_back(std::move(*record));
            }
        }
    }

    std::string _path;
    std::string _next;
    std::unique_ptr<LogReceiver> _receiver;
    int _restarts = 0;
    std::vector<LogRecord> _records;
};

// Opens and closes descriptors all along, so that a number the log writer
// let go of would soon belong to one of these; none may ever receive a byte.
void watchForStrayRecords(const std::atomic<bool>& running, std::atomic<int>& strayBytes)
{
    while (running) {
        int pair[2];
        if (socketpair(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0, pair) != 0) {
            continue;
        }
        std::this_thread::yield();
        char byte;
        for (const int fd : pair) {
            while (recv(fd, &byte, 1, MSG_DONTWAIT) == 1) {
                ++strayBytes;
            }
            close(fd);
        }
    }
}

// The writers log while the daemon restarts under them. A record may be
// refused (daemon queue full, or the daemon gone before the writer noticed:
// refused or reset, and not connected when it went again during the resend),
// but the writer must always find the next daemon, never write a record into
// a descriptor that is no longer its socket, and never deliver a record twice
// or one it reported as refused.
TEST(LogWriterDaemonRestart, EveryRecordArrivesAtMostOnceAndOnlyOnTheLogSocket)
{
    ASSERT_EQ(50u, throughput_limit.threshold)
        << "run through ctest, which sets LIBLOG_THROUGHPUT_LIMIT=50/1";
    RestartingDaemon daemon(AKVO_TEST_LOGDW_PATH);
    std::atomic<bool> writing{true};
    std::vector<LogRecord> received;
    std::thread server([&] { received = daemon.serve(writing); });
    std::atomic<int> strayBytes{0};
    std::thread bystander(watchForStrayRecords, std::cref(writing), std::ref(strayBytes));

    const PerRecord results = writeFromThreads(recordsPerWriter, __android_log_write);
    writing = false;
    server.join();
    bystander.join();

    EXPECT_EQ(0, strayBytes.load());
    EXPECT_GT(daemon.restarts(), 2);
    const PerRecord arrived = arrivals(received, recordsPerWriter);
    int sent = 0;
    for (int writer = 0; writer < writerCount; ++writer) {
        for (int number = 0; number < recordsPerWriter; ++number) {
            const int result = results[writer][number];
            ASSERT_TRUE(result == sentSize(writer, number) || result == -EAGAIN || result == -ECONNREFUSED ||
                        result == -ECONNRESET || result == -ENOTCONN)
                << "writer " << writer << " record " << number << " returned " << result;
            ASSERT_LE(arrived[writer][number], result > 0 ? 1 : 0)
                << "writer " << writer << " record " << number;
            sent += result > 0 ? 1 : 0;
        }
    }
    // Lost records are those still queued in a daemon socket when it closed.
    EXPECT_GT(sent, 0);
    EXPECT_LE(static_cast<int>(received.size()), sent);
}

} // namespace
