#include "Sockets.h"
#include "TempDir.h"
#include "Texts.h"

#include "velmo/kvo/comms/Link.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <memory>
#include <new>
#include <pthread.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using namespace akvo::test;
using velmo::kvo::comms::Link;

namespace {

const char* const success = "Success";
const char* const closed = "Closed (Code 10002)";
const char* const closedByDistant = "Closed by distant (Code 10003)";
const char* const invalidArgument = "Invalid Argument(s) (Code 10006)";
const unsigned int untouched = 777;

std::string ioError(int error)
{
    return "I/O error (Code 10004): {" + errnoText(error) + "}";
}

std::string pattern(std::size_t size)
{
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>((i * 31 + i / 256) & 0xff);
    }
    return bytes;
}

int socketBuffers(int fd)
{
    int sendBuffer = 0;
    int receiveBuffer = 0;
    socklen_t length = sizeof(int);
    getsockopt(fd, SOL_SOCKET, SO_SNDBUF, &sendBuffer, &length);
    length = sizeof(int);
    getsockopt(fd, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, &length);
    return sendBuffer + receiveBuffer;
}

// Big enough that a write of this size cannot complete before the peer reads.
std::size_t overflowingSize(int fd)
{
    return std::max<std::size_t>(32u << 20, 8u * static_cast<std::size_t>(socketBuffers(fd)));
}

void expectSameBytes(const std::string& expected, const std::string& actual)
{
    ASSERT_EQ(expected.size(), actual.size());
    const auto mismatch = std::mismatch(expected.begin(), expected.end(), actual.begin());
    EXPECT_EQ(expected.size(), static_cast<std::size_t>(mismatch.first - expected.begin()))
        << "first differing byte";
}

// Counts SIGUSR1 deliveries; installed without SA_RESTART so that a blocked
// system call fails with EINTR (or returns a partial count).
std::atomic<int> interruptions(0);

class InterruptingSignal
{
public:
    InterruptingSignal()
    {
        interruptions = 0;
        struct sigaction action;
        std::memset(&action, 0, sizeof(action));
        action.sa_handler = [](int) { ++interruptions; };
        sigaction(SIGUSR1, &action, &_previous);
    }
    ~InterruptingSignal() { sigaction(SIGUSR1, &_previous, nullptr); }

    // Each signal is sent once the previous one has been handled, so that
    // none is merged with a pending one.
    void interrupt(std::thread& thread, int times)
    {
        for (int i = 0; i < times; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            pthread_kill(thread.native_handle(), SIGUSR1);
            for (int wait = 0; wait < 5000 && interruptions.load() <= i; ++wait) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }

private:
    struct sigaction _previous;
};

class LinkOverTransport : public ::testing::TestWithParam<Transport>
{
protected:
    void SetUp() override
    {
        ConnectedPair pair = connectedPair(GetParam(), _dir.file("listener"));
        _linkFd = pair.local.get();
        _link.reset(new Link(pair.local.release()));
        _peer = std::move(pair.peer);
    }

    TempDir _dir;
    int _linkFd = -1;
    std::unique_ptr<Link> _link;
    UniqueFd _peer;
};

TEST_P(LinkOverTransport, WritesAWholeBufferLargerThanTheSocketBuffers)
{
    const std::string data = pattern(overflowingSize(_linkFd));
    std::string received;
    std::thread reader([&] { received = readExactly(_peer.get(), data.size()); });
    const std::string result = _link->write(data.data(), static_cast<unsigned int>(data.size())).format();
    reader.join();
    EXPECT_EQ(success, result);
    expectSameBytes(data, received);
    EXPECT_EQ(0u, pendingBytes(_peer.get()));
}

TEST_P(LinkOverTransport, WriteInterruptedBySignalsContinuesFromTheFirstUnwrittenByte)
{
    InterruptingSignal signal;
    const std::string data = pattern(overflowingSize(_linkFd));
    std::string result;
    std::thread writer(
        [&] { result = _link->write(data.data(), static_cast<unsigned int>(data.size())).format(); });
    signal.interrupt(writer, 3);
    const std::string received = readExactly(_peer.get(), data.size());
    writer.join();
    EXPECT_EQ(3, interruptions.load());
    EXPECT_EQ(success, result);
    expectSameBytes(data, received);
}

TEST_P(LinkOverTransport, ReadReturnsAsSoonAsBytesArrive)
{
    const std::string data = pattern(300);
    writeAll(_peer.get(), data);
    char buffer[511];
    unsigned int bytesRead = untouched;
    EXPECT_EQ(success, _link->read(buffer, sizeof(buffer), bytesRead).format());
    ASSERT_EQ(300u, bytesRead);
    EXPECT_EQ(data, std::string(buffer, bytesRead));
}

TEST_P(LinkOverTransport, ReadInterruptedBySignalsKeepsWaiting)
{
    InterruptingSignal signal;
    char buffer[511];
    unsigned int bytesRead = untouched;
    std::string result;
    std::thread reader([&] { result = _link->read(buffer, sizeof(buffer), bytesRead).format(); });
    signal.interrupt(reader, 3);
    writeAll(_peer.get(), "late");
    reader.join();
    EXPECT_EQ(3, interruptions.load());
    EXPECT_EQ(success, result);
    ASSERT_EQ(4u, bytesRead);
    EXPECT_EQ("late", std::string(buffer, bytesRead));
}

TEST_P(LinkOverTransport, ReadAfterThePeerClosedIsClosedByDistant)
{
    writeAll(_peer.get(), "xy");
    _peer.reset();
    char buffer[511];
    unsigned int bytesRead = untouched;
    EXPECT_EQ(success, _link->read(buffer, sizeof(buffer), bytesRead).format());
    EXPECT_EQ(2u, bytesRead);
    bytesRead = untouched;
    EXPECT_EQ(closedByDistant, _link->read(buffer, sizeof(buffer), bytesRead).format());
    EXPECT_EQ(untouched, bytesRead);
}

// Over TCP the first write after the peer's close may still be accepted; the
// peer's reset then turns the following writes into EPIPE.
TEST_P(LinkOverTransport, WriteAfterThePeerClosedIsClosedByDistant)
{
    SigpipeIgnored sigpipeIgnored;
    _peer.reset();
    std::string result = success;
    for (int attempt = 0; attempt < 100 && result == success; ++attempt) {
        result = _link->write("z", 1).format();
        if (result == success) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }
    EXPECT_EQ(closedByDistant, result);
}

// The Link leaves signal dispositions alone: with the default one, a write to
// a vanished peer kills the process.
TEST_P(LinkOverTransport, WriteAfterThePeerClosedRaisesSigpipe)
{
    _peer.reset();
    EXPECT_EXIT(
        {
            signal(SIGPIPE, SIG_DFL);
            for (int attempt = 0; attempt < 100; ++attempt) {
                _link->write("z", 1);
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            }
            _exit(0);
        },
        ::testing::KilledBySignal(SIGPIPE), "");
}

TEST_P(LinkOverTransport, CloseFromAnotherThreadEndsABlockedReadAsClosed)
{
    char buffer[511];
    unsigned int bytesRead = untouched;
    std::atomic<bool> done(false);
    std::string result;
    std::thread reader([&] {
        result = _link->read(buffer, sizeof(buffer), bytesRead).format();
        done = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_FALSE(done.load());
    _link->close();
    reader.join();
    EXPECT_EQ(closed, result);
    EXPECT_EQ(untouched, bytesRead);
}

TEST_P(LinkOverTransport, CloseFromAnotherThreadEndsABlockedWriteAsClosed)
{
    SigpipeIgnored sigpipeIgnored;
    const std::string data = pattern(overflowingSize(_linkFd));
    std::atomic<bool> done(false);
    std::string result;
    std::thread writer([&] {
        result = _link->write(data.data(), static_cast<unsigned int>(data.size())).format();
        done = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_FALSE(done.load());
    _link->close();
    writer.join();
    EXPECT_EQ(closed, result);
}

TEST_P(LinkOverTransport, EveryReadAndWriteAfterCloseIsClosed)
{
    SigpipeIgnored sigpipeIgnored;
    writeAll(_peer.get(), "dropped");
    _link->close();
    _link->close();
    char buffer[511];
    for (int attempt = 0; attempt < 3; ++attempt) {
        unsigned int bytesRead = untouched;
        EXPECT_EQ(closed, _link->read(buffer, sizeof(buffer), bytesRead).format());
        EXPECT_EQ(untouched, bytesRead);
        EXPECT_EQ(closed, _link->write("z", 1).format());
    }
    EXPECT_EQ("", readExactly(_peer.get(), 1)) << "the peer sees the end of the stream";
    EXPECT_TRUE(isOpen(_linkFd)) << "close() keeps the descriptor";
    _link.reset();
    EXPECT_FALSE(isOpen(_linkFd));
}

TEST_P(LinkOverTransport, DestructorShutsDownAndClosesTheDescriptor)
{
    _link.reset();
    EXPECT_FALSE(isOpen(_linkFd));
    EXPECT_EQ("", readExactly(_peer.get(), 1));
}

INSTANTIATE_TEST_SUITE_P(Transports, LinkOverTransport,
                         ::testing::Values(Transport::SocketPair, Transport::Unix, Transport::Tcp),
                         [](const ::testing::TestParamInfo<Transport>& info) {
                             return transportName(info.param);
                         });

struct InvalidArgumentCase
{
    const char* name;
    bool isWrite;
    bool nullData;
    bool closedFirst;
};

class LinkInvalidArgument : public ::testing::TestWithParam<InvalidArgumentCase>
{
};

// No system call is made: a write puts nothing on the wire and a read leaves
// the pending bytes where they are.
TEST_P(LinkInvalidArgument, IsReportedWithoutTouchingTheSocket)
{
    const InvalidArgumentCase& c = GetParam();
    ConnectedPair pair = connectedPair(Transport::SocketPair, "");
    const int linkFd = pair.local.get();
    Link link(pair.local.release());
    writeAll(pair.peer.get(), "data");
    if (c.closedFirst) {
        link.close();
    }
    char buffer[16];
    void* data = c.nullData ? nullptr : buffer;
    const unsigned int size = c.nullData ? sizeof(buffer) : 0;
    unsigned int bytesRead = untouched;
    const std::string result =
        c.isWrite ? link.write(data, size).format() : link.read(data, size, bytesRead).format();
    EXPECT_EQ(invalidArgument, result);
    EXPECT_EQ(untouched, bytesRead);
    EXPECT_EQ(0u, pendingBytes(pair.peer.get()));
    EXPECT_EQ(4u, pendingBytes(linkFd));
}

INSTANTIATE_TEST_SUITE_P(Cases, LinkInvalidArgument,
                         ::testing::Values(InvalidArgumentCase{"WriteNullData", true, true, false},
                                           InvalidArgumentCase{"WriteZeroSize", true, false, false},
                                           InvalidArgumentCase{"ReadNullData", false, true, false},
                                           InvalidArgumentCase{"ReadZeroSize", false, false, false},
                                           InvalidArgumentCase{"WriteNullDataWhenClosed", true, true, true},
                                           InvalidArgumentCase{"ReadZeroSizeWhenClosed", false, false, true}),
                         [](const ::testing::TestParamInfo<InvalidArgumentCase>& info) {
                             return info.param.name;
                         });

struct UnconnectedCase
{
    const char* name;
    int domain;
    bool listening;
    bool isWrite;
    std::string expected;
};

class LinkOnUnconnectedSocket : public ::testing::TestWithParam<UnconnectedCase>
{
};

// Sockets that were never connected give real errors other than the peer's
// disappearance; EPIPE is ClosedByDistant for a write.
TEST_P(LinkOnUnconnectedSocket, ReportsTheCLibraryError)
{
    SigpipeIgnored sigpipeIgnored;
    const UnconnectedCase& c = GetParam();
    TempDir dir;
    uint16_t port = 0;
    UniqueFd fd = !c.listening          ? unconnectedSocket(c.domain)
                  : c.domain == AF_UNIX ? listenUnix(dir.file("listener"))
                                        : listenTcp(port);
    Link link(fd.release());
    char buffer[511];
    unsigned int bytesRead = untouched;
    const std::string result =
        c.isWrite ? link.write("z", 1).format() : link.read(buffer, sizeof(buffer), bytesRead).format();
    EXPECT_EQ(c.expected, result);
    EXPECT_EQ(untouched, bytesRead);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, LinkOnUnconnectedSocket,
    ::testing::Values(UnconnectedCase{"UnixWrite", AF_UNIX, false, true, ioError(ENOTCONN)},
                      UnconnectedCase{"UnixRead", AF_UNIX, false, false, ioError(EINVAL)},
                      UnconnectedCase{"UnixListenerWrite", AF_UNIX, true, true, ioError(ENOTCONN)},
                      UnconnectedCase{"UnixListenerRead", AF_UNIX, true, false, ioError(EINVAL)},
                      UnconnectedCase{"TcpWrite", AF_INET, false, true, closedByDistant},
                      UnconnectedCase{"TcpRead", AF_INET, false, false, ioError(ENOTCONN)},
                      UnconnectedCase{"TcpListenerWrite", AF_INET, true, true, closedByDistant},
                      UnconnectedCase{"TcpListenerRead", AF_INET, true, false, ioError(ENOTCONN)}),
    [](const ::testing::TestParamInfo<UnconnectedCase>& info) { return info.param.name; });

struct ResetCase
{
    const char* name;
    bool isWrite;
    std::string expected;
};

class LinkAfterReset : public ::testing::TestWithParam<ResetCase>
{
};

// A reset is the peer's disappearance for a read but an I/O error for a write.
TEST_P(LinkAfterReset, MapsConnectionResetByOperation)
{
    const ResetCase& c = GetParam();
    ConnectedPair pair = connectedPair(Transport::Tcp, "");
    const linger abortive = {1, 0};
    ASSERT_EQ(0, setsockopt(pair.peer.get(), SOL_SOCKET, SO_LINGER, &abortive, sizeof(abortive)));
    pair.peer.reset();
    ASSERT_TRUE(waitReadable(pair.local.get())) << "the reset has arrived";
    Link link(pair.local.release());
    char buffer[511];
    unsigned int bytesRead = untouched;
    const std::string result =
        c.isWrite ? link.write("z", 1).format() : link.read(buffer, sizeof(buffer), bytesRead).format();
    EXPECT_EQ(c.expected, result);
    EXPECT_EQ(untouched, bytesRead);
}

INSTANTIATE_TEST_SUITE_P(Operations, LinkAfterReset,
                         ::testing::Values(ResetCase{"Read", false, closedByDistant},
                                           ResetCase{"Write", true, ioError(ECONNRESET)}),
                         [](const ::testing::TestParamInfo<ResetCase>& info) { return info.param.name; });

TEST(LinkErrnoText, ResetRendersAsTheCLibraryDescribesIt)
{
    EXPECT_EQ("I/O error (Code 10004): {Connection reset by peer (Code 104)}", ioError(ECONNRESET));
}

class LinkDeathTest : public ::testing::TestWithParam<int>
{
};

TEST_P(LinkDeathTest, ConstructorAssertsOnADescriptorNotAboveZero)
{
    EXPECT_DEATH(
        Link link(GetParam()),
        escapeRegex("F/VELMO comms/src/Link:40: Assertion fdLinkSocket > 0 failed: Invalid file descritpor"));
}

INSTANTIATE_TEST_SUITE_P(Descriptors, LinkDeathTest, ::testing::Values(0, -1));

// A Link holds a descriptor of 0 only once its destructor has run, so the
// operations' assertions are reached by using a Link, built in local storage,
// after its destruction. Only the death test's child process does this.
Link* destroyedLink(void* storage)
{
    Link* link = new (storage) Link(dup(STDERR_FILENO));
    link->~Link();
    return link;
}

TEST(LinkOperationDeathTest, CloseAssertsAfterDestruction)
{
    alignas(Link) unsigned char storage[sizeof(Link)];
    EXPECT_DEATH(
        destroyedLink(storage)->close(),
        escapeRegex(
            "F/VELMO comms/src/Link:54: Assertion _fdLinkSocket > 0 failed: Invalid File Descriptor"));
}

TEST(LinkOperationDeathTest, WriteAssertsAfterDestruction)
{
    alignas(Link) unsigned char storage[sizeof(Link)];
    EXPECT_DEATH(
        destroyedLink(storage)->write("z", 1),
        escapeRegex(
            "F/VELMO comms/src/Link:65: Assertion _fdLinkSocket > 0 failed: Invalid File Descriptor"));
}

TEST(LinkOperationDeathTest, ReadAssertsAfterDestruction)
{
    alignas(Link) unsigned char storage[sizeof(Link)];
    char buffer[511];
    unsigned int bytesRead = 0;
    EXPECT_DEATH(
        destroyedLink(storage)->read(buffer, sizeof(buffer), bytesRead),
        escapeRegex(
            "F/VELMO comms/src/Link:107: Assertion _fdLinkSocket > 0 failed: Invalid File Descriptor"));
}

} // namespace
