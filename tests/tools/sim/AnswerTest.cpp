#include "ProtocolText.h"
#include "Simulator.h"

#include <gtest/gtest.h>

#include <time.h>

namespace akvo {
namespace test {
namespace {

// Sends one framed request and returns the one answer message.
std::string answerTo(RawClient& client, const std::string& request)
{
    std::string answer;
    EXPECT_TRUE(client.write(framed(request)));
    EXPECT_TRUE(client.readMessage(answer)) << "no answer to " << request;
    return answer;
}

TEST(SimAnswers, FixedGetAudioTsIsTheProtocolExample)
{
    SimulatorProcess sim({"--fixed"});
    RawClient client(sim.socketPath());
    ASSERT_TRUE(client.connected());
    EXPECT_EQ(fixedGetAudioTsAnswer, answerTo(client, getAudioTsRequest));
    // The same again: the first answer left no stray bytes behind it.
    EXPECT_EQ(fixedGetAudioTsAnswer, answerTo(client, getAudioTsRequest));
}

struct DelayCase
{
    const char* delay;
    bool accepted;
};

class SimSetAudioDelay : public ::testing::TestWithParam<DelayCase>
{
};

TEST_P(SimSetAudioDelay, AcceptsStepsOfTwentyUpToAHundred)
{
    SimulatorProcess sim({"--fixed"});
    RawClient client(sim.socketPath());
    ASSERT_TRUE(client.connected());
    EXPECT_EQ(GetParam().accepted ? setAudioDelaySuccess : delayRefused,
              answerTo(client, setAudioDelayRequest(GetParam().delay)));
    // The fixed timestamps ignore the margin.
    EXPECT_EQ(fixedGetAudioTsAnswer, answerTo(client, getAudioTsRequest));
}

INSTANTIATE_TEST_SUITE_P(Delays, SimSetAudioDelay,
                         ::testing::Values(DelayCase{"0", true}, DelayCase{"20", true}, DelayCase{"40", true},
                                           DelayCase{"60", true}, DelayCase{"80", true},
                                           DelayCase{"100", true}, DelayCase{"0x14", true},
                                           DelayCase{"30", false}, DelayCase{"101", false},
                                           DelayCase{"120", false}, DelayCase{"10", false},
                                           DelayCase{"18446744073709551615", false}));

TEST(SimAnswers, IdleEngineRefusesBothCommandsWithBadState)
{
    SimulatorProcess sim({"--idle"});
    RawClient client(sim.socketPath());
    ASSERT_TRUE(client.connected());
    EXPECT_EQ(
        R"(<?xml version="1.0" ?><AKVO version="0.1.0"><GetAudioTs_Answer><Result><ErrorCode>1003</ErrorCode>)"
        R"(<Message>The engine is not in a call</Message></Result><LipSyncNtpTimestamps>)"
        R"(<capture_timestamp>0</capture_timestamp><rendering_timestamp>0</rendering_timestamp>)"
        R"(<receiving_timestamp>0</receiving_timestamp><jitter_buffer_depth>0</jitter_buffer_depth>)"
        R"(</LipSyncNtpTimestamps></GetAudioTs_Answer></AKVO>)",
        answerTo(client, getAudioTsRequest));
    EXPECT_EQ(R"(<?xml version="1.0" ?><AKVO version="0.1.0"><SetAudioDelay_Answer><Result>)"
              R"(<ErrorCode>1003</ErrorCode><Message>The engine is not in a call</Message></Result>)"
              R"(</SetAudioDelay_Answer></AKVO>)",
              answerTo(client, setAudioDelayRequest("40")));
    // Even a value it would refuse in a call: the state is checked first.
    EXPECT_NE(std::string::npos,
              answerTo(client, setAudioDelayRequest("30")).find("<ErrorCode>1003</ErrorCode>"));
}

std::uint64_t renderingLead(RawClient& client)
{
    std::string answer = answerTo(client, getAudioTsRequest);
    return numberIn(answer, "rendering_timestamp") - numberIn(answer, "capture_timestamp");
}

TEST(SimAnswers, AcceptedMarginShowsInTheRenderingTimestampForEveryClient)
{
    SimulatorProcess sim;
    RawClient setter(sim.socketPath());
    RawClient reader(sim.socketPath());
    ASSERT_TRUE(setter.connected() && reader.connected());
    std::uint64_t base = renderingLead(reader);
    for (std::uint64_t margin : {40, 100, 0, 20}) {
        EXPECT_EQ(setAudioDelaySuccess, answerTo(setter, setAudioDelayRequest(std::to_string(margin))));
        std::int64_t grown = static_cast<std::int64_t>(renderingLead(reader) - base);
        EXPECT_NEAR(static_cast<double>(ntpMilliseconds(margin)), static_cast<double>(grown), 1.0)
            << "margin " << margin;
    }
    // A refused value leaves the margin where it was.
    EXPECT_EQ(delayRefused, answerTo(setter, setAudioDelayRequest("50")));
    EXPECT_NEAR(static_cast<double>(ntpMilliseconds(20)), static_cast<double>(renderingLead(reader) - base),
                1.0);
}

std::uint64_t ntpSecondsNow()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<std::uint64_t>(now.tv_sec) + 2208988800ULL;
}

TEST(SimAnswers, LiveTimestampsFollowTheHostClockWithinPlausibleBounds)
{
    SimulatorProcess sim;
    RawClient client(sim.socketPath());
    ASSERT_TRUE(client.connected());
    for (int i = 0; i < 50; ++i) {
        std::uint64_t before = ntpSecondsNow();
        std::string answer = answerTo(client, getAudioTsRequest);
        std::uint64_t after = ntpSecondsNow();
        std::uint64_t capture = numberIn(answer, "capture_timestamp");
        std::uint64_t receiving = numberIn(answer, "receiving_timestamp");
        EXPECT_NE(std::string::npos, answer.find("<ErrorCode>1000</ErrorCode>"));
        // The capture time is a little before the request: within the same second or the one before.
        EXPECT_GE(capture >> 32, before - 1);
        EXPECT_LE(capture >> 32, after);
        EXPECT_EQ(ntpMilliseconds(60), numberIn(answer, "rendering_timestamp") - capture);
        EXPECT_GE(capture - receiving, ntpMilliseconds(20));
        EXPECT_LE(capture - receiving, ntpMilliseconds(60));
        std::uint64_t depth = numberIn(answer, "jitter_buffer_depth");
        EXPECT_GE(depth, 20u);
        EXPECT_LE(depth, 80u);
    }
}

} // namespace
} // namespace test
} // namespace akvo
