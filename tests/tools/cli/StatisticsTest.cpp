#include "Statistics.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

struct StatisticsCase
{
    std::vector<double> values;
    double least;
    double mean;
    double greatest;
};

class WatchStatistics : public ::testing::TestWithParam<StatisticsCase>
{
};

TEST_P(WatchStatistics, AreTheLeastMeanAndGreatestValue)
{
    velmo::kvo::cli::Statistics statistics;
    for (double value : GetParam().values) {
        statistics.add(value);
    }
    EXPECT_EQ(GetParam().values.size(), statistics.count());
    EXPECT_DOUBLE_EQ(GetParam().least, statistics.least());
    EXPECT_DOUBLE_EQ(GetParam().mean, statistics.mean());
    EXPECT_DOUBLE_EQ(GetParam().greatest, statistics.greatest());
}

INSTANTIATE_TEST_SUITE_P(Values, WatchStatistics,
                         ::testing::Values(StatisticsCase{{}, 0, 0, 0},
                                           StatisticsCase{{-3.5}, -3.5, -3.5, -3.5},
                                           StatisticsCase{{100, 99, 101, 104}, 99, 101, 104},
                                           StatisticsCase{{-2, 5, -7}, -7, -4.0 / 3, 5}));

} // namespace
