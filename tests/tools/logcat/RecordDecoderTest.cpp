#include "RecordDecoder.h"
#include "RecordFormat.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

using namespace std::string_literals;
using velmo::kvo::logcat::decodeRecord;
using velmo::kvo::logcat::formatJsonLine;
using velmo::kvo::logcat::formatTextLine;
using velmo::kvo::logcat::LogRecord;

namespace {

// Thread 77, 1970-02-01 01:01:01.123456789 UTC.
std::string datagram(uint8_t logId, const std::string& payload)
{
    return std::string(1, static_cast<char>(logId)) + "\x4d\x00"s + "\xcd\xec\x28\x00"s +
           "\x15\xcd\x5b\x07"s + payload;
}

bool decode(const std::string& bytes, LogRecord& record, std::string& error)
{
    return decodeRecord(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), record, error);
}

class InUtc : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        setenv("TZ", "UTC", 1);
        tzset();
    }
};

struct DecodeCase
{
    const char* name;
    std::string datagram;
    std::string textLine;
    std::string jsonLine;
};

void PrintTo(const DecodeCase& c, std::ostream* out)
{
    *out << c.name;
}

class Decoding : public InUtc, public ::testing::WithParamInterface<DecodeCase>
{
};

TEST_P(Decoding, PrintsOneLinePerRecord)
{
    LogRecord record;
    std::string error;
    ASSERT_TRUE(decode(GetParam().datagram, record, error)) << error;
    EXPECT_EQ(GetParam().textLine, formatTextLine(record));
    EXPECT_EQ(GetParam().jsonLine, formatJsonLine(record));
}

// Every prefix of a record is either a record or an error, never a crash.
TEST_P(Decoding, SurvivesEveryPrefix)
{
    for (size_t size = 0; size <= GetParam().datagram.size(); ++size) {
        LogRecord record;
        std::string error;
        if (decode(GetParam().datagram.substr(0, size), record, error)) {
            formatTextLine(record);
            formatJsonLine(record);
        } else {
            EXPECT_FALSE(error.empty());
        }
    }
}

const std::string jsonHeader = R"({"id":0,"tid":77,"sec":2682061,"nsec":123456789,)";

INSTANTIATE_TEST_SUITE_P(
    Kinds, Decoding,
    ::testing::Values(
        DecodeCase{"text", datagram(0, "\x04T\0hello\0"s), "02-01 01:01:01.123 77 I/T: hello",
                   jsonHeader + R"("kind":"text","priority":4,"tag":"T","message":"hello"})"},
        DecodeCase{
            "cutMessageWithoutNul", datagram(1, "\x06RILJ\0cut"s), "02-01 01:01:01.123 77 E/RILJ: cut",
            R"({"id":1,"tid":77,"sec":2682061,"nsec":123456789,"kind":"text","priority":6,"tag":"RILJ",)"
            R"("message":"cut"})"},
        DecodeCase{"emptyTagAndMessage", datagram(0, "\x02\0\0"s), "02-01 01:01:01.123 77 V/: ",
                   jsonHeader + R"("kind":"text","priority":2,"tag":"","message":""})"},
        DecodeCase{"unknownPriority", datagram(0, "\x09T\0m\0"s), "02-01 01:01:01.123 77 ?/T: m",
                   jsonHeader + R"("kind":"text","priority":9,"tag":"T","message":"m"})"},
        DecodeCase{"otherLogIsText", datagram(3, "\x03T\0m\0"s), "02-01 01:01:01.123 77 D/T: m",
                   R"({"id":3,"tid":77,"sec":2682061,"nsec":123456789,"kind":"text","priority":3,"tag":"T",)"
                   R"("message":"m"})"},
        DecodeCase{"escapes", datagram(0, "\x05T\0a\nb\t\x01\"\\ \xe2\x82\xac\0"s),
                   "02-01 01:01:01.123 77 W/T: a\\nb\\t\\x01\"\\ \xe2\x82\xac",
                   jsonHeader + R"("kind":"text","priority":5,"tag":"T","message":"a\nb\t\u0001\"\\ )"
                                "\xe2\x82\xac"
                                R"("})"},
        DecodeCase{"invalidUtf8", datagram(0, "\x07T\0\xff\xe2\x82!\0"s),
                   "02-01 01:01:01.123 77 F/T: \xff\xe2\x82!",
                   jsonHeader + R"("kind":"text","priority":7,"tag":"T","message":"\ufffd\ufffd\ufffd!"})"},
        DecodeCase{"binary", datagram(2, "\x2a\0\0\0\x01\xaa\xbb"s),
                   "02-01 01:01:01.123 77 event 42 (type 1): aabb",
                   R"({"id":2,"tid":77,"sec":2682061,"nsec":123456789,"kind":"binary","event":42,"type":1,)"
                   R"("payload":"aabb"})"},
        DecodeCase{"binaryTagOnly", datagram(2, "\xfe\xff\xff\xff"s), "02-01 01:01:01.123 77 event -2:",
                   R"({"id":2,"tid":77,"sec":2682061,"nsec":123456789,"kind":"binary","event":-2})"},
        DecodeCase{"stringEvent",
                   datagram(2, "\x2a\0\0\0\x02\x03\0\0\0"
                               "abc"s),
                   "02-01 01:01:01.123 77 event 42 (string): abc",
                   R"({"id":2,"tid":77,"sec":2682061,"nsec":123456789,"kind":"string","event":42,"type":2,)"
                   R"("message":"abc"})"}),
    [](const ::testing::TestParamInfo<DecodeCase>& info) { return std::string(info.param.name); });

TEST_F(InUtc, HeaderFieldsAreLittleEndian)
{
    const std::string bytes = "\x00\xff\xff\x00\x00\x00\x00\xff\xc9\x9a\x3b"s + "\x04T\0m\0"s;
    LogRecord record;
    std::string error;
    ASSERT_TRUE(decode(bytes, record, error));
    EXPECT_EQ(65535, record.threadId);
    EXPECT_EQ(0u, record.seconds);
    EXPECT_EQ(999999999u, record.nanoseconds);
    EXPECT_EQ("01-01 00:00:00.999 65535 I/T: m", formatTextLine(record));
}

struct MalformedCase
{
    const char* name;
    std::string datagram;
    std::string error;
};

void PrintTo(const MalformedCase& c, std::ostream* out)
{
    *out << c.name;
}

class Malformed : public ::testing::TestWithParam<MalformedCase>
{
};

TEST_P(Malformed, IsRefusedWithAReason)
{
    LogRecord record;
    std::string error;
    EXPECT_FALSE(decode(GetParam().datagram, record, error));
    EXPECT_EQ(GetParam().error, error);
}

INSTANTIATE_TEST_SUITE_P(
    Datagrams, Malformed,
    ::testing::Values(
        MalformedCase{"empty", "", "datagram of 0 bytes, shorter than the 11-byte record header"},
        MalformedCase{"shortHeader", std::string(10, 'x'),
                      "datagram of 10 bytes, shorter than the 11-byte record header"},
        MalformedCase{"noPriority", datagram(0, ""), "text record without a priority byte"},
        MalformedCase{"noTagNul", datagram(0, "\x04TAG"), "text record without a NUL after the tag"},
        MalformedCase{"priorityOnly", datagram(0, "\x04"), "text record without a NUL after the tag"},
        MalformedCase{"shortEventTag", datagram(2, "\x2a\0\0"s),
                      "event record of 3 payload bytes, too short for its event tag"},
        MalformedCase{"shortStringLength", datagram(2, "\x2a\0\0\0\x02\x03\0"s),
                      "string event too short for its length field"},
        MalformedCase{"stringLongerThanSent",
                      datagram(2, "\x2a\0\0\0\x02\x09\0\0\0"
                                  "abc"s),
                      "string event declares 9 bytes but carries 3"},
        MalformedCase{"stringShorterThanSent",
                      datagram(2, "\x2a\0\0\0\x02\x02\0\0\0"
                                  "abc"s),
                      "string event declares 2 bytes but carries 3"}),
    [](const ::testing::TestParamInfo<MalformedCase>& info) { return std::string(info.param.name); });

} // namespace
