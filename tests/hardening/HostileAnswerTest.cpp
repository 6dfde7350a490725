#include "CannedEngine.h"
#include "FixedEngine.h"
#include "StderrCapture.h"
#include "velmo/kvo/lipsyncapi/Service.h"

#include <gtest/gtest.h>

#include <pthread.h>
#include <string>

using namespace akvo::test;
using velmo::kvo::lipsyncapi::Service;

namespace {

const std::string head = "<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\"><GetAudioTs_Answer>";

std::string repeated(const std::string& piece, size_t times)
{
    std::string text;
    text.reserve(piece.size() * times);
    for (size_t i = 0; i < times; ++i) {
        text += piece;
    }
    return text;
}

struct Call
{
    std::string socketPath;
    std::string formatted;
    LipSyncNtpTimestamps timestamps = untouchedTimestamps;
};

void* callGetAudioTimestamps(void* argument)
{
    Call& call = *static_cast<Call*>(argument);
    Service service;
    if (service.connect(call.socketPath).isSuccess()) {
        call.formatted = service.getAudioTimestamps(call.timestamps).format();
    }
    return nullptr;
}

// Application threads often have small stacks; an answer nested a hundred
// thousand levels deep must not need more than a flat one does.
TEST(HostileAnswer, DeepNestingOnASmallStackIsABrokenDocument)
{
    CannedEngine engine(head + repeated("<a>", 100000) + repeated("</a>", 100000) +
                        "</GetAudioTs_Answer></AKVO>\n\n");
    Call call{engine.socketPath(), "", untouchedTimestamps};
    StderrCapture quiet;
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, 256 * 1024));
    pthread_t thread;
    ASSERT_EQ(0, pthread_create(&thread, &attributes, callGetAudioTimestamps, &call));
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    EXPECT_EQ("An error has occured in the transport layer (Code 1005): {Serializer error (Code 5903): "
              "{Conversion failed (Code 71): No 'AKVO' root element found in xml data.}}",
              call.formatted);
    EXPECT_TRUE(sameTimestamps(untouchedTimestamps, call.timestamps));
}

// Line feeds that never pair up must cost a pass over the data, not one per
// chunk read; the hang-up then ends the call as any other would.
TEST(HostileAnswer, FiftyMegabytesWithoutAnEndMarker)
{
    CannedEngine engine(repeated("\nA", 25 * 1024 * 1024));
    Call call{engine.socketPath(), "", untouchedTimestamps};
    StderrCapture quiet;
    callGetAudioTimestamps(&call);
    EXPECT_EQ(closedByDistantText, call.formatted);
    EXPECT_TRUE(sameTimestamps(untouchedTimestamps, call.timestamps));
}

} // namespace
