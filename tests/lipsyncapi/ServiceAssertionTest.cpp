#include "ServiceTestAccess.h"
#include "velmo/kvo/lipsyncapi/Service.h"

#include <gtest/gtest.h>

#include <functional>

using velmo::kvo::common::LipSyncNtpTimestamps;
using velmo::kvo::lipsyncapi::Service;
using velmo::kvo::lipsyncapi::ServiceTestAccess;

namespace {

struct GuardedCall
{
    const char* name;
    std::function<void(Service&)> call;
    const char* expectedLine;
};

class CommandClientGuard : public ::testing::TestWithParam<GuardedCall>
{
};

TEST_P(CommandClientGuard, StopsTheProcessWithItsFixedLine)
{
    EXPECT_DEATH(
        {
            Service service;
            ServiceTestAccess::markConnectedWithoutClient(service);
            GetParam().call(service);
        },
        GetParam().expectedLine);
}

INSTANTIATE_TEST_SUITE_P(
    Service, CommandClientGuard,
    ::testing::Values(
        GuardedCall{
            "getCapabilities",
            [](Service& s) {
                unsigned long long a = 0;
                unsigned long long b = 0;
                s.getCapabilities(a, b);
            },
            "F/VELMO lipsyncapi/src/Service:114: Assertion _commandClient != NULL failed: Inconsistent state "
            "client is null\n"},
        GuardedCall{
            "setAudioDelayMargin", [](Service& s) { s.setAudioDelayMargin(40); },
            "F/VELMO lipsyncapi/src/Service:205: Assertion _commandClient != NULL failed: Inconsistent state "
            "client is null\n"},
        GuardedCall{
            "getAudioTimestamps",
            [](Service& s) {
                LipSyncNtpTimestamps timestamps = {0, 0, 0, 0};
                s.getAudioTimestamps(timestamps);
            },
            "F/VELMO lipsyncapi/src/Service:142: Assertion _commandClient != NULL failed: Inconsistent state "
            "client is null\n"}),
    [](const ::testing::TestParamInfo<GuardedCall>& info) { return std::string(info.param.name); });

TEST(CommandClientGuard, ValidationStillComesBeforeTheGuard)
{
    Service service;
    ServiceTestAccess::markConnectedWithoutClient(service);
    EXPECT_EQ(Service::InvalidParam, service.setAudioDelayMargin(30).getErrorCode());
    unsigned long long margin = 1;
    EXPECT_TRUE(service.getAudioDelayMargin(margin).isSuccess());
    EXPECT_EQ(0u, margin);
    EXPECT_EQ("Success", service.disconnect().format());
}

} // namespace
