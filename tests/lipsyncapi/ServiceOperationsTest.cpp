#include "ResultTexts.h"
#include "Simulator.h"
#include "Timestamps.h"
#include "velmo/kvo/lipsyncapi/Service.h"

#include <gtest/gtest.h>

using namespace akvo::test;
using velmo::kvo::lipsyncapi::Service;

namespace {

struct MarginCase
{
    unsigned long long delayMs;
    std::string expected;
};

class MarginValidation : public ::testing::TestWithParam<MarginCase>
{
};

// The simulator refuses anything but 0..100 in steps of 20 with its own code,
// so a local refusal is told apart by the exact message and by the margin
// staying as it was.
TEST_P(MarginValidation, IsDecidedLocallyOrSent)
{
    SimulatorProcess simulator;
    Service service;
    ASSERT_TRUE(service.connect(simulator.socketPath()).isSuccess());
    ASSERT_TRUE(service.setAudioDelayMargin(80).isSuccess());
    const Service::ServiceResult result = service.setAudioDelayMargin(GetParam().delayMs);
    EXPECT_EQ(GetParam().expected, result.format());
    unsigned long long margin = 0;
    ASSERT_TRUE(service.getAudioDelayMargin(margin).isSuccess());
    EXPECT_EQ(result.isSuccess() ? GetParam().delayMs : 80u, margin);
}

INSTANTIATE_TEST_SUITE_P(Service, MarginValidation,
                         ::testing::Values(MarginCase{0, "Success"}, MarginCase{100, "Success"},
                                           MarginCase{60, "Success"},
                                           MarginCase{101, marginOutOfRangeText(101)},
                                           MarginCase{4294967296ull, marginOutOfRangeText(4294967296ull)},
                                           MarginCase{4294967316ull, marginOutOfRangeText(4294967316ull)},
                                           MarginCase{10, marginNotAStepText(10)},
                                           MarginCase{99, marginNotAStepText(99)}));

TEST(ServiceOperations, MarginIsRememberedAcrossRefusalsAndReconnection)
{
    // Request 2 is the 60 ms margin, which the engine refuses.
    SimulatorProcess simulator({"--fault", "2:error:1002:margin refused"});
    Service service;
    ASSERT_TRUE(service.connect(simulator.socketPath()).isSuccess());
    unsigned long long margin = 99;
    ASSERT_TRUE(service.getAudioDelayMargin(margin).isSuccess());
    EXPECT_EQ(0u, margin);

    ASSERT_TRUE(service.setAudioDelayMargin(40).isSuccess());
    EXPECT_EQ(
        "The lipsync server returned an error (Code 1006): {Invalid parameter (Code 1002): margin refused}",
        service.setAudioDelayMargin(60).format());
    ASSERT_TRUE(service.getAudioDelayMargin(margin).isSuccess());
    EXPECT_EQ(40u, margin);

    ASSERT_TRUE(service.disconnect().isSuccess());
    ASSERT_TRUE(service.connect(simulator.socketPath()).isSuccess());
    ASSERT_TRUE(service.getAudioDelayMargin(margin).isSuccess());
    EXPECT_EQ(40u, margin);
}

TEST(ServiceOperations, TimestampsAreCopiedOnlyOnSuccess)
{
    SimulatorProcess simulator({"--fixed", "--fault", "2:error:1001:engine failure"});
    Service service;
    ASSERT_TRUE(service.connect(simulator.socketPath()).isSuccess());
    LipSyncNtpTimestamps timestamps = untouchedTimestamps;
    ASSERT_EQ("Success", service.getAudioTimestamps(timestamps).format());
    EXPECT_TRUE(sameTimestamps(fixedTimestamps, timestamps));

    LipSyncNtpTimestamps kept = untouchedTimestamps;
    EXPECT_EQ("The lipsync server returned an error (Code 1006): {Unknown error (Code 1001): engine failure}",
              service.getAudioTimestamps(kept).format());
    EXPECT_TRUE(sameTimestamps(untouchedTimestamps, kept));
}

struct ServerAnswerCase
{
    const char* name;
    std::vector<std::string> simulatorArgs;
    const char* expected;
};

class ServerAnswers : public ::testing::TestWithParam<ServerAnswerCase>
{
};

// Both exchanging operations map the engine's answers the same way.
TEST_P(ServerAnswers, MapToTheServiceCodes)
{
    SimulatorProcess simulator(GetParam().simulatorArgs);
    Service service;
    ASSERT_TRUE(service.connect(simulator.socketPath()).isSuccess());
    EXPECT_EQ(GetParam().expected, service.setAudioDelayMargin(20).format());
    ASSERT_TRUE(service.disconnect().isSuccess());
    ASSERT_TRUE(service.connect(simulator.socketPath()).isSuccess());
    LipSyncNtpTimestamps timestamps = {0, 0, 0, 0};
    EXPECT_EQ(GetParam().expected, service.getAudioTimestamps(timestamps).format());
}

INSTANTIATE_TEST_SUITE_P(
    Service, ServerAnswers,
    ::testing::Values(
        ServerAnswerCase{"Idle", {"--idle"}, notInCallText},
        ServerAnswerCase{
            "InvalidParameter",
            {"--fault", "*:error:1002:no"},
            "The lipsync server returned an error (Code 1006): {Invalid parameter (Code 1002): no}"},
        ServerAnswerCase{
            "WrongVersion",
            {"--fault", "*:version:0.2.0"},
            "An error has occured in the transport layer (Code 1005): {Serializer error (Code 5903): "
            "{Conversion failed (Code 71): Version does not match; expect '0.1.0' got '0.2.0'.}}"}),
    [](const ::testing::TestParamInfo<ServerAnswerCase>& info) { return std::string(info.param.name); });

// Until it reconnects, as the byte-offset sweep does after every cut.
TEST(ServiceOperations, TransportFailureKeepsTheServiceConnected)
{
    SimulatorProcess simulator({"--fixed", "--fault", "1:close"});
    Service service;
    ASSERT_TRUE(service.connect(simulator.socketPath()).isSuccess());
    LipSyncNtpTimestamps timestamps = {0, 0, 0, 0};
    EXPECT_EQ(closedByDistantText, service.getAudioTimestamps(timestamps).format());
    EXPECT_EQ(Service::BadState, service.connect(simulator.socketPath()).getErrorCode());
}

TEST(ServiceOperations, VideoTimestampsAreCheckedButNotSent)
{
    // If the video timestamps were sent, they would take request 1 and the
    // timestamp request would not meet the fault.
    SimulatorProcess simulator({"--fault", "1:error:1001:first request"});
    Service service;
    ASSERT_TRUE(service.connect(simulator.socketPath()).isSuccess());
    const LipSyncNtpTimestamps video = {1, 2, 3, 4};
    EXPECT_EQ("Success", service.setVideoTimestamps(video).format());
    LipSyncNtpTimestamps timestamps = {0, 0, 0, 0};
    EXPECT_EQ("The lipsync server returned an error (Code 1006): {Unknown error (Code 1001): first request}",
              service.getAudioTimestamps(timestamps).format());
}

} // namespace
