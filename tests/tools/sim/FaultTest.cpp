#include "ProtocolText.h"
#include "Simulator.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace akvo {
namespace test {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

std::string answerTo(RawClient& client, const std::string& request)
{
    std::string answer;
    EXPECT_TRUE(client.write(framed(request)));
    EXPECT_TRUE(client.readMessage(answer)) << "no answer to " << request;
    return answer;
}

TEST(SimFaults, CloseEndsTheConnectionInsteadOfAnswering)
{
    SimulatorProcess sim({"--fixed", "--fault", "1:close"});
    RawClient closed(sim.socketPath());
    ASSERT_TRUE(closed.write(framed(getAudioTsRequest)));
    EXPECT_EQ("", closed.readUntilClosed());
    EXPECT_TRUE(closed.closedByPeer());
    RawClient next(sim.socketPath());
    EXPECT_EQ(fixedGetAudioTsAnswer, answerTo(next, getAudioTsRequest));
}

class SimCloseAfter : public ::testing::TestWithParam<std::size_t>
{
};

TEST_P(SimCloseAfter, SendsThatManyBytesOfTheFramedAnswerThenCloses)
{
    SimulatorProcess sim({"--fixed", "--fault", "1:close-after:" + std::to_string(GetParam())});
    RawClient client(sim.socketPath());
    ASSERT_TRUE(client.write(framed(getAudioTsRequest)));
    EXPECT_EQ(framed(fixedGetAudioTsAnswer).substr(0, GetParam()), client.readUntilClosed());
    EXPECT_TRUE(client.closedByPeer());
}

// The framed answer is 421 bytes: 420 cuts the second line feed of its marker.
INSTANTIATE_TEST_SUITE_P(Sizes, SimCloseAfter, ::testing::Values(0, 1, 10, 420, 421, 100000));

TEST(SimFaults, SplitSendsTheWholeAnswerInPausedPieces)
{
    SimulatorProcess sim({"--fixed", "--fault", "1:split:50:20"});
    RawClient client(sim.socketPath());
    auto start = steady_clock::now();
    EXPECT_EQ(fixedGetAudioTsAnswer, answerTo(client, getAudioTsRequest));
    // 421 bytes in 9 writes: 8 pauses.
    EXPECT_GE(steady_clock::now() - start, milliseconds(8 * 20));
    // Then the client is served as usual.
    EXPECT_EQ(fixedGetAudioTsAnswer, answerTo(client, getAudioTsRequest));
}

TEST(SimFaults, SplitPauseDoesNotHoldOtherClients)
{
    SimulatorProcess sim({"--fixed", "--fault", "1:split:10:600000"});
    RawClient slow(sim.socketPath());
    RawClient other(sim.socketPath());
    ASSERT_TRUE(slow.write(framed(getAudioTsRequest)));
    // Wait for the first piece, so that the slow client's request is surely number 1.
    pollfd pfd{slow.fd(), POLLIN, 0};
    ASSERT_EQ(1, ::poll(&pfd, 1, 10000));
    EXPECT_EQ(fixedGetAudioTsAnswer, answerTo(other, getAudioTsRequest));
    char piece[64];
    ASSERT_EQ(10, ::recv(slow.fd(), piece, sizeof piece, MSG_DONTWAIT));
    EXPECT_EQ(fixedGetAudioTsAnswer.substr(0, 10), std::string(piece, 10));
}

TEST(SimFaults, DoubleSendsTheAnswerTwiceInOneWrite)
{
    SimulatorProcess sim({"--fixed", "--fault", "1:double"});
    RawClient client(sim.socketPath());
    EXPECT_EQ(setAudioDelaySuccess, answerTo(client, setAudioDelayRequest("40")));
    std::string second;
    ASSERT_TRUE(client.readMessage(second));
    EXPECT_EQ(setAudioDelaySuccess, second);
}

TEST(SimFaults, VersionChangesTheEnvelopeOnly)
{
    SimulatorProcess sim({"--fixed", "--fault", "1:version:0.1.1", "--fault", "2:version:a\"b"});
    RawClient client(sim.socketPath());
    std::string expected = fixedGetAudioTsAnswer;
    expected.replace(expected.find("0.1.0"), 5, "0.1.1");
    EXPECT_EQ(expected, answerTo(client, getAudioTsRequest));
    EXPECT_NE(std::string::npos, answerTo(client, getAudioTsRequest).find(R"(<AKVO version="a&quot;b">)"));
}

TEST(SimFaults, ErrorAnswersWithThatCodeAndMessageForEitherCommand)
{
    SimulatorProcess sim({"--fault", "1:error:1001:engine <busy> & cold", "--fault", "2:error:-5:", "--fault",
                          "3:error:1003:not in call"});
    RawClient client(sim.socketPath());
    EXPECT_EQ(R"(<?xml version="1.0" ?><AKVO version="0.1.0"><SetAudioDelay_Answer><Result>)"
              R"(<ErrorCode>1001</ErrorCode><Message>engine &lt;busy&gt; &amp; cold</Message></Result>)"
              R"(</SetAudioDelay_Answer></AKVO>)",
              answerTo(client, setAudioDelayRequest("100")));
    EXPECT_EQ(R"(<?xml version="1.0" ?><AKVO version="0.1.0"><SetAudioDelay_Answer><Result>)"
              R"(<ErrorCode>-5</ErrorCode><Message/></Result></SetAudioDelay_Answer></AKVO>)",
              answerTo(client, setAudioDelayRequest("20")));
    EXPECT_EQ(
        R"(<?xml version="1.0" ?><AKVO version="0.1.0"><GetAudioTs_Answer><Result><ErrorCode>1003</ErrorCode>)"
        R"(<Message>not in call</Message></Result><LipSyncNtpTimestamps>)"
        R"(<capture_timestamp>0</capture_timestamp><rendering_timestamp>0</rendering_timestamp>)"
        R"(<receiving_timestamp>0</receiving_timestamp><jitter_buffer_depth>0</jitter_buffer_depth>)"
        R"(</LipSyncNtpTimestamps></GetAudioTs_Answer></AKVO>)",
        answerTo(client, getAudioTsRequest));
    // Neither refused SetAudioDelay was carried out: the margin is still 0.
    std::string answer = answerTo(client, getAudioTsRequest);
    EXPECT_EQ(ntpMilliseconds(60),
              numberIn(answer, "rendering_timestamp") - numberIn(answer, "capture_timestamp"));
}

TEST(SimFaults, GarbageIsFramedButNotXml)
{
    SimulatorProcess sim({"--fixed", "--fault", "1:garbage"});
    RawClient client(sim.socketPath());
    EXPECT_EQ(garbageText, answerTo(client, getAudioTsRequest));
    EXPECT_EQ(fixedGetAudioTsAnswer, answerTo(client, getAudioTsRequest));
}

TEST(SimFaults, DelayHoldsTheAnswerAtLeastThatLong)
{
    SimulatorProcess sim({"--fixed", "--fault", "1:delay:200"});
    RawClient client(sim.socketPath());
    auto start = steady_clock::now();
    EXPECT_EQ(fixedGetAudioTsAnswer, answerTo(client, getAudioTsRequest));
    EXPECT_GE(steady_clock::now() - start, milliseconds(200));
}

TEST(SimFaults, DelayedAnswerKeepsItsPlaceInItsClientsOrder)
{
    SimulatorProcess sim({"--fixed", "--fault", "1:delay:300"});
    RawClient client(sim.socketPath());
    ASSERT_TRUE(client.write(framed(getAudioTsRequest) + framed(setAudioDelayRequest("30"))));
    std::string answer;
    ASSERT_TRUE(client.readMessage(answer));
    EXPECT_EQ(fixedGetAudioTsAnswer, answer);
    ASSERT_TRUE(client.readMessage(answer));
    EXPECT_EQ(delayRefused, answer);
}

TEST(SimFaults, DelayDoesNotHoldOtherClients)
{
    SimulatorProcess sim({"--fixed", "--fault", "1:delay:600000"});
    // Connected and written first, so its request is number 1: the server serves its clients in
    // the order it accepted them.
    RawClient waiting(sim.socketPath());
    ASSERT_TRUE(waiting.write(framed(getAudioTsRequest)));
    RawClient other(sim.socketPath());
    EXPECT_EQ(fixedGetAudioTsAnswer, answerTo(other, getAudioTsRequest));
}

TEST(SimFaults, NumberedFaultTakesPrecedenceOverStarAcrossClients)
{
    SimulatorProcess sim({"--fixed", "--fault", "*:version:2.0.0", "--fault", "2:close"});
    RawClient first(sim.socketPath());
    EXPECT_NE(std::string::npos, answerTo(first, getAudioTsRequest).find(R"(version="2.0.0")"));
    RawClient second(sim.socketPath());
    ASSERT_TRUE(second.write(framed(getAudioTsRequest)));
    EXPECT_EQ("", second.readUntilClosed());
    EXPECT_NE(std::string::npos, answerTo(first, getAudioTsRequest).find(R"(version="2.0.0")"));
}

TEST(SimFaults, FaultFileAddsToTheCommandLine)
{
    char folder[] = "/tmp/akvo-sim-faults-XXXXXX";
    ASSERT_NE(nullptr, ::mkdtemp(folder));
    std::string path = std::string(folder) + "/faults";
    std::ofstream(path) << "# faults for the file test\n\n  2:double  \n\t# indented comment\n3:garbage\n";
    {
        SimulatorProcess sim({"--fixed", "--fault", "1:version:7", "--fault-file", path});
        RawClient client(sim.socketPath());
        EXPECT_NE(std::string::npos, answerTo(client, getAudioTsRequest).find(R"(version="7")"));
        EXPECT_EQ(fixedGetAudioTsAnswer, answerTo(client, getAudioTsRequest));
        std::string again;
        ASSERT_TRUE(client.readMessage(again));
        EXPECT_EQ(fixedGetAudioTsAnswer, again);
        EXPECT_EQ(garbageText, answerTo(client, getAudioTsRequest));
        EXPECT_EQ(fixedGetAudioTsAnswer, answerTo(client, getAudioTsRequest));
    }
    ::unlink(path.c_str());
    ::rmdir(folder);
}

} // namespace
} // namespace test
} // namespace akvo
