#include "PriorityFilter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using velmo::kvo::logcat::LogRecord;
using velmo::kvo::logcat::PriorityFilter;
using velmo::kvo::logcat::RecordKind;

struct FilterCase
{
    std::vector<std::string> specs;
    // The records T at D, T at W, U at D, U at a priority byte of no level
    // (1), and event 7, each shown (1) or not (0).
    const char* shown;
};

class Filter : public ::testing::TestWithParam<FilterCase>
{
};

TEST_P(Filter, ShowsTheRecordsItsSpecsLetThrough)
{
    PriorityFilter filter;
    std::string error;
    for (const std::string& spec : GetParam().specs) {
        ASSERT_TRUE(filter.add(spec, error)) << error;
    }
    const auto text = [](const char* tag, uint8_t priority) {
        LogRecord record;
        record.tag = tag;
        record.priority = priority;
        return record;
    };
    LogRecord event;
    event.kind = RecordKind::StringEvent;
    event.eventTag = 7;
    std::string shown;
    for (const LogRecord& record : {text("T", 3), text("T", 5), text("U", 3), text("U", 1), event}) {
        shown += filter.shows(record) ? '1' : '0';
    }
    EXPECT_EQ(GetParam().shown, shown);
}

INSTANTIATE_TEST_SUITE_P(Specs, Filter,
                         ::testing::Values(FilterCase{{}, "11111"}, FilterCase{{"T:W"}, "01111"},
                                           FilterCase{{"T:W", "*:S"}, "01000"},
                                           FilterCase{{"*:S", "T"}, "11000"}, FilterCase{{"*:D"}, "11101"},
                                           FilterCase{{"*:I"}, "01001"}, FilterCase{{"*:F"}, "00000"},
                                           FilterCase{{"T:E", "T:D"}, "11111"}, FilterCase{{"7:S"}, "11110"},
                                           FilterCase{{"*:S", "7:I"}, "00001"},
                                           FilterCase{{"*:V"}, "11111"}));

class BadSpec : public ::testing::TestWithParam<std::string>
{
};

TEST_P(BadSpec, IsRefusedWithItsText)
{
    PriorityFilter filter;
    std::string error;
    EXPECT_FALSE(filter.add(GetParam(), error));
    EXPECT_EQ("filter spec \"" + GetParam() + "\" is not TAG:P with P one of V D I W E F S", error);
}

INSTANTIATE_TEST_SUITE_P(Specs, BadSpec, ::testing::Values("", ":W", "T:", "T:X", "T:w", "T:WE", "*:"));

} // namespace
