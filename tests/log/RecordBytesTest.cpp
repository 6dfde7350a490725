#include "ChildProcess.h"
#include "LogReceiver.h"
#include "velmo/kvo/log/AndroidLog.h"

#include <gtest/gtest.h>

#include <csignal>
#include <ctime>
#include <functional>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace std::string_literals;
using akvo::test::processLogReceiver;

namespace {
std::vector<std::string> abortMessages;
}

// Stands in for the C library's hook, which glibc does not have: the writer
// finds it through its weak reference.
extern "C" void android_set_abort_message(const char* message)
{
    abortMessages.push_back(message);
}

namespace {

struct RecordCase
{
    const char* name;
    std::function<int()> write;
    uint8_t logId;
    // The writer returns its size.
    std::string payload;
};

uint64_t nanoseconds(uint32_t seconds, uint32_t fraction)
{
    return seconds * 1000000000ULL + fraction;
}

uint32_t load32(const std::vector<uint8_t>& bytes, size_t at)
{
    return bytes[at] | bytes[at + 1] << 8 | bytes[at + 2] << 16 | static_cast<uint32_t>(bytes[at + 3]) << 24;
}

uint64_t realTimeNow()
{
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    return nanoseconds(static_cast<uint32_t>(now.tv_sec), static_cast<uint32_t>(now.tv_nsec));
}

class RecordBytes : public ::testing::TestWithParam<RecordCase>
{
};

TEST_P(RecordBytes, CarryTheHeaderAndThePayloadOfTheirKind)
{
    akvo::test::LogReceiver& receiver = processLogReceiver();
    const uint64_t before = realTimeNow();
    EXPECT_EQ(static_cast<int>(GetParam().payload.size()), GetParam().write());
    const uint64_t after = realTimeNow();

    const auto datagram = receiver.nextDatagram();
    ASSERT_TRUE(datagram && datagram->size() >= 11);
    const std::vector<uint8_t>& bytes = *datagram;
    EXPECT_EQ(GetParam().logId, bytes[0]);
    EXPECT_EQ(gettid() & 0xffff, bytes[1] | bytes[2] << 8);
    EXPECT_LE(before, nanoseconds(load32(bytes, 3), load32(bytes, 7)));
    EXPECT_GE(after, nanoseconds(load32(bytes, 3), load32(bytes, 7)));
    EXPECT_EQ(GetParam().payload, std::string(bytes.begin() + 11, bytes.end()));
}

const std::string text5000(5000, 'a');
const uint8_t eventBytes[] = {0xaa, 0xbb, 0xcc};

RecordCase radio(const char* tag)
{
    return {tag, [tag] { return __android_log_write(4, tag, "m"); }, 1,
            "\x04use-Rlog/RLOG-"s + tag + "\0m\0"s};
}

RecordCase mainLog(const char* tag)
{
    return {tag, [tag] { return __android_log_write(4, tag, "m"); }, 0, "\x04"s + tag + "\0m\0"s};
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, RecordBytes,
    ::testing::Values(
        RecordCase{"write", [] { return __android_log_write(4, "T", "m"); }, 0, "\x04T\0m\0"s},
        RecordCase{"nullTag", [] { return __android_log_write(4, nullptr, "m"); }, 0, "\x04\0m\0"s},
        RecordCase{"bufWrite", [] { return __android_log_buf_write(3, 6, "Tag", "msg"); }, 3,
                   "\x06Tag\0msg\0"s},
        RecordCase{"print", [] { return __android_log_print(5, "T", "%d-%s", 42, "x"); }, 0,
                   "\x05T\0"
                   "42-x\0"s},
        RecordCase{"bufPrint", [] { return __android_log_buf_print(2, 3, "T", "%c", 'z'); }, 2,
                   "\x03T\0z\0"s},
        RecordCase{"printFillingItsBuffer",
                   [] { return __android_log_print(4, "T", "%s", text5000.substr(0, 1023).c_str()); }, 0,
                   "\x04T\0"s + std::string(1023, 'a') + '\0'},
        RecordCase{"printOneByteOverItsBuffer",
                   [] { return __android_log_print(4, "T", "%s", text5000.substr(0, 1024).c_str()); }, 0,
                   "\x04T\0"s + std::string(1023, 'a') + '\0'},
        // Through a volatile, so that the compiler does not see the null.
        RecordCase{"printNullText",
                   [] {
                       const char* volatile none = nullptr;
                       return __android_log_print(4, "T", "%s", none);
                   },
                   0, "\x04T\0(null)\0"s},
        RecordCase{"bwrite", [] { return __android_log_bwrite(0x01020304, eventBytes, 3); }, 2,
                   "\x04\x03\x02\x01\xaa\xbb\xcc"s},
        RecordCase{"btwrite", [] { return __android_log_btwrite(42, 1, eventBytes, 2); }, 2,
                   "\x2a\0\0\0\x01\xaa\xbb"s},
        RecordCase{"bswrite", [] { return __android_log_bswrite(42, "abc"); }, 2,
                   "\x2a\0\0\0\x02\x03\0\0\0"
                   "abc"s},
        // The payload stops at 4076 bytes; a cut message loses its NUL.
        RecordCase{"messageCut", [] { return __android_log_write(4, "T", text5000.c_str()); }, 0,
                   "\x04T\0"s + std::string(4073, 'a')},
        RecordCase{"tagCutMessageLeftOut", [] { return __android_log_write(4, text5000.c_str(), "m"); }, 0,
                   "\x04"s + std::string(4075, 'a')},
        radio("RILJ"), radio("IMSx"), radio("HTC_RIL"), radio("AT"), radio("GSM"), radio("STK"),
        radio("CDMA"), radio("PHONE"), radio("SMS"), mainLog("ATX"), mainLog("SMSC"), mainLog("xRIL"),
        RecordCase{"radioTagCutTo31", [] { return __android_log_write(4, "RIL_0123456789abcdefghij", "m"); },
                   1, "\x04use-Rlog/RLOG-RIL_0123456789abc\0m\0"s},
        RecordCase{"bufWriteRadioKeepsTheTag", [] { return __android_log_buf_write(1, 4, "RILJ", "m"); }, 1,
                   "\x04RILJ\0m\0"s},
        RecordCase{"bufWriteMainRedirects", [] { return __android_log_buf_write(3, 4, "AT", "m"); }, 1,
                   "\x04use-Rlog/RLOG-AT\0m\0"s}),
    [](const ::testing::TestParamInfo<RecordCase>& info) { return std::string(info.param.name); });

// The writer keeps each thread's id; another thread and a forked child
// (the child of a thread that has logged) carry their own.
TEST(RecordBytes, CarryTheIdOfTheThreadThatWrote)
{
    akvo::test::LogReceiver& receiver = processLogReceiver();
    const auto writtenId = [&receiver] {
        __android_log_write(4, "T", "m");
        const auto datagram = receiver.nextDatagram();
        return datagram && datagram->size() >= 3 ? (*datagram)[1] | (*datagram)[2] << 8 : -1;
    };
    EXPECT_EQ(gettid() & 0xffff, writtenId());
    std::thread([&writtenId] { EXPECT_EQ(gettid() & 0xffff, writtenId()); }).join();
    akvo::test::expectPassesInChild([&writtenId] { EXPECT_EQ(gettid() & 0xffff, writtenId()); });
}

TEST(AbortMessage, IsRecordedForFatalWritesOnly)
{
    akvo::test::LogReceiver& receiver = processLogReceiver();
    abortMessages.clear();
    __android_log_write(7, "T", "fatal");
    __android_log_write(7, "RILJ", "radio");
    __android_log_write(6, "T", "error");
    __android_log_buf_write(0, 7, "T", "buffered");
    EXPECT_EQ((std::vector<std::string>{"fatal", "radio"}), abortMessages);
    EXPECT_EQ(4u, receiver.drain().size());
}

struct AssertCase
{
    const char* name;
    std::function<void()> call;
    std::string message;
};

class AssertTrap : public ::testing::TestWithParam<AssertCase>
{
};

TEST_P(AssertTrap, WritesAFatalRecordThenTraps)
{
    // Bound before the child is forked, so the child's record comes here.
    akvo::test::LogReceiver& receiver = processLogReceiver();
    GTEST_FLAG_SET(death_test_style, "fast");
    // A trap instruction, ud2 on x86, which the kernel reports as SIGILL.
    EXPECT_EXIT(GetParam().call(), ::testing::KilledBySignal(SIGILL), "");

    const auto record = receiver.nextRecord();
    ASSERT_TRUE(record);
    EXPECT_EQ(7, record->priority);
    EXPECT_EQ("T", record->tag);
    EXPECT_EQ(GetParam().message, record->message);
}

INSTANTIATE_TEST_SUITE_P(
    Messages, AssertTrap,
    ::testing::Values(AssertCase{"format", [] { __android_log_assert("x > 0", "T", "value %d", 7); },
                                 "value 7"},
                      AssertCase{"condition", [] { __android_log_assert("x > 0", "T", nullptr); },
                                 "Assertion failed: x > 0"},
                      AssertCase{"conditionIsNotAFormat", [] { __android_log_assert("100%s", "T", nullptr); },
                                 "Assertion failed: 100%s"},
                      AssertCase{"nothing", [] { __android_log_assert(nullptr, "T", nullptr); },
                                 "Unspecified assertion failed"}),
    [](const ::testing::TestParamInfo<AssertCase>& info) { return std::string(info.param.name); });

} // namespace
