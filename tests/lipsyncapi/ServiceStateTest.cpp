#include "ResultTexts.h"
#include "Simulator.h"
#include "velmo/kvo/lipsyncapi/Service.h"

#include <gtest/gtest.h>

#include <functional>

using velmo::kvo::common::LipSyncNtpTimestamps;
using velmo::kvo::lipsyncapi::Service;

namespace {

using akvo::test::notConnectedText;

TEST(ServiceState, ConnectTwiceKeepsTheFirstConnection)
{
    akvo::test::SimulatorProcess simulator({"--fixed"});
    Service service;
    ASSERT_EQ("Success", service.connect(simulator.socketPath()).format());
    EXPECT_EQ("Bad state (Code 1003): Already connected to the audio KVO",
              service.connect(simulator.socketPath()).format());
    LipSyncNtpTimestamps timestamps = {0, 0, 0, 0};
    EXPECT_EQ("Success", service.getAudioTimestamps(timestamps).format());
    EXPECT_EQ(40u, timestamps.jbmDepth);
}

struct DisconnectedCall
{
    const char* name;
    std::function<Service::ServiceResult(Service&)> call;
};

class EveryOperationWhileDisconnected : public ::testing::TestWithParam<DisconnectedCall>
{
};

unsigned long long untouchedA = 11;
unsigned long long untouchedB = 12;
LipSyncNtpTimestamps untouchedTimestamps = {1, 2, 3, 4};

TEST_P(EveryOperationWhileDisconnected, ReturnsBadStateAndTouchesNothing)
{
    Service service;
    EXPECT_EQ(notConnectedText, GetParam().call(service).format());
    EXPECT_EQ(11u, untouchedA);
    EXPECT_EQ(12u, untouchedB);
    EXPECT_EQ(1u, untouchedTimestamps.tCap);
    EXPECT_EQ(2u, untouchedTimestamps.tRdr);
    EXPECT_EQ(3u, untouchedTimestamps.tRcv);
    EXPECT_EQ(4u, untouchedTimestamps.jbmDepth);
}

INSTANTIATE_TEST_SUITE_P(
    Service, EveryOperationWhileDisconnected,
    ::testing::Values(
        DisconnectedCall{"disconnect", [](Service& s) { return s.disconnect(); }},
        DisconnectedCall{"getCapabilities",
                         [](Service& s) { return s.getCapabilities(untouchedA, untouchedB); }},
        DisconnectedCall{"setAudioDelayMargin", [](Service& s) { return s.setAudioDelayMargin(40); }},
        DisconnectedCall{"setAudioDelayMarginInvalid", [](Service& s) { return s.setAudioDelayMargin(33); }},
        DisconnectedCall{"getAudioDelayMargin", [](Service& s) { return s.getAudioDelayMargin(untouchedA); }},
        DisconnectedCall{"getAudioTimestamps",
                         [](Service& s) { return s.getAudioTimestamps(untouchedTimestamps); }},
        DisconnectedCall{"setVideoTimestamps",
                         [](Service& s) { return s.setVideoTimestamps(untouchedTimestamps); }}),
    [](const ::testing::TestParamInfo<DisconnectedCall>& info) { return std::string(info.param.name); });

} // namespace
