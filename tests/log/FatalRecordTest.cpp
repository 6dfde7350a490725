#include "LogReceiver.h"
#include "velmo/kvo/log/AndroidLog.h"

#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <string>
#include <vector>

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

// __builtin_trap is ud2 on x86, which the kernel reports as SIGILL.
constexpr int trapSignal = SIGILL;

struct AbortMessageCase
{
    const char* name;
    std::function<void()> write;
    std::vector<std::string> expected;
};

class AbortMessage : public ::testing::TestWithParam<AbortMessageCase>
{
};

TEST_P(AbortMessage, IsRecordedForFatalWritesOnly)
{
    akvo::test::LogReceiver& receiver = processLogReceiver();
    abortMessages.clear();

    GetParam().write();

    EXPECT_EQ(GetParam().expected, abortMessages);
    EXPECT_TRUE(receiver.nextRecord());
}

INSTANTIATE_TEST_SUITE_P(
    Writes, AbortMessage,
    ::testing::Values(
        AbortMessageCase{"writeFatal", [] { __android_log_write(7, "T", "fatal"); }, {"fatal"}},
        AbortMessageCase{"writeFatalRadioTag", [] { __android_log_write(7, "RILJ", "radio"); }, {"radio"}},
        AbortMessageCase{"printFatal", [] { __android_log_print(7, "T", "%d", 3); }, {"3"}},
        AbortMessageCase{"writeError", [] { __android_log_write(6, "T", "error"); }, {}},
        AbortMessageCase{"bufWriteFatal", [] { __android_log_buf_write(0, 7, "T", "fatal"); }, {}}),
    [](const ::testing::TestParamInfo<AbortMessageCase>& info) { return std::string(info.param.name); });

struct AssertCase
{
    const char* name;
    std::function<void()> call;
    std::string tag;
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

    EXPECT_EXIT(GetParam().call(), ::testing::KilledBySignal(trapSignal), "");

    const auto record = receiver.nextRecord();
    ASSERT_TRUE(record);
    EXPECT_EQ(0, record->logId);
    EXPECT_EQ(7, record->priority);
    EXPECT_EQ(GetParam().tag, record->tag);
    EXPECT_EQ(GetParam().message, record->message);
}

INSTANTIATE_TEST_SUITE_P(
    Messages, AssertTrap,
    ::testing::Values(AssertCase{"format", [] { __android_log_assert("x > 0", "T", "value %d", 7); }, "T",
                                 "value 7"},
                      AssertCase{"condition", [] { __android_log_assert("x > 0", "T", nullptr); }, "T",
                                 "Assertion failed: x > 0"},
                      AssertCase{"conditionIsNotAFormat", [] { __android_log_assert("100%s", "T", nullptr); },
                                 "T", "Assertion failed: 100%s"},
                      AssertCase{"nothing", [] { __android_log_assert(nullptr, "T", nullptr); }, "T",
                                 "Unspecified assertion failed"},
                      AssertCase{"nullTag", [] { __android_log_assert(nullptr, nullptr, nullptr); }, "",
                                 "Unspecified assertion failed"}),
    [](const ::testing::TestParamInfo<AssertCase>& info) { return std::string(info.param.name); });

} // namespace
