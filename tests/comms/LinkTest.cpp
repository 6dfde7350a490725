#include "Sockets.h"

#include "velmo/kvo/comms/Link.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <memory>
#include <new>
#include <poll.h>
#include <pthread.h>
#include <thread>

using namespace akvo::test;
using namespace std::chrono_literals;
using velmo::kvo::comms::Link;

namespace {

const char* const closed = "Closed (Code 10002)";
const char* const closedByDistant = "Closed by distant (Code 10003)";
const unsigned int untouched = 777;
// Far more than a socket's send and receive buffers hold together.
const unsigned int overflowingSize = 32u << 20;

class LinkOverTransport : public ::testing::TestWithParam<const char*>
{
protected:
    void SetUp() override { std::signal(SIGPIPE, SIG_IGN); }

    std::string read(unsigned int& bytesRead)
    {
        return _link->read(_buffer, sizeof(_buffer), bytesRead).format();
    }

    TempDir _dir;
    ConnectedPair _pair = connectedPair(GetParam(), _dir.file("listener"));
    std::unique_ptr<Link> _link{new Link(_pair.local.release())};
    char _buffer[511];
};

// Over TCP the first writes may still be accepted; the peer's reset then
// turns the following ones into EPIPE.
TEST_P(LinkOverTransport, PeerCloseIsClosedByDistant)
{
    _pair.peer.reset();
    unsigned int bytesRead = untouched;
    EXPECT_EQ(closedByDistant, read(bytesRead));
    EXPECT_EQ(untouched, bytesRead);
    std::string result = "Success";
    for (int attempt = 0; attempt < 100 && result == "Success"; ++attempt) {
        std::this_thread::sleep_for(10ms);
        result = _link->write("z", 1).format();
    }
    EXPECT_EQ(closedByDistant, result);
}

TEST_P(LinkOverTransport, CloseFromAnotherThreadEndsABlockedReadAndAllLaterCalls)
{
    unsigned int bytesRead = untouched;
    std::string result;
    std::thread reader([&] { result = read(bytesRead); });
    std::this_thread::sleep_for(100ms);
    _link->close();
    reader.join();
    EXPECT_EQ(closed, result);
    EXPECT_EQ(closed, read(bytesRead));
    EXPECT_EQ(untouched, bytesRead);
    EXPECT_EQ(closed, _link->write("z", 1).format());
    EXPECT_EQ("", readExactly(_pair.peer.get(), 1));
}

INSTANTIATE_TEST_SUITE_P(Transports, LinkOverTransport, ::testing::Values("SocketPair", "Unix", "Tcp"),
                         [](const ::testing::TestParamInfo<const char*>& info) { return info.param; });

// Without SA_RESTART the signal makes the blocked call fail with EINTR or
// return a partial count.
void interruptThreeTimes(std::thread& thread)
{
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, nullptr);
    for (int i = 0; i < 3; ++i) {
        std::this_thread::sleep_for(50ms);
        pthread_kill(thread.native_handle(), SIGUSR1);
    }
    std::this_thread::sleep_for(50ms);
}

TEST(LinkInterrupted, ReadKeepsWaitingAndWriteContinuesFromTheFirstUnwrittenByte)
{
    ConnectedPair pair = connectedPair("SocketPair");
    Link link(pair.local.release());
    char buffer[511];
    unsigned int bytesRead = untouched;
    std::string result;
    std::thread reader([&] { result = link.read(buffer, sizeof(buffer), bytesRead).format(); });
    interruptThreeTimes(reader);
    writeAll(pair.peer.get(), "late");
    reader.join();
    EXPECT_EQ("Success", result);
    ASSERT_EQ(4u, bytesRead);

    const std::string data = letters(overflowingSize);
    std::thread writer([&] { result = link.write(data.data(), overflowingSize).format(); });
    interruptThreeTimes(writer);
    const std::string received = readExactly(pair.peer.get(), data.size());
    writer.join();
    EXPECT_EQ("Success", result);
    EXPECT_TRUE(received == data);
}

// A reset is the peer's disappearance for a read but an I/O error for a write.
TEST(LinkAfterReset, ReadIsClosedByDistantAndWriteIsAnIoError)
{
    for (const bool isWrite : {false, true}) {
        ConnectedPair pair = connectedPair("Tcp");
        const linger abortive = {1, 0};
        ASSERT_EQ(0, setsockopt(pair.peer.get(), SOL_SOCKET, SO_LINGER, &abortive, sizeof(abortive)));
        pair.peer.reset();
        pollfd resetArrived = {pair.local.get(), POLLIN, 0};
        ASSERT_EQ(1, poll(&resetArrived, 1, 5000));
        Link link(pair.local.release());
        char buffer[511];
        unsigned int bytesRead = 0;
        EXPECT_EQ(isWrite ? "I/O error (Code 10004): {Connection reset by peer (Code 104)}" : closedByDistant,
                  (isWrite ? link.write("z", 1) : link.read(buffer, sizeof(buffer), bytesRead)).format());
    }
}

// The pending bytes make a faulty read return at once instead of blocking.
TEST(LinkInvalidArgument, NullDataOrZeroSizeTouchesNothing)
{
    ConnectedPair pair = connectedPair("SocketPair");
    Link link(pair.local.release());
    writeAll(pair.peer.get(), "data");
    const char* const invalidArgument = "Invalid Argument(s) (Code 10006)";
    char buffer[16];
    unsigned int bytesRead = untouched;
    EXPECT_EQ(invalidArgument, link.write(nullptr, 1).format());
    EXPECT_EQ(invalidArgument, link.write(buffer, 0).format());
    EXPECT_EQ(invalidArgument, link.read(nullptr, 1, bytesRead).format());
    EXPECT_EQ(invalidArgument, link.read(buffer, 0, bytesRead).format());
    EXPECT_EQ(untouched, bytesRead);
    EXPECT_EQ(0u, pendingBytes(pair.peer.get()));
}

TEST(LinkDeathTest, ConstructorAssertsOnADescriptorNotAboveZero)
{
    const char* const line =
        "F/VELMO comms/src/Link:40: Assertion fdLinkSocket > 0 failed: Invalid file descritpor";
    EXPECT_DEATH(Link link(0), line);
    EXPECT_DEATH(Link link(-1), line);
}

// Only a destroyed Link holds a descriptor of 0, so the operations' assertions
// are reached by using one after its destruction, in the death test's child.
Link* destroyedLink(void* storage)
{
    Link* link = new (storage) Link(dup(STDERR_FILENO));
    link->~Link();
    return link;
}

TEST(LinkDeathTest, OperationsAssertAfterDestruction)
{
    alignas(Link) unsigned char storage[sizeof(Link)];
    char buffer[511];
    unsigned int bytesRead = 0;
    const std::string failed = " Assertion _fdLinkSocket > 0 failed: Invalid File Descriptor";
    EXPECT_DEATH(destroyedLink(storage)->close(), "F/VELMO comms/src/Link:54:" + failed);
    EXPECT_DEATH(destroyedLink(storage)->write("z", 1), "F/VELMO comms/src/Link:65:" + failed);
    EXPECT_DEATH(destroyedLink(storage)->read(buffer, sizeof(buffer), bytesRead),
                 "F/VELMO comms/src/Link:107:" + failed);
}

} // namespace
