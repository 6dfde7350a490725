#include "velmo/kvo/lipsync/GetAudioTs.h"
#include "velmo/kvo/lipsync/LipSyncSerializer.h"
#include "velmo/kvo/lipsync/SetAudioDelay.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

using velmo::kvo::lipsync::GetAudioTs;
using velmo::kvo::lipsync::LipSyncXmlSerializer;
using velmo::kvo::lipsync::SetAudioDelay;

TEST(Request, GetAudioTsIsAlwaysTheSameBytes)
{
    const LipSyncXmlSerializer serializer;
    std::string xml = "previous";
    EXPECT_EQ("Success", serializer.serialize(GetAudioTs::Request(), xml).format());
    EXPECT_EQ("<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\"><GetAudioTs_Request /></AKVO>", xml);
}

struct DelayCase
{
    unsigned long long delayMs;
    const char* xml;
};

void PrintTo(const DelayCase& c, std::ostream* os)
{
    *os << c.delayMs;
}

class SetAudioDelayRequest : public ::testing::TestWithParam<DelayCase>
{
};

TEST_P(SetAudioDelayRequest, CarriesTheDelayAsText)
{
    const LipSyncXmlSerializer serializer;
    std::string xml;
    SetAudioDelay::Request request;
    request.delayMs = GetParam().delayMs;
    EXPECT_EQ("Success", serializer.serialize(request, xml).format());
    EXPECT_EQ(GetParam().xml, xml);
}

INSTANTIATE_TEST_SUITE_P(
    Delays, SetAudioDelayRequest,
    ::testing::Values(DelayCase{0,
                                "<?xml version=\"1.0\" ?><AKVO "
                                "version=\"0.1.0\"><SetAudioDelay_Request>0</SetAudioDelay_Request></AKVO>"},
                      DelayCase{60,
                                "<?xml version=\"1.0\" ?><AKVO "
                                "version=\"0.1.0\"><SetAudioDelay_Request>60</SetAudioDelay_Request></AKVO>"},
                      DelayCase{18446744073709551615ULL,
                                "<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\"><SetAudioDelay_Request>"
                                "18446744073709551615</SetAudioDelay_Request></AKVO>"}));

} // namespace
