#include "ResultTexts.h"
#include "Simulator.h"
#include "StderrCapture.h"
#include "velmo/kvo/lipsyncapi/Service.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>

using velmo::kvo::common::LipSyncNtpTimestamps;
using velmo::kvo::lipsyncapi::Service;

namespace {

// Runs `calls` on a Service and returns what the library wrote to standard
// error, the destructor's line included.
std::string stderrOf(const std::function<void(Service&)>& calls)
{
    akvo::test::StderrCapture capture;
    {
        Service service;
        calls(service);
    }
    return capture.text();
}

const std::string destructorLine = std::string("I/AKVOLIPSYNCAPI Client is disconnected with result: ") +
                                   akvo::test::notConnectedText + "\n";

TEST(ServiceLog, OneLinePerLoggedCall)
{
    akvo::test::SimulatorProcess simulator({"--fixed"});
    const std::string path = simulator.socketPath();
    const std::string text = stderrOf([&](Service& service) {
        service.connect(path);
        service.setAudioDelayMargin(30);
        service.setAudioDelayMargin(40);
        unsigned long long a = 0;
        unsigned long long b = 0;
        service.getCapabilities(a, b);
        service.getAudioDelayMargin(a);
        LipSyncNtpTimestamps timestamps = {0, 0, 0, 0};
        service.setVideoTimestamps(timestamps);
        service.getAudioTimestamps(timestamps);
        service.disconnect();
    });
    EXPECT_EQ(
        "I/AKVOLIPSYNCAPI Client is connecting with input params: lipsyncSocketName=" + path +
            "  with result: Success\n"
            "I/AKVOLIPSYNCAPI Client is setting the audio delay margin with input params: delayMs=30  with "
            "result: " +
            akvo::test::marginNotAStepText(30) +
            "\n"
            "I/AKVOLIPSYNCAPI Client is setting the audio delay margin with input params: delayMs=40  with "
            "result: Success\n"
            "I/AKVOLIPSYNCAPI Client is requesting the NTP timestamp with output params: "
            "audioCaptureTimestamp=16045690984833536 audioRenderingTimestamp=16045690985263104 "
            "audioReceivingTimestamp=16045690984404992 jbmCurrentDepth=40  with result: Success\n"
            "I/AKVOLIPSYNCAPI Client is disconnected with result: Success\n" +
            destructorLine,
        text);
}

TEST(ServiceLog, FailedTimestampRequestLogsTheCallersValues)
{
    const std::string text = stderrOf([](Service& service) {
        LipSyncNtpTimestamps timestamps = {1, 2, 3, 4};
        service.getAudioTimestamps(timestamps);
    });
    EXPECT_EQ(
        "I/AKVOLIPSYNCAPI Client is requesting the NTP timestamp with output params: audioCaptureTimestamp=1 "
        "audioRenderingTimestamp=2 audioReceivingTimestamp=3 jbmCurrentDepth=4  with result: " +
            std::string(akvo::test::notConnectedText) + "\n" + destructorLine,
        text);
}

struct SocketNameCase
{
    const char* name;
    const char* socketName;
    const char* renderedParam;
};

class LoggedSocketName : public ::testing::TestWithParam<SocketNameCase>
{
};

TEST_P(LoggedSocketName, IsWrittenAsItStands)
{
    const std::string socketName = GetParam().socketName;
    const std::string text = stderrOf([&](Service& service) { service.connect(socketName); });
    EXPECT_EQ(
        "I/AKVOLIPSYNCAPI Client is connecting with input params: " + std::string(GetParam().renderedParam) +
            " with result: " + akvo::test::cannotConnectText(socketName, ENOENT) + "\n" + destructorLine,
        text);
}

INSTANTIATE_TEST_SUITE_P(
    Service, LoggedSocketName,
    ::testing::Values(SocketNameCase{"LineFeedUsesTheBlockForm", "/tmp/akvo\nmissing",
                                     "lipsyncSocketName={\n/tmp/akvo\nmissing}\n"},
                      SocketNameCase{"PercentDirectivesStayLiteral", "/tmp/akvo-%d-%s-missing",
                                     "lipsyncSocketName=/tmp/akvo-%d-%s-missing "}),
    [](const ::testing::TestParamInfo<SocketNameCase>& info) { return std::string(info.param.name); });

} // namespace
