#include "ChildProcess.h"
#include "FdCount.h"
#include "LogReceiver.h"
#include "ResultTexts.h"
#include "Simulator.h"
#include "Timestamps.h"
#include "velmo/kvo/lipsyncapi/Service.h"
#include "velmo/kvo/log/AndroidLog.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

// Linked with --wrap for these calls, every object of this binary (static layers included) calls the C
// library through the wrappers below; they pass through outside a watch and on descriptors not made in one.
extern "C" {
int __real_socket(int domain, int type, int protocol);
int __real_connect(int fd, const sockaddr* address, socklen_t length);
ssize_t __real_read(int fd, void* data, size_t size);
ssize_t __real_write(int fd, const void* data, size_t size);
ssize_t __real_writev(int fd, const iovec* vector, int count);
int __real_shutdown(int fd, int how);
int __real_close(int fd);
}

using namespace akvo::test;
using velmo::kvo::lipsyncapi::Service;

namespace {

enum Call
{
    Socket,
    Connect,
    Read,
    Write,
    Writev,
    Shutdown,
    Close
};
// Told apart by the socket type: the link is a stream, the log writer's socket a datagram socket.
enum Owner
{
    Link,
    LogWriter
};
enum Expect
{
    Ok,
    Refused,
    IoError,
    RecordLost,
    WriterOff
};

// A failure besides errno values: the call returns 0.
constexpr int nothingTransferred = -1;

struct Row
{
    Call call;
    Owner owner;
    int failure;
    Expect expect;
};

// What each way a call of a session can fail must lead to. A read or write
// that is interrupted, cut short, reset or finds the peer gone is met by a
// real socket in the link's own tests; here the rest reach the Service.
const Row rows[] = {
    {Socket, Link, EMFILE, Refused},
    {Connect, Link, ECONNREFUSED, Refused},
    {Connect, Link, EINTR, Refused},
    {Read, Link, EAGAIN, Ok},
    {Read, Link, EIO, IoError},
    {Read, Link, EPIPE, IoError},
    {Write, Link, EAGAIN, Ok},
    {Write, Link, nothingTransferred, Ok},
    {Write, Link, EIO, IoError},
    {Shutdown, Link, ENOTCONN, Ok},
    {Close, Link, EINTR, Ok},
    {Close, Link, EIO, Ok},
    {Socket, LogWriter, EMFILE, WriterOff},
    {Connect, LogWriter, ECONNREFUSED, RecordLost},
    {Writev, LogWriter, EAGAIN, RecordLost},
    {Writev, LogWriter, ENOTCONN, Ok},
    {Writev, LogWriter, EIO, RecordLost},
    {Close, LogWriter, EIO, Ok},
};

// Exit statuses of a child: 100 + the row applied, or the call to fail had no such variant or came too late.
constexpr int firstRowStatus = 100, noSuchVariant = 98, pastTheSession = 99;

struct Watch
{
    // The call to fail, from 1; 0 outside a watch.
    size_t failing = 0;
    size_t variant = 0;
    size_t seen = 0;
    // The Service call under way; "next" for the session that follows.
    std::string phase;
    std::string failedPhase;
    const Row* row = nullptr;
    bool retried = false;
    std::map<int, Owner> owners;
    // Shutdowns of each connected link.
    std::map<int, int> shutdowns;
} watch;

void problem(const std::string& text)
{
    std::fprintf(stderr, "problem: %s\n", text.c_str());
}

std::optional<Owner> ownerOf(int fd)
{
    const auto found = watch.owners.find(fd);
    return found == watch.owners.end() ? std::nullopt : std::optional<Owner>(found->second);
}

// Counts a call on a watched descriptor; returns the failure it must suffer, or 0.
int faultOf(Call call, std::optional<Owner> owner)
{
    if (!watch.failing || !owner) {
        return 0;
    }
    const size_t number = ++watch.seen;
    if (number == watch.failing + 1) {
        watch.retried = watch.row && watch.row->call == call && watch.row->owner == *owner;
    }
    if (number != watch.failing) {
        return 0;
    }
    watch.failedPhase = watch.phase;
    size_t variant = watch.variant;
    for (const Row& row : rows) {
        if (watch.phase != "next" && row.call == call && row.owner == *owner && variant-- == 0) {
            watch.row = &row;
            return row.failure;
        }
    }
    return 0;
}

int fail(int error)
{
    errno = error;
    return -1;
}

} // namespace

extern "C" {

int __wrap_socket(int domain, int type, int protocol)
{
    const Owner owner = (type & 0xf) == SOCK_STREAM ? Link : LogWriter;
    if (const int failure = faultOf(Socket, owner)) {
        return fail(failure);
    }
    const int fd = __real_socket(domain, type, protocol);
    if (watch.failing && fd >= 0) {
        watch.owners[fd] = owner;
    }
    return fd;
}

int __wrap_connect(int fd, const sockaddr* address, socklen_t length)
{
    const std::optional<Owner> owner = ownerOf(fd);
    if (const int failure = faultOf(Connect, owner)) {
        return fail(failure);
    }
    const int result = __real_connect(fd, address, length);
    if (result == 0 && owner == Link) {
        watch.shutdowns[fd] = 0;
    }
    return result;
}

ssize_t __wrap_read(int fd, void* data, size_t size)
{
    const int failure = faultOf(Read, ownerOf(fd));
    return failure ? fail(failure) : __real_read(fd, data, size);
}

ssize_t __wrap_write(int fd, const void* data, size_t size)
{
    const int failure = faultOf(Write, ownerOf(fd));
    return failure == nothingTransferred ? 0 : failure ? fail(failure) : __real_write(fd, data, size);
}

ssize_t __wrap_writev(int fd, const iovec* vector, int count)
{
    const int failure = faultOf(Writev, ownerOf(fd));
    return failure ? fail(failure) : __real_writev(fd, vector, count);
}

int __wrap_shutdown(int fd, int how)
{
    const auto link = watch.shutdowns.find(fd);
    if (link != watch.shutdowns.end()) {
        ++link->second;
    }
    const int failure = faultOf(Shutdown, ownerOf(fd));
    return failure ? fail(failure) : __real_shutdown(fd, how);
}

// As on Linux, a close that reports a failure has released the descriptor all the same.
int __wrap_close(int fd)
{
    const int failure = faultOf(Close, ownerOf(fd));
    const auto link = watch.shutdowns.find(fd);
    if (link != watch.shutdowns.end() && link->second != 1) {
        problem("a link was closed after " + std::to_string(link->second) + " shutdowns");
    }
    watch.shutdowns.erase(fd);
    watch.owners.erase(fd);
    const int result = __real_close(fd);
    return failure ? fail(failure) : result;
}

} // extern "C"

namespace {

std::string expectedResults(const Row& row, const std::string& phase, const std::string& path)
{
    if (row.expect == Refused) {
        const std::string where = row.call == Connect ? "Unable to connect to " + path + " " : "";
        return "connect=Cannot connect to Audio KVO (Code 1004): {Connection has failed (Code 20002): " +
               where + "{" + errnoText(row.failure) + "}} ";
    }
    const bool fails = row.expect == IoError;
    const std::string text = ioErrorText(row.failure);
    if (fails && phase == "set") {
        return "connect=Success set=" + text + " disconnect=Success ";
    }
    return "connect=Success set=Success get=" + (fails && phase == "get" ? text : "Success") +
           " disconnect=Success ";
}

// One session (connect, setAudioDelayMargin(40), getAudioTimestamps,
// disconnect) whose call number `failing` fails as the `variant`-th row for
// that call says, then a second session and one record of our own. Returns
// the exit status for the parent; what went wrong is on standard error.
int runCase(const std::string& path, bool logDaemon, size_t failing, size_t variant)
{
    const std::unique_ptr<LogReceiver> receiver(logDaemon ? new LogReceiver(AKVO_TEST_LOGDW_PATH) : nullptr);
    const int descriptors = openDescriptorCount();
    watch.failing = failing;
    watch.variant = variant;
    LipSyncNtpTimestamps fetched = untouchedTimestamps;
    std::string results;
    // The destructor of a disconnected Service logs a line too.
    int records = 1;
    {
        Service service;
        const auto run = [&](const char* name, const std::function<Service::ServiceResult()>& call) {
            watch.phase = name;
            ++records;
            const std::string result = call().format();
            results += watch.phase + "=" + result + " ";
            return result == "Success";
        };
        if (run("connect", [&] { return service.connect(path); })) {
            if (run("set", [&] { return service.setAudioDelayMargin(40); })) {
                run("get", [&] { return service.getAudioTimestamps(fetched); });
            }
            run("disconnect", [&] { return service.disconnect(); });
        }
        watch.phase = "next";
        LipSyncNtpTimestamps again = untouchedTimestamps;
        std::string next;
        for (const std::string& result :
             {service.connect(path).format(), service.getAudioTimestamps(again).format(),
              service.disconnect().format()}) {
            next += result;
        }
        records += 3;
        if (next != "SuccessSuccessSuccess" || !sameTimestamps(fixedTimestamps, again)) {
            problem("the next session gave " + next);
        }
    }
    const int probe = __android_log_write(AKVO_LOG_INFO, "T", "m");
    watch.failing = 0;
    if (watch.failedPhase.empty() || watch.failedPhase == "next") {
        return pastTheSession;
    }
    if (!watch.row) {
        return noSuchVariant;
    }

    const Row& row = *watch.row;
    if (results != expectedResults(row, watch.failedPhase, path)) {
        problem("results " + results + "instead of " + expectedResults(row, watch.failedPhase, path));
    }
    const bool fetchedAll = results.find("get=Success") != std::string::npos;
    if (!sameTimestamps(fetchedAll ? fixedTimestamps : untouchedTimestamps, fetched)) {
        problem("getAudioTimestamps left other timestamps in the caller's record");
    }
    const bool retries = row.expect == Ok && (row.call == Read || row.call == Write);
    if (row.owner == Link && watch.retried != retries) {
        problem(watch.retried ? "the link tried the call again" : "the link did not carry on with the call");
    }
    const int expectedProbe = row.expect == WriterOff ? -1 : logDaemon ? 5 : -ENOENT;
    if (probe != expectedProbe) {
        problem("a record after the session returned " + std::to_string(probe));
    }
    const int logSockets = logDaemon && row.expect != WriterOff ? 1 : 0;
    if (openDescriptorCount() != descriptors + logSockets) {
        problem(std::to_string(openDescriptorCount() - descriptors) + " more descriptors after the session");
    }
    if (receiver) {
        const size_t sent = row.expect == WriterOff ? 0 : records + 1 - (row.expect == RecordLost ? 1 : 0);
        const size_t received = receiver->drain().size();
        if (received != sent) {
            problem("the log daemon received " + std::to_string(received) + " of " + std::to_string(sent));
        }
    }
    return firstRowStatus + static_cast<int>(watch.row - rows);
}

// Every wrapped call of a session fails once, in every way the table lists
// for it, each time in a fresh child, with and without a log daemon.
TEST(SyscallFaultSweep, EveryCallOfASessionFailsInEveryWayOnce)
{
    std::set<int> applied;
    for (const bool logDaemon : {false, true}) {
        unlink(AKVO_TEST_LOGDW_PATH);
        SimulatorProcess simulator({"--fixed"});
        const int descriptors = openDescriptorCount();
        bool past = false;
        for (size_t failing = 1; !past; ++failing) {
            for (size_t variant = 0;; ++variant) {
                const ProgramOutput child =
                    runInChild([&] { return runCase(simulator.socketPath(), logDaemon, failing, variant); });
                const std::string& errors = child.standardError;
                const int row = child.exitStatus < 0 ? -1 : child.exitStatus - firstRowStatus;
                past = row == pastTheSession - firstRowStatus;
                if (past || row == noSuchVariant - firstRowStatus) {
                    break;
                }
                const std::string what = "call " + std::to_string(failing) +
                                         (logDaemon ? " with" : " without") + " a log daemon as row " +
                                         std::to_string(row) + ", exit status " +
                                         std::to_string(child.exitStatus) + ":\n" + errors;
                ASSERT_TRUE(row >= 0 && row < static_cast<int>(std::size(rows))) << what;
                EXPECT_EQ(std::string::npos, errors.find("problem: ")) << what;
                applied.insert(row);
            }
        }
        EXPECT_EQ(descriptors, openDescriptorCount());
    }
    EXPECT_EQ(std::size(rows), applied.size());
    EXPECT_NE(0, access(AKVO_TEST_LOGDW_PATH, F_OK)) << "a child left its log receiver behind";
}

} // namespace
