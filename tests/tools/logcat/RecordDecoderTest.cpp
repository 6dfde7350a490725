#include "RecordDecoder.h"
#include "LogReceiver.h"
#include "RecordFormat.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>
#include <utility>

using namespace std::string_literals;

namespace {

using akvo::test::recordDatagram;

// The text line and the JSON line of a record with that header.
std::string lines(int logId, const std::string& text, const std::string& jsonFields)
{
    return "02-01 01:01:01.123 77 " + text + "\n" + R"({"id":)" + std::to_string(logId) +
           R"(,"pid":0,"uid":0,"tid":77,"sec":2682061,"nsec":123456789,)" + jsonFields + "}";
}

class Decoding : public ::testing::TestWithParam<std::pair<std::string, std::string>>
{
protected:
    static void SetUpTestSuite()
    {
        setenv("TZ", "UTC", 1);
        tzset();
    }
};

TEST_P(Decoding, GivesTheLinesOfARecordOrWhyItIsRefused)
{
    const std::string& bytes = GetParam().first;
    velmo::kvo::logcat::LogRecord record;
    std::string error;
    EXPECT_EQ(GetParam().second,
              velmo::kvo::logcat::decodeRecord(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(),
                                               record, error)
                  ? velmo::kvo::logcat::formatTextLine(record) + "\n" +
                        velmo::kvo::logcat::formatJsonLine(record)
                  : "refused: " + error);
}

INSTANTIATE_TEST_SUITE_P(
    Records, Decoding,
    ::testing::Values(
        std::make_pair(recordDatagram(0, "\x04T\0hello\0"s),
                       lines(0, "I/T: hello",
                             R"("kind":"text","priority":4,"level":"I","tag":"T","message":"hello")")),
        std::make_pair(recordDatagram(1, "\x06RILJ\0cut"s),
                       lines(1, "E/RILJ: cut",
                             R"("kind":"text","priority":6,"level":"E","tag":"RILJ","message":"cut")")),
        std::make_pair(recordDatagram(3, "\x09T\0m\0"s),
                       lines(3, "?/T: m",
                             R"("kind":"text","priority":9,"level":"?","tag":"T","message":"m")")),
        std::make_pair(
            recordDatagram(0, "\x05T\0a\nb\t\x01\"\\ \xe2\x82\xac\0"s),
            lines(0, "W/T: a\\nb\\t\\x01\"\\ \xe2\x82\xac",
                  R"("kind":"text","priority":5,"level":"W","tag":"T","message":"a\nb\t\u0001\"\\ )"
                  "\xe2\x82\xac\"")),
        std::make_pair(
            recordDatagram(0, "\x07T\0\xff\xe2\x82!\0"s),
            lines(0, "F/T: \xff\xe2\x82!",
                  R"("kind":"text","priority":7,"level":"F","tag":"T","message":"\ufffd\ufffd\ufffd!")")),
        std::make_pair(recordDatagram(2, "\x2a\0\0\0\x01\xaa\xbb"s),
                       lines(2, "event 42 (type 1): aabb",
                             R"("kind":"binary","event":42,"type":1,"payload":"aabb")")),
        std::make_pair(recordDatagram(2, "\xfe\xff\xff\xff"s),
                       lines(2, "event -2:", R"("kind":"binary","event":-2)")),
        std::make_pair(recordDatagram(2, "\x2a\0\0\0\x02\x03\0\0\0"
                                         "abc"s),
                       lines(2, "event 42 (string): abc",
                             R"("kind":"string","event":42,"type":2,"message":"abc")")),
        std::make_pair(std::string(10, 'x'),
                       "refused: datagram of 10 bytes, shorter than the 11-byte record header"s),
        std::make_pair(recordDatagram(0, ""), "refused: text record without a priority byte"s),
        std::make_pair(recordDatagram(0, "\x04TAG"), "refused: text record without a NUL after the tag"s),
        std::make_pair(recordDatagram(2, "\x2a\0\0"s),
                       "refused: event record of 3 payload bytes, too short for its event tag"s),
        std::make_pair(recordDatagram(2, "\x2a\0\0\0\x02\x03\0"s),
                       "refused: string event too short for its length field"s),
        std::make_pair(recordDatagram(2, "\x2a\0\0\0\x02\x02\0\0\0"
                                         "abc"s),
                       "refused: string event declares 2 bytes but carries 3"s)));

class Brief : public ::testing::TestWithParam<std::pair<std::string, std::string>>
{
};

TEST_P(Brief, PutsTheThreadWhereAndroidPutsTheProcess)
{
    const std::string& bytes = GetParam().first;
    velmo::kvo::logcat::LogRecord record;
    std::string error;
    ASSERT_TRUE(velmo::kvo::logcat::decodeRecord(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(),
                                                 record, error));
    EXPECT_EQ(GetParam().second,
              velmo::kvo::logcat::formatLine(record, velmo::kvo::logcat::LineFormat::Brief));
}

INSTANTIATE_TEST_SUITE_P(
    Records, Brief,
    ::testing::Values(std::make_pair(recordDatagram(0, "\x04T\0a\nb\0"s), "I/T(77): a\\nb"s),
                      std::make_pair(recordDatagram(2, "\x2a\0\0\0\x01\xaa"s), "event 42(77) (type 1): aa"s),
                      std::make_pair(recordDatagram(2, "\x2a\0\0\0"s), "event 42(77):"s),
                      std::make_pair(recordDatagram(2, "\x2a\0\0\0\x02\x01\0\0\0z"s),
                                     "event 42(77) (string): z"s)));

struct TimeCase
{
    const char* zone;
    uint32_t seconds;
    const char* line;
};

class TextTime : public ::testing::TestWithParam<TimeCase>
{
};

// Records count unsigned 32-bit seconds: the dates past 2038 must not wrap to
// 1901 where time_t has 32 bits. The zones are POSIX rules, so no zone files
// are read.
TEST_P(TextTime, IsTheLocalTimeOfTheRecordsUnsignedSeconds)
{
    setenv("TZ", GetParam().zone, 1);
    tzset();
    velmo::kvo::logcat::LogRecord record;
    record.threadId = 77;
    record.seconds = GetParam().seconds;
    record.nanoseconds = 999999999;
    record.priority = 4;
    record.tag = "T";
    record.message = "m";
    EXPECT_EQ(GetParam().line, velmo::kvo::logcat::formatTextLine(record));
    setenv("TZ", "UTC", 1);
    tzset();
}

INSTANTIATE_TEST_SUITE_P(
    Dates, TextTime,
    ::testing::Values(TimeCase{"UTC", 0, "01-01 00:00:00.999 77 I/T: m"},
                      TimeCase{"UTC", 2147483647, "01-19 03:14:07.999 77 I/T: m"},
                      TimeCase{"UTC", 2147483648, "01-19 03:14:08.999 77 I/T: m"},
                      TimeCase{"UTC", 2214172799, "02-29 23:59:59.999 77 I/T: m"},
                      TimeCase{"UTC", 4107542399, "02-28 23:59:59.999 77 I/T: m"},
                      TimeCase{"UTC", 4294967295, "02-07 06:28:15.999 77 I/T: m"},
                      TimeCase{"EST5EDT,M3.2.0,M11.1.0", 0, "12-31 19:00:00.999 77 I/T: m"},
                      TimeCase{"EST5EDT,M3.2.0,M11.1.0", 2224756800, "07-01 08:00:00.999 77 I/T: m"},
                      TimeCase{"CET-1CEST,M3.5.0,M10.5.0/3", 2224756800, "07-01 14:00:00.999 77 I/T: m"},
                      TimeCase{"CET-1CEST,M3.5.0,M10.5.0/3", 4107542399, "03-01 00:59:59.999 77 I/T: m"}));

} // namespace
