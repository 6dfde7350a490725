#include "EngineMessages.h"
#include "FdCount.h"
#include "ResultTexts.h"
#include "Simulator.h"
#include "StderrCapture.h"
#include "Timestamps.h"
#include "velmo/kvo/lipsyncapi/Service.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace akvo::test;
using velmo::kvo::lipsyncapi::Service;

namespace {

// The engine hangs up after every possible prefix of its answer: only the
// complete frame, end marker included, may count as an answer, and no cut may
// leave the Service unable to reconnect or holding a descriptor.
TEST(ByteOffsetSweep, OnlyTheWholeFrameIsAnAnswer)
{
    const size_t frameSize = framed(fixedGetAudioTsAnswer).size();

    // Request k + 1 is cut after k bytes; the request after the sweep is served whole.
    std::vector<std::string> arguments = {"--fixed"};
    for (size_t cut = 0; cut <= frameSize; ++cut) {
        arguments.push_back("--fault");
        arguments.push_back(std::to_string(cut + 1) + ":close-after:" + std::to_string(cut));
    }
    SimulatorProcess simulator(arguments);
    StderrCapture quiet;
    const int descriptors = openDescriptorCount();
    {
        Service service;
        ASSERT_EQ("Success", service.connect(simulator.socketPath()).format());
        for (size_t cut = 0; cut <= frameSize + 1; ++cut) {
            LipSyncNtpTimestamps timestamps = untouchedTimestamps;
            const bool whole = cut >= frameSize;
            EXPECT_EQ(whole ? "Success" : closedByDistantText,
                      service.getAudioTimestamps(timestamps).format())
                << "cut after " << cut << " of " << frameSize << " bytes";
            EXPECT_TRUE(sameTimestamps(whole ? fixedTimestamps : untouchedTimestamps, timestamps)) << cut;
            ASSERT_EQ("Success", service.disconnect().format()) << "after a cut at " << cut;
            ASSERT_EQ("Success", service.connect(simulator.socketPath()).format())
                << "after a cut at " << cut;
        }
    }
    EXPECT_EQ(descriptors, openDescriptorCount());
}

} // namespace
