#include "EngineMessages.h"
#include "Simulator.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

namespace akvo {
namespace test {
namespace {

const std::string notInCall = "<Message>The engine is not in a call</Message>";
const std::string setAudioDelaySuccess = setAudioDelayAnswer("1000", "<Message/>");
const std::string delayRefused =
    setAudioDelayAnswer("1002", "<Message>delay must be 0 to 100 in steps of 20</Message>");

std::string fixedAnswerInVersion(const std::string& version)
{
    return R"(<?xml version="1.0" ?><AKVO version=")" + version + "\">" +
           fixedGetAudioTsAnswer.substr(envelope.size());
}

struct ExchangeCase
{
    const char* name;
    std::vector<std::string> args;
    std::string request;
    std::string expected;
    int minimumMs;
};

class SimExchange : public ::testing::TestWithParam<ExchangeCase>
{
};

TEST_P(SimExchange, SendsExactlyTheseBytes)
{
    SimulatorProcess sim(GetParam().args);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(GetParam().expected, serverReply(sim.socketPath(), framed(GetParam().request)));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(GetParam().minimumMs));
}

std::vector<std::string> fault(const std::string& rule)
{
    return {"--fixed", "--fault", "1:" + rule};
}

INSTANTIATE_TEST_SUITE_P(
    Cases, SimExchange,
    ::testing::Values(
        ExchangeCase{"fixedTimestamps", {"--fixed"}, getAudioTsRequest, framed(fixedGetAudioTsAnswer), 0},
        ExchangeCase{
            "delayAccepted", {"--fixed"}, setAudioDelayRequest("100"), framed(setAudioDelaySuccess), 0},
        ExchangeCase{"delayNotAStep", {"--fixed"}, setAudioDelayRequest("30"), framed(delayRefused), 0},
        ExchangeCase{"delayTooLarge", {"--fixed"}, setAudioDelayRequest("120"), framed(delayRefused), 0},
        ExchangeCase{"idleTimestamps",
                     {"--idle"},
                     getAudioTsRequest,
                     framed(getAudioTsAnswer("1003", notInCall, {"0", "0", "0", "0"})),
                     0},
        ExchangeCase{"idleDelay",
                     {"--idle"},
                     setAudioDelayRequest("40"),
                     framed(setAudioDelayAnswer("1003", notInCall)),
                     0},
        ExchangeCase{"close", fault("close"), getAudioTsRequest, "", 0},
        ExchangeCase{"closeAfter", fault("close-after:10"), getAudioTsRequest,
                     framed(fixedGetAudioTsAnswer).substr(0, 10), 0},
        // 421 bytes in 9 writes: 8 pauses.
        ExchangeCase{"split", fault("split:50:20"), getAudioTsRequest, framed(fixedGetAudioTsAnswer), 160},
        ExchangeCase{"double", fault("double"), setAudioDelayRequest("40"),
                     framed(setAudioDelaySuccess) + framed(setAudioDelaySuccess), 0},
        ExchangeCase{"version", fault("version:0.1.1"), getAudioTsRequest,
                     framed(fixedAnswerInVersion("0.1.1")), 0},
        ExchangeCase{"error", fault("error:1001:engine <busy> & cold"), setAudioDelayRequest("100"),
                     framed(setAudioDelayAnswer("1001", "<Message>engine &lt;busy&gt; &amp; cold</Message>")),
                     0},
        ExchangeCase{"garbage", fault("garbage"), getAudioTsRequest,
                     framed("%%% engine garbage: this is not an XML document %%%"), 0},
        ExchangeCase{"delay", fault("delay:200"), getAudioTsRequest, framed(fixedGetAudioTsAnswer), 200}),
    [](const ::testing::TestParamInfo<ExchangeCase>& info) { return std::string(info.param.name); });

// The number between <tag> and </tag>.
uint64_t numberIn(const std::string& document, const std::string& tag)
{
    const size_t start = document.find("<" + tag + ">") + tag.size() + 2;
    return std::stoull(document.substr(start, document.find("</" + tag + ">") - start));
}

uint64_t renderingLead(RawClient& client)
{
    std::string answer;
    EXPECT_TRUE(client.write(framed(getAudioTsRequest)) && client.readMessage(answer));
    return numberIn(answer, "rendering_timestamp") - numberIn(answer, "capture_timestamp");
}

TEST(SimAnswers, AcceptedMarginShowsInTheTimestampsOfEveryClient)
{
    SimulatorProcess sim;
    RawClient setter(sim.socketPath());
    RawClient reader(sim.socketPath());
    const uint64_t before = renderingLead(reader);
    std::string answer;
    // The refused 50 leaves the margin at 100.
    for (const char* margin : {"100", "50"}) {
        ASSERT_TRUE(setter.write(framed(setAudioDelayRequest(margin))) && setter.readMessage(answer));
    }
    // 100 ms in the NTP form, 32.32 fixed point.
    EXPECT_NEAR((100ULL << 32) / 1000.0, static_cast<double>(renderingLead(reader) - before), 1.0);
}

TEST(SimFraming, PartialFrameIsAnsweredOnceItsRestArrives)
{
    SimulatorProcess sim({"--fixed"});
    RawClient client(sim.socketPath());
    const std::string request = framed(getAudioTsRequest);
    // Cut in the text, and between the two line feeds of the marker.
    for (size_t cut : {size_t(10), request.size() - 1}) {
        ASSERT_TRUE(client.write(request.substr(0, cut)));
        // The server serves clients in the order it accepted them: once a later
        // client has its answer, the first piece has been read on its own.
        EXPECT_EQ(framed(fixedGetAudioTsAnswer), serverReply(sim.socketPath(), request));
        ASSERT_TRUE(client.write(request.substr(cut)));
        std::string answer;
        ASSERT_TRUE(client.readMessage(answer)) << "cut at " << cut;
        EXPECT_EQ(fixedGetAudioTsAnswer, answer);
    }
}

TEST(SimFraming, TwoFramesInOneWriteGetTheirAnswersInOrder)
{
    SimulatorProcess sim({"--fixed"});
    EXPECT_EQ(framed(fixedGetAudioTsAnswer) + framed(delayRefused),
              serverReply(sim.socketPath(), framed(getAudioTsRequest) + framed(setAudioDelayRequest("30"))));
}

TEST(SimFraming, ManyClientsInterleavedAreAllServed)
{
    SimulatorProcess sim({"--fixed"});
    const std::string request = framed(getAudioTsRequest);
    std::vector<std::unique_ptr<RawClient>> clients;
    for (int i = 0; i < 50; ++i) {
        clients.push_back(std::make_unique<RawClient>(sim.socketPath()));
        ASSERT_TRUE(clients.back()->write(request.substr(0, 30))) << "client " << i;
    }
    for (auto& client : clients) {
        ASSERT_TRUE(client->write(request.substr(30)));
    }
    for (auto client = clients.rbegin(); client != clients.rend(); ++client) {
        std::string answer;
        ASSERT_TRUE((*client)->readMessage(answer));
        EXPECT_EQ(fixedGetAudioTsAnswer, answer);
    }
}

TEST(SimFraming, ClientLeavingMidFrameCostsOthersNothing)
{
    // The half frame is no request: the first whole one is number 1.
    SimulatorProcess sim({"--fixed", "--fault", "1:version:9.9.9"});
    EXPECT_TRUE(RawClient(sim.socketPath()).write(getAudioTsRequest.substr(0, 40)));
    EXPECT_EQ(framed(fixedAnswerInVersion("9.9.9")),
              serverReply(sim.socketPath(), framed(getAudioTsRequest)));
}

class SimBadRequest : public ::testing::TestWithParam<std::string>
{
};

TEST_P(SimBadRequest, ClosesThatConnectionOnly)
{
    SimulatorProcess sim({"--fixed"});
    const std::string good = framed(getAudioTsRequest);
    // The request after the bad one goes unanswered.
    EXPECT_EQ(framed(fixedGetAudioTsAnswer), serverReply(sim.socketPath(), good + framed(GetParam()) + good));
    EXPECT_EQ(framed(fixedGetAudioTsAnswer), serverReply(sim.socketPath(), good));
}

INSTANTIATE_TEST_SUITE_P(Requests, SimBadRequest,
                         ::testing::Values("hello engine", "", envelope + "<GetAudioTs_Request>",
                                           envelope + "<GetVideoTs_Request /></AKVO>",
                                           R"(<AKVO version="0.1.1"><GetAudioTs_Request /></AKVO>)",
                                           setAudioDelayRequest("sixty"), setAudioDelayRequest("-20")));

} // namespace
} // namespace test
} // namespace akvo
