#include "CannedEngine.h"
#include "EngineMessages.h"
#include "ResultTexts.h"
#include "StderrCapture.h"
#include "Timestamps.h"
#include "velmo/kvo/lipsync/GetAudioTs.h"
#include "velmo/kvo/lipsync/LipSyncSerializer.h"
#include "velmo/kvo/lipsyncapi/Service.h"

#include <gtest/gtest.h>

#include <pthread.h>
#include <string>
#include <utility>

using namespace akvo::test;
using velmo::kvo::lipsyncapi::Service;

namespace {

const std::string head = envelope + "<GetAudioTs_Answer>";

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
    std::string answer;
    std::string formatted;
    LipSyncNtpTimestamps timestamps = untouchedTimestamps;
    std::string deserialized;
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

// The answer also goes to the reader directly, zero bytes included, which the
// socket route drops.
void* callAndDeserialize(void* argument)
{
    callGetAudioTimestamps(argument);
    Call& call = *static_cast<Call*>(argument);
    velmo::kvo::lipsync::GetAudioTs::Answer answer;
    call.deserialized = velmo::kvo::lipsync::LipSyncXmlSerializer().deserialize(call.answer, answer).format();
    return nullptr;
}

// Application threads often have small stacks. Each answer makes TinyXML
// build one element per repeated unit, a hundred thousand levels deep, in a
// way that a reading of the markup short of TinyXML's own would miss.
TEST(HostileAnswer, DeepNestingOnASmallStackIsABrokenDocument)
{
    const size_t levels = 100000;
    const std::string elements = repeated("<a>", levels) + repeated("</a>", levels);
    const std::pair<const char*, std::string> bodies[] = {
        {"plain", elements},
        // Every byte from 0x7F up starts a name.
        {"delete starts a name", repeated("<\x7f>", levels) + repeated("</\x7f>", levels)},
        // The quoted values of a declaration, in any letter case and at any
        // place, may hold a ">" and the opening of a comment.
        {"declaration values", "<?XmL version=\">\" encoding=\"<!--\"?>" + elements},
        // Under UTF-8 a lead byte takes the "<" of the end tag into its character.
        {"lead byte before an end tag", repeated("<a>\xc3</a>", levels)},
        // A reference that is no number runs to the next ";".
        {"reference to the next semicolon", repeated("<a>&#</a>#;", levels)},
        // The parser steps over the zero byte with the lead byte and reads on.
        {"lead byte before a zero byte", std::string("\xc3\0", 2) + elements}};
    const std::string noRoot = "Conversion failed (Code 71): No 'AKVO' root element found in xml data.";
    for (const auto& [name, body] : bodies) {
        SCOPED_TRACE(name);
        const std::string answer = head + body + "</GetAudioTs_Answer></AKVO>";
        CannedEngine engine(answer + "\n\n");
        Call call{engine.socketPath(), answer, "", untouchedTimestamps, ""};
        StderrCapture quiet;
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, 256 * 1024));
        pthread_t thread;
        ASSERT_EQ(0, pthread_create(&thread, &attributes, callAndDeserialize, &call));
        pthread_join(thread, nullptr);
        pthread_attr_destroy(&attributes);
        EXPECT_EQ(
            "An error has occured in the transport layer (Code 1005): {Serializer error (Code 5903): {" +
                noRoot + "}}",
            call.formatted);
        EXPECT_TRUE(sameTimestamps(untouchedTimestamps, call.timestamps));
        EXPECT_EQ(noRoot, call.deserialized);
    }
}

// Line feeds that never pair up must cost a pass over the data, not one per
// chunk read; the hang-up then ends the call as any other would.
TEST(HostileAnswer, FiftyMegabytesWithoutAnEndMarker)
{
    CannedEngine engine(repeated("\nA", 25 * 1024 * 1024));
    Call call{engine.socketPath(), "", "", untouchedTimestamps, ""};
    StderrCapture quiet;
    callGetAudioTimestamps(&call);
    EXPECT_EQ(closedByDistantText, call.formatted);
    EXPECT_TRUE(sameTimestamps(untouchedTimestamps, call.timestamps));
}

} // namespace
