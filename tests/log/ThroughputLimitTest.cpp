#include "FreshProcess.h"
#include "LogReceiver.h"
#include "velmo/kvo/log/AndroidLog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

struct LimitCase
{
    const char* name;
    // LIBLOG_THROUGHPUT_LIMIT, or null to leave it unset.
    const char* value;
    uint32_t threshold;
    uint32_t sleepUs;
    unsigned records;
    // The records sent after a pause.
    std::vector<unsigned> paused;
};

const LimitCase limitCases[] = {
    {"hundredPer10ms", "100/10", 100, 10000, 101, {100}},
    {"everyRecord", "0/5", 0, 5000, 3, {1, 2, 3}},
    {"noPause", "100/0", 100, 0, 3, {}},
    {"recordsOnly", "100", 0, 0, 3, {}},
    {"slashWithoutMilliseconds", "3/", 0, 0, 3, {}},
    {"word", "fast", 0, 0, 3, {}},
    {"unset", nullptr, 0, 0, 3, {}},
    {"negativeWraps", "-5/10", 4294967291u, 10000, 3, {}},
    {"trailingText", "2/1ms", 2, 1000, 3, {2}},
    {"millisecondsWrap", "5/4294968", 5, 704, 5, {5}},
};

// Runs in a child whose environment holds the case's value (see below).
TEST(ThroughputInFreshProcess, DISABLED_FollowsItsEnvironment)
{
    const char* index = std::getenv("AKVO_LIMIT_CASE");
    ASSERT_NE(nullptr, index);
    const LimitCase& c = limitCases[std::strtoul(index, nullptr, 10)];
    EXPECT_EQ(0u, throughput_limit.count);
    EXPECT_EQ(c.threshold, throughput_limit.threshold);
    EXPECT_EQ(c.sleepUs, throughput_limit.sleep_us);

    // Only records that reach the socket count.
    akvo::test::LogReceiver receiver(AKVO_TEST_LOGDW_PATH);
    uint32_t sincePause = 0;
    for (unsigned record = 1; record <= c.records; ++record) {
        const auto start = std::chrono::steady_clock::now();
        __android_log_write(4, "T", "m");
        const auto elapsed = std::chrono::steady_clock::now() - start;
        receiver.drain();

        const bool paused = std::count(c.paused.begin(), c.paused.end(), record) != 0;
        sincePause = paused ? 0 : sincePause + 1;
        EXPECT_EQ(c.sleepUs == 0 ? 0 : sincePause, throughput_limit.count) << "after record " << record;
        if (paused) {
            EXPECT_GE(elapsed, std::chrono::microseconds(c.sleepUs)) << "record " << record;
        }
    }
}

class ThroughputLimit : public ::testing::TestWithParam<size_t>
{
};

TEST_P(ThroughputLimit, IsReadFromTheEnvironmentAtLoadTime)
{
    const LimitCase& c = limitCases[GetParam()];
    std::vector<std::string> environment = {"AKVO_LIMIT_CASE=" + std::to_string(GetParam())};
    if (c.value != nullptr) {
        environment.push_back(std::string("LIBLOG_THROUGHPUT_LIMIT=") + c.value);
    }
    EXPECT_TRUE(akvo::test::passesInFreshProcess("ThroughputInFreshProcess.DISABLED_FollowsItsEnvironment",
                                                 environment));
}

INSTANTIATE_TEST_SUITE_P(Values, ThroughputLimit, ::testing::Range<size_t>(0, std::size(limitCases)),
                         [](const ::testing::TestParamInfo<size_t>& info) {
                             return std::string(limitCases[info.param].name);
                         });

} // namespace
