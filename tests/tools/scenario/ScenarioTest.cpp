#include "Scenario.h"
#include "EngineModel.h"

#include <gtest/gtest.h>

namespace akvo {
namespace test {
namespace {

using namespace velmo::kvo::scenario;

TEST(Scenario, ReadsEveryField)
{
    Scenario s;
    std::string error;
    ASSERT_TRUE(parseScenario(R"({"name": "video-step-up", "duration_s": 120, "poll_ms": 100, "seed": 7,
        "margin_lag_ms": 300, "margin_gain": 0.8,
        "audio": {"latency_ms": 80, "steps": [[30, 100]], "drift_ms_per_min": 6, "noise_ms": 10},
        "video": {"latency_ms": 120, "steps": [[60, 200]], "noise_ms": 5},
        "lost_polls": [[40.0, 43.0]], "engine_restarts": [50], "feasible": false})",
                              s, error))
        << error;
    EXPECT_EQ(100u, s.pollMs);
    EXPECT_EQ(7u, s.seed);
    EXPECT_FALSE(s.feasible);
    EXPECT_DOUBLE_EQ(80 + 6 * 29999.0 / 60000, s.audio.baseAt(29999));
    EXPECT_DOUBLE_EQ(100 + 6 * 0.5, s.audio.baseAt(30000));
    EXPECT_DOUBLE_EQ(200, s.video.baseAt(60000));
    EXPECT_TRUE(s.pollLostAt(40000));
    EXPECT_FALSE(s.pollLostAt(43000));

    EngineModel engine(s);
    engine.accept(1000, 40);
    EXPECT_DOUBLE_EQ(0, engine.marginInEffect(1299));
    EXPECT_DOUBLE_EQ(40, engine.marginInEffect(1300));
    EXPECT_DOUBLE_EQ(80 + 6.0 * 1300 / 60000 + 0.8 * 40, engine.audioDelay(1300));
    engine.restart();
    EXPECT_DOUBLE_EQ(0, engine.marginInEffect(2000));
}

struct BadFile
{
    const char* text;
    const char* error;
};

class ScenarioRefused : public ::testing::TestWithParam<BadFile>
{
};

TEST_P(ScenarioRefused, NamesTheField)
{
    Scenario s;
    std::string error;
    EXPECT_FALSE(parseScenario(GetParam().text, s, error));
    EXPECT_EQ(GetParam().error, error);
}

#define SIDES R"("audio": {"latency_ms": 80}, "video": {"latency_ms": 100})"

INSTANTIATE_TEST_SUITE_P(
    Files, ScenarioRefused,
    ::testing::Values(
        BadFile{"[1]", "not a JSON object"}, BadFile{"{\"name\": ", "not a JSON object"},
        BadFile{R"({"duration_s": 10, )" SIDES "}", "field \"name\" is required"},
        BadFile{R"({"name": "a b", "duration_s": 10, )" SIDES "}",
                "field \"name\" must be a text without blanks"},
        BadFile{R"({"name": "x", )" SIDES "}", "field \"duration_s\" is required"},
        BadFile{R"({"name": "x", "duration_s": 10, "poll_ms": 20.5, )" SIDES "}",
                "field \"poll_ms\" must be a whole number from 10 to 10000"},
        BadFile{R"({"name": "x", "duration_s": 10, "audio": {"latency_ms": 80}})",
                "field \"video\" is required"},
        BadFile{
            R"({"name": "x", "duration_s": 10, "audio": {"latency_ms": 80, "noise": 3}, "video": {"latency_ms": 1}})",
            "field \"audio.noise\" is not a scenario field"},
        BadFile{R"({"name": "x", "duration_s": 10, "audio": {"latency_ms": 80, "steps": [[5, 1], [4, 2]]},
                 "video": {"latency_ms": 1}})",
                "field \"audio.steps[1]\" must be one of [time_s, latency_ms] pairs in time order, within "
                "duration_s and not negative"},
        BadFile{R"({"name": "x", "duration_s": 10, "lost_polls": [[3, 2]], )" SIDES "}",
                "field \"lost_polls[0]\" must be one of [from_s, to_s] pairs with from_s < to_s, within "
                "duration_s "
                "and not negative"},
        BadFile{R"({"name": "x", "duration_s": 10, "engine_restarts": [11], )" SIDES "}",
                "field \"engine_restarts[0]\" must be a time in s within duration_s"},
        BadFile{R"({"name": "x", "duration_s": 10, "feasible": 1, )" SIDES "}",
                "field \"feasible\" must be true or false"},
        BadFile{R"({"name": "x", "duration_s": 10, "seeds": 1, )" SIDES "}",
                "field \"seeds\" is not a scenario field"}));

} // namespace
} // namespace test
} // namespace akvo
