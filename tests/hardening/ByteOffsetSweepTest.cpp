#include "FdCount.h"
#include "FixedEngine.h"
#include "QuietStderr.h"
#include "Simulator.h"
#include "velmo/kvo/lipsyncapi/Service.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using akvo::test::LipSyncNtpTimestamps;
using velmo::kvo::lipsyncapi::Service;

namespace {

// The engine hangs up after every possible prefix of its answer: only the
// complete frame, end marker included, may count as an answer, and no cut may
// leave the Service unable to reconnect or holding a descriptor.
TEST(ByteOffsetSweep, OnlyTheWholeFrameIsAnAnswer)
{
    size_t frameSize = 0;
    {
        akvo::test::SimulatorProcess measuring({"--fixed"});
        const std::string answer = akvo::test::rawGetAudioTsAnswer(measuring.socketPath());
        ASSERT_NE(std::string::npos, answer.find("<jitter_buffer_depth>40</jitter_buffer_depth>")) << answer;
        frameSize = answer.size() + 2;
    }

    // Request k + 1 is cut after k bytes; the request after the sweep is served whole.
    std::vector<std::string> arguments = {"--fixed"};
    for (size_t cut = 0; cut <= frameSize; ++cut) {
        arguments.push_back("--fault");
        arguments.push_back(std::to_string(cut + 1) + ":close-after:" + std::to_string(cut));
    }
    akvo::test::SimulatorProcess simulator(arguments);
    const int descriptors = akvo::test::openDescriptorCount();
    {
        akvo::test::QuietStderr quiet;
        Service service;
        ASSERT_TRUE(service.connect(simulator.socketPath()).isSuccess());
        for (size_t cut = 0; cut <= frameSize; ++cut) {
            LipSyncNtpTimestamps timestamps = akvo::test::untouchedTimestamps;
            const Service::ServiceResult result = service.getAudioTimestamps(timestamps);
            if (cut < frameSize) {
                EXPECT_EQ(akvo::test::closedByDistantText, result.format())
                    << "cut after " << cut << " of " << frameSize << " bytes";
                EXPECT_TRUE(akvo::test::sameTimestamps(akvo::test::untouchedTimestamps, timestamps))
                    << "cut after " << cut;
            } else {
                EXPECT_EQ("Success", result.format()) << "whole frame of " << frameSize << " bytes";
                EXPECT_TRUE(akvo::test::sameTimestamps(akvo::test::fixedTimestamps, timestamps));
            }
            ASSERT_EQ("Success", service.disconnect().format()) << "after a cut at " << cut;
            ASSERT_EQ("Success", service.connect(simulator.socketPath()).format())
                << "after a cut at " << cut;
        }
        LipSyncNtpTimestamps timestamps = akvo::test::untouchedTimestamps;
        EXPECT_EQ("Success", service.getAudioTimestamps(timestamps).format());
        EXPECT_TRUE(akvo::test::sameTimestamps(akvo::test::fixedTimestamps, timestamps));
        EXPECT_EQ("Success", service.disconnect().format());
    }
    EXPECT_EQ(descriptors, akvo::test::openDescriptorCount());
}

} // namespace
