#include "LogReceiver.h"
#include "WireRecord.h"
#include "velmo/kvo/log/AndroidLog.h"

#include <gtest/gtest.h>

#include <ctime>
#include <functional>
#include <string>
#include <unistd.h>

using namespace std::string_literals;
using akvo::test::processLogReceiver;
using akvo::test::WireRecord;

namespace {

struct RecordCase
{
    const char* name;
    std::function<int()> write;
    uint8_t logId;
    std::string payload;
    int result;
};

void PrintTo(const RecordCase& c, std::ostream* out)
{
    *out << c.name;
}

int vprint(int priority, const char* tag, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const int result = __android_log_vprint(priority, tag, format, args);
    va_end(args);
    return result;
}

std::pair<uint32_t, uint32_t> realTimeNow()
{
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    return {static_cast<uint32_t>(now.tv_sec), static_cast<uint32_t>(now.tv_nsec)};
}

const std::string text5000(5000, 'a');
const std::string text2000(2000, 'b');
const uint8_t eventBytes[] = {0xaa, 0xbb, 0xcc};

class RecordBytes : public ::testing::TestWithParam<RecordCase>
{
};

TEST_P(RecordBytes, CarryTheHeaderAndThePayloadOfTheirKind)
{
    akvo::test::LogReceiver& receiver = processLogReceiver();
    const RecordCase& c = GetParam();

    const auto before = realTimeNow();
    EXPECT_EQ(c.result, c.write());
    const auto after = realTimeNow();

    const auto datagram = receiver.nextDatagram();
    ASSERT_TRUE(datagram);
    const WireRecord record(*datagram);
    EXPECT_EQ(c.logId, record.logId);
    EXPECT_EQ(gettid() & 0xffff, record.threadId);
    EXPECT_LE(before, record.time);
    EXPECT_LE(record.time, after);
    EXPECT_EQ(c.payload, record.payload);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, RecordBytes,
    ::testing::Values(
        RecordCase{"write", [] { return __android_log_write(4, "T", "m"); }, 0, "\x04T\0m\0"s, 5},
        RecordCase{"writeFatal", [] { return __android_log_write(7, "Tag", "fatal"); }, 0,
                   "\x07Tag\0fatal\0"s, 11},
        RecordCase{"writeNullTag", [] { return __android_log_write(4, nullptr, "m"); }, 0, "\x04\0m\0"s, 4},
        RecordCase{"bufWrite", [] { return __android_log_buf_write(3, 6, "Tag", "msg"); }, 3,
                   "\x06Tag\0msg\0"s, 9},
        RecordCase{"bufWriteRadioNullTag", [] { return __android_log_buf_write(1, 4, nullptr, "m"); }, 1,
                   "\x04\0m\0"s, 4},
        RecordCase{"print", [] { return __android_log_print(5, "T", "%d-%s", 42, "x"); }, 0,
                   "\x05T\0"
                   "42-x\0"s,
                   8},
        RecordCase{"printPercentArgument", [] { return __android_log_print(4, "T", "%s", "100%d"); }, 0,
                   "\x04T\0"
                   "100%d\0"s,
                   9},
        RecordCase{"vprint", [] { return vprint(3, "T", "<%u>", 7u); }, 0, "\x03T\0<7>\0"s, 7},
        RecordCase{"bufPrint", [] { return __android_log_buf_print(2, 3, "T", "%c", 'z'); }, 2, "\x03T\0z\0"s,
                   5},
        RecordCase{"printCutToItsBuffer", [] { return __android_log_print(4, "T", "%s", text2000.c_str()); },
                   0, "\x04T\0"s + std::string(1023, 'b') + '\0', 1027},
        RecordCase{"bufPrintCutToItsBuffer",
                   [] { return __android_log_buf_print(0, 4, "T", "%s", text2000.c_str()); }, 0,
                   "\x04T\0"s + std::string(1023, 'b') + '\0', 1027},
        RecordCase{"bwrite", [] { return __android_log_bwrite(0x01020304, eventBytes, 3); }, 2,
                   "\x04\x03\x02\x01\xaa\xbb\xcc"s, 7},
        RecordCase{"bwriteNegativeTagNoBytes", [] { return __android_log_bwrite(-2, eventBytes, 0); }, 2,
                   "\xfe\xff\xff\xff"s, 4},
        RecordCase{"btwrite", [] { return __android_log_btwrite(42, 1, eventBytes, 2); }, 2,
                   "\x2a\0\0\0\x01\xaa\xbb"s, 7},
        RecordCase{"bswrite", [] { return __android_log_bswrite(42, "abc"); }, 2,
                   "\x2a\0\0\0\x02\x03\0\0\0"
                   "abc"s,
                   12},
        RecordCase{"bswriteEmpty", [] { return __android_log_bswrite(-1, ""); }, 2,
                   "\xff\xff\xff\xff\x02\0\0\0\0"s, 9},
        // The payload stops at 4076 bytes; a cut message loses its NUL.
        RecordCase{"messageCut", [] { return __android_log_write(4, "T", text5000.c_str()); }, 0,
                   "\x04T\0"s + std::string(4073, 'a'), 4076},
        RecordCase{"messageFitsExactly",
                   [] { return __android_log_write(4, "T", text5000.substr(0, 4072).c_str()); }, 0,
                   "\x04T\0"s + std::string(4072, 'a') + '\0', 4076},
        RecordCase{"messageOneOver",
                   [] { return __android_log_write(4, "T", text5000.substr(0, 4073).c_str()); }, 0,
                   "\x04T\0"s + std::string(4073, 'a'), 4076},
        RecordCase{"tagCutMessageLeftOut", [] { return __android_log_write(4, text5000.c_str(), "m"); }, 0,
                   "\x04"s + std::string(4075, 'a'), 4076},
        RecordCase{"tagFillsThePayload",
                   [] { return __android_log_write(4, text5000.substr(0, 4074).c_str(), "m"); }, 0,
                   "\x04"s + std::string(4074, 'a') + '\0', 4076},
        RecordCase{"eventCut", [] { return __android_log_bwrite(1, text5000.data(), text5000.size()); }, 2,
                   "\x01\0\0\0"s + std::string(4072, 'a'), 4076}),
    [](const ::testing::TestParamInfo<RecordCase>& info) { return std::string(info.param.name); });

} // namespace
