#include "velmo/kvo/lipsync/GetAudioTs.h"
#include "velmo/kvo/lipsync/LipSyncSerializer.h"
#include "velmo/kvo/lipsync/SetAudioDelay.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using velmo::kvo::lipsync::GetAudioTs;
using velmo::kvo::lipsync::LipSyncXmlSerializer;
using velmo::kvo::lipsync::SetAudioDelay;

TEST(Request, BytesOnTheWire)
{
    const LipSyncXmlSerializer serializer;
    std::string xml = "previous";
    EXPECT_EQ("Success", serializer.serialize(GetAudioTs::Request(), xml).format());
    EXPECT_EQ("<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\"><GetAudioTs_Request /></AKVO>", xml);

    const struct
    {
        unsigned long long delayMs;
        const char* xml;
    } delays[] = {{0, "<?xml version=\"1.0\" ?><AKVO "
                      "version=\"0.1.0\"><SetAudioDelay_Request>0</SetAudioDelay_Request></AKVO>"},
                  {60, "<?xml version=\"1.0\" ?><AKVO "
                       "version=\"0.1.0\"><SetAudioDelay_Request>60</SetAudioDelay_Request></AKVO>"},
                  {18446744073709551615ULL,
                   "<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\"><SetAudioDelay_Request>"
                   "18446744073709551615</SetAudioDelay_Request></AKVO>"}};
    for (const auto& delay : delays) {
        SetAudioDelay::Request request;
        request.delayMs = delay.delayMs;
        EXPECT_EQ("Success", serializer.serialize(request, xml).format());
        EXPECT_EQ(delay.xml, xml) << delay.delayMs;
    }
}

} // namespace
