#include "Sockets.h"

#include "velmo/kvo/comms/TextProtocol.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <thread>
#include <vector>

using namespace akvo::test;
using velmo::kvo::comms::Link;
using velmo::kvo::comms::TextProtocol;

namespace {

const char* const closedByDistant =
    "Protocol has been closed by distant (Code 40005): {Closed by distant (Code 10003)}";

// What receive() leaves in a message pointer that it did not reset.
std::string unchanged = "<unchanged>";

// The rendered result of one receive() and its message, "<null>" for none.
using Outcome = std::pair<std::string, std::string>;

Outcome receive(TextProtocol& protocol)
{
    std::string* message = &unchanged;
    const std::string result = protocol.receive(message).format();
    std::unique_ptr<std::string> owned(message == &unchanged ? nullptr : message);
    return Outcome(result, message == nullptr ? "<null>" : *message);
}

class TextProtocolOverSocketPair : public ::testing::Test
{
protected:
    ConnectedPair _pair = connectedPair("SocketPair");
    const int _linkFd = _pair.local.get();
    Link* const _link = new Link(_pair.local.release());
    std::unique_ptr<TextProtocol> _protocol{new TextProtocol(_link)};
};

TEST_F(TextProtocolOverSocketPair, SendPutsTheMessageAndTwoLineFeedsOnTheWire)
{
    for (const std::string message : {"", "hello"}) {
        EXPECT_EQ("Success", _protocol->send(message).format());
        EXPECT_EQ(message + "\n\n", readExactly(_pair.peer.get(), message.size() + 2));
    }
    EXPECT_EQ(0u, pendingBytes(_pair.peer.get()));
}

struct ReceiveCase
{
    const char* name;
    std::vector<std::string> chunks;
    std::vector<std::string> messages;
};

class TextProtocolReceive : public TextProtocolOverSocketPair,
                            public ::testing::WithParamInterface<ReceiveCase>
{
};

// The peer sends each chunk once the previous one has been read, so chunks
// are the protocol's reads, and closes after the last: a message returned
// after that came from the buffer, and the final receive sees the end.
TEST_P(TextProtocolReceive, CutsTheStreamAtEachPairOfLineFeeds)
{
    std::thread peer([&] {
        for (const std::string& chunk : GetParam().chunks) {
            writeAll(_pair.peer.get(), chunk);
            for (int wait = 0; wait < 30000 && pendingBytes(_linkFd) > 0; ++wait) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        }
        _pair.peer.reset();
    });
    for (const std::string& expected : GetParam().messages) {
        EXPECT_EQ(Outcome("Success", expected), receive(*_protocol));
    }
    EXPECT_EQ(Outcome(closedByDistant, "<null>"), receive(*_protocol));
    peer.join();
}

const std::string xs511(511, 'x');

INSTANTIATE_TEST_SUITE_P(
    Chunks, TextProtocolReceive,
    ::testing::Values(
        ReceiveCase{"EmptyMessage", {"\n\n"}, {""}},
        ReceiveCase{"TwoFramesInOneChunk", {"one\n\ntwo\n\n"}, {"one", "two"}},
        ReceiveCase{"FrameSplitInTheText", {"ab", "c\n\n"}, {"abc"}},
        ReceiveCase{"FrameSplitBetweenTheLineFeeds", {"abc\n", "\n"}, {"abc"}},
        ReceiveCase{"ThirdLineFeedStartsTheNextMessage", {"abc\n\n\n", "def\n\n"}, {"abc", "\ndef"}},
        ReceiveCase{"ZeroByteDropsTheRestOfTheChunk", {std::string("ab\0cd\n\n", 7), "ef\n\n"}, {"abef"}},
        ReceiveCase{"ChunksAreAtMost511Bytes", {xs511 + std::string("\0y\n\nz\n\n", 7), "\n\n"}, {xs511}},
        ReceiveCase{"MessageOfManyChunks", {letters(100000) + "\n\n"}, {letters(100000)}}),
    [](const ::testing::TestParamInfo<ReceiveCase>& info) { return info.param.name; });

// A FIFO reports the end of the stream while it has no writer and delivers
// again once a writer comes back, which shows what a failed receive kept.
TEST(TextProtocolOverFifo, HalfAMessageSurvivesThePeerClosing)
{
    TempDir dir;
    const std::string path = dir.file("fifo");
    ASSERT_EQ(0, mkfifo(path.c_str(), 0600));
    const int readEnd = open(path.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GT(readEnd, 0);
    ASSERT_EQ(0, fcntl(readEnd, F_SETFL, 0));
    TextProtocol protocol(new Link(readEnd));
    writeAll(UniqueFd(open(path.c_str(), O_WRONLY)).get(), "half");
    EXPECT_EQ(Outcome(closedByDistant, "<null>"), receive(protocol));
    writeAll(UniqueFd(open(path.c_str(), O_WRONLY)).get(), "-rest\n\n");
    EXPECT_EQ(Outcome("Success", "half-rest"), receive(protocol));
}

TEST(TextProtocolDeathTest, ConstructorAssertsOnANullLink)
{
    EXPECT_DEATH(TextProtocol protocol(nullptr),
                 "F/VELMO comms/src/TextProtocol:97: Assertion link != NULL failed: Null pointer");
}

} // namespace
