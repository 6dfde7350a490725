#include "ProtocolText.h"
#include "Simulator.h"

#include <gtest/gtest.h>

#include <memory>
#include <sys/socket.h>

namespace akvo {
namespace test {
namespace {

// The server still answers a newcomer: whatever happened before did not stop it.
void expectServing(const SimulatorProcess& sim)
{
    RawClient client(sim.socketPath());
    ASSERT_TRUE(client.connected());
    ASSERT_TRUE(client.write(framed(getAudioTsRequest)));
    std::string answer;
    ASSERT_TRUE(client.readMessage(answer));
    EXPECT_EQ(fixedGetAudioTsAnswer, answer);
}

TEST(SimFraming, RequestInPiecesIsAnsweredOnceWhole)
{
    SimulatorProcess sim({"--fixed"});
    RawClient client(sim.socketPath());
    ASSERT_TRUE(client.connected());
    std::string request = framed(getAudioTsRequest);
    // Cut in the text, and between the two line feeds of the marker.
    for (std::size_t cut : {std::size_t(10), request.size() - 1}) {
        ASSERT_TRUE(client.write(request.substr(0, cut)));
        // Once a later client has its answer, the server has read the first piece on its own:
        // it serves clients in the order it accepted them.
        expectServing(sim);
        ASSERT_TRUE(client.write(request.substr(cut)));
        std::string answer;
        ASSERT_TRUE(client.readMessage(answer)) << "cut at " << cut;
        EXPECT_EQ(fixedGetAudioTsAnswer, answer);
    }
    for (char byte : framed(setAudioDelayRequest("60"))) {
        ASSERT_TRUE(client.write(std::string(1, byte)));
    }
    std::string answer;
    ASSERT_TRUE(client.readMessage(answer));
    EXPECT_EQ(setAudioDelaySuccess, answer);
}

TEST(SimFraming, SeveralFramesInOneWriteGetTheirAnswersInOrder)
{
    SimulatorProcess sim({"--fixed"});
    RawClient client(sim.socketPath());
    ASSERT_TRUE(client.connected());
    std::string second = framed(getAudioTsRequest);
    // Two whole frames and the first half of a third.
    ASSERT_TRUE(
        client.write(framed(getAudioTsRequest) + framed(setAudioDelayRequest("30")) + second.substr(0, 20)));
    std::string answer;
    ASSERT_TRUE(client.readMessage(answer));
    EXPECT_EQ(fixedGetAudioTsAnswer, answer);
    ASSERT_TRUE(client.readMessage(answer));
    EXPECT_EQ(delayRefused, answer);
    ASSERT_TRUE(client.write(second.substr(20)));
    ASSERT_TRUE(client.readMessage(answer));
    EXPECT_EQ(fixedGetAudioTsAnswer, answer);
}

TEST(SimFraming, ManyClientsInterleavedAreAllServed)
{
    SimulatorProcess sim({"--fixed"});
    const std::size_t count = 50;
    std::vector<std::unique_ptr<RawClient>> clients;
    for (std::size_t i = 0; i < count; ++i) {
        clients.push_back(std::make_unique<RawClient>(sim.socketPath()));
        ASSERT_TRUE(clients.back()->connected()) << "client " << i;
    }
    std::string request = framed(getAudioTsRequest);
    for (auto& client : clients) {
        ASSERT_TRUE(client->write(request.substr(0, 30)));
    }
    for (std::size_t i = 0; i < count; ++i) {
        std::string delay = std::to_string(i % 2 == 0 ? 40 : 50);
        ASSERT_TRUE(clients[i]->write(request.substr(30) + framed(setAudioDelayRequest(delay))));
    }
    for (std::size_t i = count; i-- > 0;) {
        std::string answer;
        ASSERT_TRUE(clients[i]->readMessage(answer)) << "client " << i;
        EXPECT_EQ(fixedGetAudioTsAnswer, answer) << "client " << i;
        ASSERT_TRUE(clients[i]->readMessage(answer)) << "client " << i;
        EXPECT_EQ(i % 2 == 0 ? setAudioDelaySuccess : delayRefused, answer) << "client " << i;
    }
}

TEST(SimFraming, ClientLeavingMidFrameCostsOthersNothing)
{
    // The half frame is no request: the first whole one is number 1.
    SimulatorProcess sim({"--fixed", "--fault", "1:version:9.9.9"});
    {
        RawClient leaver(sim.socketPath());
        ASSERT_TRUE(leaver.connected());
        ASSERT_TRUE(leaver.write(getAudioTsRequest.substr(0, 40)));
    }
    RawClient client(sim.socketPath());
    ASSERT_TRUE(client.write(framed(getAudioTsRequest)));
    std::string answer;
    ASSERT_TRUE(client.readMessage(answer));
    EXPECT_NE(std::string::npos, answer.find(R"(<AKVO version="9.9.9">)")) << answer;
}

TEST(SimFraming, ClientLeavingBeforeItsAnswerCostsOthersNothing)
{
    SimulatorProcess sim({"--fixed", "--fault", "1:delay:100"});
    {
        RawClient leaver(sim.socketPath());
        ASSERT_TRUE(leaver.write(framed(getAudioTsRequest) + framed(getAudioTsRequest)));
    }
    expectServing(sim);
}

TEST(SimFraming, HalfClosedClientStillGetsItsAnswersThenTheEnd)
{
    SimulatorProcess sim({"--fixed", "--fault", "1:delay:50"});
    RawClient client(sim.socketPath());
    ASSERT_TRUE(client.write(framed(getAudioTsRequest) + framed(setAudioDelayRequest("20"))));
    ASSERT_EQ(0, ::shutdown(client.fd(), SHUT_WR));
    EXPECT_EQ(framed(fixedGetAudioTsAnswer) + framed(setAudioDelaySuccess), client.readUntilClosed());
    EXPECT_TRUE(client.closedByPeer());
}

struct BadRequest
{
    const char* name;
    std::string bytes;
};

class SimBadRequest : public ::testing::TestWithParam<BadRequest>
{
};

TEST_P(SimBadRequest, ClosesThatConnectionOnly)
{
    SimulatorProcess sim({"--fixed"});
    RawClient client(sim.socketPath());
    ASSERT_TRUE(client.connected());
    // A good request first, then the bad one, then one that must go unanswered.
    ASSERT_TRUE(
        client.write(framed(getAudioTsRequest) + framed(GetParam().bytes) + framed(getAudioTsRequest)));
    EXPECT_EQ(framed(fixedGetAudioTsAnswer), client.readUntilClosed());
    EXPECT_TRUE(client.closedByPeer());
    expectServing(sim);
}

const std::string envelopeStart = R"(<?xml version="1.0" ?><AKVO version="0.1.0">)";

INSTANTIATE_TEST_SUITE_P(
    Requests, SimBadRequest,
    ::testing::Values(BadRequest{"NotXml", "hello engine"}, BadRequest{"Empty", ""},
                      BadRequest{"Unclosed", envelopeStart + "<GetAudioTs_Request>"},
                      BadRequest{"UnknownCommand", envelopeStart + "<GetVideoTs_Request /></AKVO>"},
                      BadRequest{"AnswerAsRequest", envelopeStart + "<SetAudioDelay_Answer /></AKVO>"},
                      BadRequest{"NoCommand", envelopeStart + "</AKVO>"},
                      BadRequest{"WrongRoot", R"(<AKVX version="0.1.0"><GetAudioTs_Request /></AKVX>)"},
                      BadRequest{"WrongVersion", R"(<AKVO version="0.1.1"><GetAudioTs_Request /></AKVO>)"},
                      BadRequest{"NoVersion", R"(<AKVO><GetAudioTs_Request /></AKVO>)"},
                      BadRequest{"SecondRoot",
                                 R"(<AKVO version="0.1.0"><GetAudioTs_Request /></AKVO><AKVO/>)"},
                      BadRequest{"DelayNotANumber", setAudioDelayRequest("sixty")},
                      BadRequest{"DelayNegative", setAudioDelayRequest("-20")},
                      BadRequest{"DelayMissing", setAudioDelayRequest("")},
                      BadRequest{"DelayTooBig", setAudioDelayRequest("18446744073709551616")},
                      BadRequest{"ZeroByte", std::string(R"(<?xml version="1.0" ?><AKVO version="0.1.0">)") +
                                                 '\0' + "<GetAudioTs_Request /></AKVO>"}),
    [](const ::testing::TestParamInfo<BadRequest>& info) { return info.param.name; });

TEST(SimFraming, EndlessMessageIsCutOff)
{
    SimulatorProcess sim({"--fixed"});
    RawClient client(sim.socketPath());
    ASSERT_TRUE(client.connected());
    // More than a mebibyte without an end marker; the server may close before all of it is written.
    client.write(std::string((1 << 20) + 4096, 'a'));
    EXPECT_EQ("", client.readUntilClosed());
    expectServing(sim);
}

} // namespace
} // namespace test
} // namespace akvo
