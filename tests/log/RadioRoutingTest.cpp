#include "LogReceiver.h"
#include "velmo/kvo/log/AndroidLog.h"

#include <gtest/gtest.h>

#include <string>

using akvo::test::processLogReceiver;

namespace {

constexpr int viaWrite = -1;

struct RoutingCase
{
    // viaWrite for __android_log_write, else the log id given to
    // __android_log_buf_write.
    int logId;
    const char* tag;
    uint8_t expectedLogId;
    std::string expectedTag;
};

void PrintTo(const RoutingCase& c, std::ostream* out)
{
    *out << (c.logId == viaWrite ? std::string("write") : "buf_write(" + std::to_string(c.logId) + ")")
         << " tag " << (c.tag != nullptr ? c.tag : "(null)");
}

class RadioRouting : public ::testing::TestWithParam<RoutingCase>
{
};

TEST_P(RadioRouting, MovesRadioTagsToTheRadioLog)
{
    akvo::test::LogReceiver& receiver = processLogReceiver();
    const RoutingCase& c = GetParam();

    if (c.logId == viaWrite) {
        __android_log_write(4, c.tag, "m");
    } else {
        __android_log_buf_write(c.logId, 4, c.tag, "m");
    }

    const auto record = receiver.nextRecord();
    ASSERT_TRUE(record);
    EXPECT_EQ(c.expectedLogId, record->logId);
    EXPECT_EQ(c.expectedTag, record->tag);
    EXPECT_EQ("m", record->message);
}

INSTANTIATE_TEST_SUITE_P(
    Tags, RadioRouting,
    ::testing::Values(RoutingCase{viaWrite, "RILJ", 1, "use-Rlog/RLOG-RILJ"},
                      RoutingCase{viaWrite, "RIL", 1, "use-Rlog/RLOG-RIL"},
                      RoutingCase{viaWrite, "IMSx", 1, "use-Rlog/RLOG-IMSx"},
                      RoutingCase{viaWrite, "HTC_RIL", 1, "use-Rlog/RLOG-HTC_RIL"},
                      RoutingCase{viaWrite, "AT", 1, "use-Rlog/RLOG-AT"},
                      RoutingCase{viaWrite, "GSM", 1, "use-Rlog/RLOG-GSM"},
                      RoutingCase{viaWrite, "STK", 1, "use-Rlog/RLOG-STK"},
                      RoutingCase{viaWrite, "CDMA", 1, "use-Rlog/RLOG-CDMA"},
                      RoutingCase{viaWrite, "PHONE", 1, "use-Rlog/RLOG-PHONE"},
                      RoutingCase{viaWrite, "SMS", 1, "use-Rlog/RLOG-SMS"},
                      // Only prefixes RIL and IMS match; the other names must be equal.
                      RoutingCase{viaWrite, "ATX", 0, "ATX"}, RoutingCase{viaWrite, "SMSC", 0, "SMSC"},
                      RoutingCase{viaWrite, "HTC_RIL2", 0, "HTC_RIL2"},
                      RoutingCase{viaWrite, "xRIL", 0, "xRIL"}, RoutingCase{viaWrite, "ril", 0, "ril"},
                      RoutingCase{viaWrite, "", 0, ""}, RoutingCase{viaWrite, nullptr, 0, ""},
                      // The new tag is cut to 31 characters.
                      RoutingCase{viaWrite, "RIL_0123456789abcdefghij", 1, "use-Rlog/RLOG-RIL_0123456789abc"},
                      RoutingCase{1, "RILJ", 1, "RILJ"}, RoutingCase{1, "AT", 1, "AT"},
                      RoutingCase{0, "RILJ", 1, "use-Rlog/RLOG-RILJ"},
                      RoutingCase{2, "AT", 1, "use-Rlog/RLOG-AT"}, RoutingCase{3, "ATX", 3, "ATX"},
                      RoutingCase{3, nullptr, 3, ""}));

} // namespace
