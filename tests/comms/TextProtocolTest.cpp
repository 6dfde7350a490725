#include "Sockets.h"
#include "TempDir.h"
#include "Texts.h"

#include "velmo/kvo/comms/TextProtocol.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <memory>
#include <sys/socket.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace akvo::test;
using velmo::kvo::comms::Link;
using velmo::kvo::comms::TextProtocol;

namespace {

const char* const success = "Success";
const char* const closedByDistant =
    "Protocol has been closed by distant (Code 40005): {Closed by distant (Code 10003)}";
const char* const protocolClosed = "Protocol is closed. (Code 40004): {Closed (Code 10002)}";

// Never dereferenced: only shows that receive() resets the out-parameter.
std::string previousMessageStorage;
std::string* const previousMessage = &previousMessageStorage;

std::string linkError(int error)
{
    return "Link error (Code 40003): {I/O error (Code 10004): {" + errnoText(error) + "}}";
}

std::string letters(std::size_t size)
{
    std::string text(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        text[i] = static_cast<char>('a' + (i * 7 + i / 26) % 26);
    }
    return text;
}

// Outcome of one receive(): the rendered result and the message, if any.
struct Received
{
    std::string result;
    bool hasMessage;
    std::string message;
};

Received receive(TextProtocol& protocol)
{
    std::string* message = previousMessage;
    Received received{protocol.receive(message).format(), message != nullptr, ""};
    if (message != nullptr && message != previousMessage) {
        received.message = *message;
        delete message;
    }
    return received;
}

void expectMessage(const std::string& expected, const Received& received)
{
    EXPECT_EQ(success, received.result);
    ASSERT_TRUE(received.hasMessage);
    EXPECT_EQ(expected, received.message);
}

void expectFailure(const std::string& expected, const Received& received)
{
    EXPECT_EQ(expected, received.result);
    EXPECT_FALSE(received.hasMessage);
}

class TextProtocolOverSocketPair : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ConnectedPair pair = connectedPair(Transport::SocketPair, "");
        _linkFd = pair.local.get();
        _link = new Link(pair.local.release());
        _protocol.reset(new TextProtocol(_link));
        _peer = std::move(pair.peer);
    }

    int _linkFd = -1;
    Link* _link = nullptr;
    std::unique_ptr<TextProtocol> _protocol;
    UniqueFd _peer;
};

struct SendCase
{
    const char* name;
    std::string message;
    std::string wire;
};

class TextProtocolSend : public TextProtocolOverSocketPair, public ::testing::WithParamInterface<SendCase>
{
};

TEST_P(TextProtocolSend, PutsTheMessageAndTwoLineFeedsOnTheWire)
{
    const SendCase& c = GetParam();
    EXPECT_EQ(success, _protocol->send(c.message).format());
    EXPECT_EQ(c.wire, readExactly(_peer.get(), c.wire.size()));
    EXPECT_EQ(0u, pendingBytes(_peer.get()));
}

INSTANTIATE_TEST_SUITE_P(
    Messages, TextProtocolSend,
    ::testing::Values(SendCase{"Empty", "", "\n\n"}, SendCase{"Text", "hello", "hello\n\n"},
                      SendCase{"SingleLineFeedInside", "a\nb", "a\nb\n\n"},
                      SendCase{"Xml", "<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\" />",
                               "<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\" />\n\n"}),
    [](const ::testing::TestParamInfo<SendCase>& info) { return info.param.name; });

TEST_F(TextProtocolOverSocketPair, SendsAMessageLargerThanTheSocketBuffers)
{
    const std::string message = letters(4u << 20);
    std::string wire;
    std::thread reader([&] { wire = readExactly(_peer.get(), message.size() + 2); });
    EXPECT_EQ(success, _protocol->send(message).format());
    reader.join();
    EXPECT_TRUE(wire == message + "\n\n");
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

// The peer sends each chunk only once the previous one has been read, so the
// chunks are the protocol's reads, and closes after the last one: a receive
// that returns a message after that close took it from its buffer, and the
// final receive sees the end of the stream.
TEST_P(TextProtocolReceive, CutsTheStreamAtEachPairOfLineFeeds)
{
    const ReceiveCase& c = GetParam();
    std::thread peer([&] {
        for (const std::string& chunk : c.chunks) {
            writeAll(_peer.get(), chunk);
            for (int wait = 0; wait < 30000 && pendingBytes(_linkFd) > 0; ++wait) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        }
        _peer.reset();
    });
    for (const std::string& expected : c.messages) {
        expectMessage(expected, receive(*_protocol));
    }
    expectFailure(closedByDistant, receive(*_protocol));
    peer.join();
}

const std::string xs511(511, 'x');
const std::string xs510(510, 'x');

INSTANTIATE_TEST_SUITE_P(
    Chunks, TextProtocolReceive,
    ::testing::Values(
        ReceiveCase{"EmptyMessage", {"\n\n"}, {""}}, ReceiveCase{"OneFrame", {"hello\n\n"}, {"hello"}},
        ReceiveCase{"TwoFramesInOneChunk", {"one\n\ntwo\n\n"}, {"one", "two"}},
        ReceiveCase{"FourFramesInOneChunk", {"1\n\n2\n\n\n\n3\n\n"}, {"1", "2", "", "3"}},
        ReceiveCase{"FrameSplitInTheText", {"ab", "c\n\n"}, {"abc"}},
        ReceiveCase{"FrameSplitBetweenTheLineFeeds", {"abc\n", "\n"}, {"abc"}},
        ReceiveCase{"FrameSplitIntoSingleBytes", {"a", "b", "\n", "\n"}, {"ab"}},
        ReceiveCase{"ThirdLineFeedStartsTheNextMessage", {"abc\n\n\n", "def\n\n"}, {"abc", "\ndef"}},
        ReceiveCase{"ThirdLineFeedCompletedByOneMore", {"abc\n\n\n", "\n"}, {"abc", ""}},
        ReceiveCase{"ZeroByteDropsTheRestOfTheChunk", {std::string("ab\0cd\n\n", 7), "ef\n\n"}, {"abef"}},
        ReceiveCase{"ChunkStartingWithAZeroByteAddsNothing", {std::string("\0xyz\n\n", 6), "q\n\n"}, {"q"}},
        ReceiveCase{"ZeroByteAfterACompleteFrame", {std::string("m\n\n\0junk\n\n", 11), "n\n\n"}, {"m", "n"}},
        ReceiveCase{"ChunksAreAtMost511Bytes", {xs511 + std::string("\0y\n\nz\n\n", 7), "\n\n"}, {xs511}},
        ReceiveCase{"ChunksAreAtLeast511Bytes", {xs510 + std::string("\0y\n\n", 4)}, {xs510 + "y"}},
        ReceiveCase{"MessageOfManyChunks", {letters(100000) + "\n\n"}, {letters(100000)}}),
    [](const ::testing::TestParamInfo<ReceiveCase>& info) { return info.param.name; });

TEST_F(TextProtocolOverSocketPair, PeerClosingAfterHalfAMessageIsClosedByDistant)
{
    writeAll(_peer.get(), "half");
    _peer.reset();
    expectFailure(closedByDistant, receive(*_protocol));
    expectFailure(closedByDistant, receive(*_protocol));
}

// A FIFO reports the end of the stream while it has no writer and delivers
// data again once a writer comes back, which shows what a failed receive kept.
TEST(TextProtocolOverFifo, HalfAMessageSurvivesAFailedReceive)
{
    TempDir dir;
    const std::string path = dir.file("fifo");
    ASSERT_EQ(0, mkfifo(path.c_str(), 0600));
    const int readEnd = open(path.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GT(readEnd, 0);
    ASSERT_EQ(0, fcntl(readEnd, F_SETFL, 0));
    TextProtocol protocol(new Link(readEnd));
    {
        UniqueFd writer(open(path.c_str(), O_WRONLY));
        writeAll(writer.get(), "half");
    }
    expectFailure(closedByDistant, receive(protocol));
    {
        UniqueFd writer(open(path.c_str(), O_WRONLY));
        writeAll(writer.get(), "-rest\n\n");
    }
    expectMessage("half-rest", receive(protocol));
}

TEST_F(TextProtocolOverSocketPair, SendAfterTheLinkWasClosedIsProtocolClosed)
{
    SigpipeIgnored sigpipeIgnored;
    _link->close();
    EXPECT_EQ(protocolClosed, _protocol->send("hello").format());
    EXPECT_EQ("", readExactly(_peer.get(), 1));
}

TEST_F(TextProtocolOverSocketPair, ReceiveAfterTheLinkWasClosedIsProtocolClosed)
{
    writeAll(_peer.get(), "dropped\n\n");
    _link->close();
    expectFailure(protocolClosed, receive(*_protocol));
}

TEST_F(TextProtocolOverSocketPair, SendAfterThePeerClosedIsClosedByDistant)
{
    SigpipeIgnored sigpipeIgnored;
    _peer.reset();
    EXPECT_EQ(closedByDistant, _protocol->send("hello").format());
}

TEST_F(TextProtocolOverSocketPair, DestructionShutsDownAndClosesTheLink)
{
    _protocol.reset();
    EXPECT_FALSE(isOpen(_linkFd));
    EXPECT_EQ("", readExactly(_peer.get(), 1));
}

// Each protocol keeps its own leftover bytes although chunks pass through one
// shared buffer.
TEST(TextProtocolPair, InterleavedReceivesKeepTheirOwnLeftovers)
{
    ConnectedPair first = connectedPair(Transport::SocketPair, "");
    ConnectedPair second = connectedPair(Transport::SocketPair, "");
    TextProtocol firstProtocol(new Link(first.local.release()));
    TextProtocol secondProtocol(new Link(second.local.release()));
    writeAll(first.peer.get(), "a\n\nb");
    writeAll(second.peer.get(), "c\n\nd");
    expectMessage("a", receive(firstProtocol));
    expectMessage("c", receive(secondProtocol));
    writeAll(second.peer.get(), "\n\n");
    writeAll(first.peer.get(), "\n\n");
    expectMessage("d", receive(secondProtocol));
    expectMessage("b", receive(firstProtocol));
}

struct UnconnectedCase
{
    const char* name;
    bool isSend;
    std::string expected;
};

class TextProtocolOnUnconnectedSocket : public ::testing::TestWithParam<UnconnectedCase>
{
};

TEST_P(TextProtocolOnUnconnectedSocket, ReportsALinkError)
{
    const UnconnectedCase& c = GetParam();
    TextProtocol protocol(new Link(unconnectedSocket(AF_UNIX).release()));
    if (c.isSend) {
        EXPECT_EQ(c.expected, protocol.send("hello").format());
    } else {
        expectFailure(c.expected, receive(protocol));
    }
}

INSTANTIATE_TEST_SUITE_P(Operations, TextProtocolOnUnconnectedSocket,
                         ::testing::Values(UnconnectedCase{"Send", true, linkError(ENOTCONN)},
                                           UnconnectedCase{"Receive", false, linkError(EINVAL)}),
                         [](const ::testing::TestParamInfo<UnconnectedCase>& info) {
                             return info.param.name;
                         });

TEST(TextProtocolMarker, IsTwoLineFeeds)
{
    EXPECT_EQ(std::string("\n\n"), TextProtocol::endMessageMarker);
}

TEST(TextProtocolDeathTest, ConstructorAssertsOnANullLink)
{
    EXPECT_DEATH(
        TextProtocol protocol(nullptr),
        escapeRegex("F/VELMO comms/src/TextProtocol:97: Assertion link != NULL failed: Null pointer"));
}

} // namespace
