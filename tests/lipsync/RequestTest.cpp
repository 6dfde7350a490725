#include "EngineMessages.h"
#include "velmo/kvo/lipsync/GetAudioTs.h"
#include "velmo/kvo/lipsync/LipSyncSerializer.h"
#include "velmo/kvo/lipsync/SetAudioDelay.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace {

using akvo::test::getAudioTsRequest;
using akvo::test::setAudioDelayRequest;
using velmo::kvo::lipsync::GetAudioTs;
using velmo::kvo::lipsync::LipSyncXmlSerializer;
using velmo::kvo::lipsync::SetAudioDelay;

// The requests are printed once by the generic serializer and reused, the
// delay written into the text: they must be what the generic serializer
// prints, for every delay.
TEST(Request, BytesOnTheWireAreWhatTheGenericSerializerPrints)
{
    const LipSyncXmlSerializer serializer;
    const LipSyncXmlSerializer::Generic generic;
    std::string xml = "previous";
    EXPECT_EQ("Success", serializer.serialize(GetAudioTs::Request(), xml).format());
    EXPECT_EQ(getAudioTsRequest, xml);

    std::mt19937_64 random(7);
    std::vector<unsigned long long> delays = {0, 1, 20, 60, 100, 1000000001, 9876543210123ULL, UINT64_MAX};
    for (int i = 0; i < 100; ++i) {
        delays.push_back(random() >> (random() % 64));
    }
    for (const unsigned long long delay : delays) {
        std::string general;
        xml = "previous";
        EXPECT_EQ("Success", serializer.serialize(SetAudioDelay::Request{delay}, xml).format());
        generic.serialize(SetAudioDelay::Request{delay}, general);
        EXPECT_EQ(setAudioDelayRequest(std::to_string(delay)), general);
        EXPECT_EQ(general, xml);
    }
}

} // namespace
