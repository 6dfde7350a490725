#include "Scenario.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

namespace velmo {
namespace kvo {
namespace scenario {

namespace {

using nlohmann::json;

// Reads fields of one JSON object, each at most once, and remembers the first
// problem with the field's full name.
class FieldReader
{
public:
    FieldReader(const json& object, std::string prefix, std::string& error)
        : _object(object), _prefix(std::move(prefix)), _error(error)
    {
    }

    bool number(const char* name, double& value, bool required, double low, double high)
    {
        const json* field = find(name, required);
        if (field == nullptr) {
            return _error.empty();
        }
        if (!field->is_number() || field->get<double>() < low || field->get<double>() > high) {
            return fail(name, "must be a number from " + text(low) + " to " + text(high));
        }
        value = field->get<double>();
        return true;
    }

    template <typename Unsigned>
    bool whole(const char* name, Unsigned& value, double low, double high)
    {
        double number = 0;
        if (!this->number(name, number, false, low, high)) {
            return false;
        }
        if (_object.contains(name)) {
            if (!_object[name].is_number_unsigned()) {
                return fail(name, "must be a whole number from " + text(low) + " to " + text(high));
            }
            value = _object[name].get<Unsigned>();
        }
        return true;
    }

    const json* find(const char* name, bool required)
    {
        _known.push_back(name);
        if (!_object.contains(name)) {
            if (required) {
                fail(name, "is required");
            }
            return nullptr;
        }
        return &_object[name];
    }

    bool fail(const std::string& name, const std::string& why)
    {
        if (_error.empty()) {
            _error = "field \"" + _prefix + name + "\" " + why;
        }
        return false;
    }

    // Refuses the fields no reader asked for: a misspelt name would otherwise be ignored.
    bool noOthers()
    {
        for (auto it = _object.begin(); it != _object.end(); ++it) {
            if (std::find(_known.begin(), _known.end(), it.key()) == _known.end()) {
                return fail(it.key(), "is not a scenario field");
            }
        }
        return _error.empty();
    }

    static std::string text(double value)
    {
        std::ostringstream out;
        out << value;
        return out.str();
    }

private:
    const json& _object;
    std::string _prefix;
    std::string& _error;
    std::vector<std::string> _known;
};

bool readPairs(FieldReader& reader, const char* name, double durationS, bool increasingValues,
               std::vector<std::pair<double, double>>& pairs)
{
    const json* field = reader.find(name, false);
    if (field == nullptr) {
        return true;
    }
    const std::string shape = increasingValues ? "[from_s, to_s] pairs with from_s < to_s"
                                               : "[time_s, latency_ms] pairs in time order";
    if (!field->is_array()) {
        return reader.fail(name, "must be a list of " + shape);
    }
    for (std::size_t i = 0; i < field->size(); ++i) {
        const json& pair = (*field)[i];
        const std::string item = std::string(name) + "[" + std::to_string(i) + "]";
        if (!pair.is_array() || pair.size() != 2 || !pair[0].is_number() || !pair[1].is_number()) {
            return reader.fail(item, "must be one of " + shape);
        }
        const double first = pair[0].get<double>();
        const double second = pair[1].get<double>();
        const bool ordered =
            increasingValues ? first < second : (pairs.empty() || first >= pairs.back().first);
        if (first < 0 || first > durationS || second < 0 || !ordered) {
            return reader.fail(item, "must be one of " + shape + ", within duration_s and not negative");
        }
        pairs.emplace_back(first, second);
    }
    return true;
}

bool readTrack(FieldReader& top, const char* name, double durationS, Track& track, std::string& error)
{
    const json* field = top.find(name, true);
    if (field == nullptr) {
        return false;
    }
    if (!field->is_object()) {
        return top.fail(name, "must be an object");
    }
    FieldReader reader(*field, std::string(name) + ".", error);
    return reader.number("latency_ms", track.latencyMs, true, 0, 10000) &&
           readPairs(reader, "steps", durationS, false, track.steps) &&
           reader.number("drift_ms_per_min", track.driftMsPerMin, false, -1000, 1000) &&
           reader.number("noise_ms", track.noiseMs, false, 0, 1000) && reader.noOthers();
}

} // namespace

double Track::baseAt(double tMs) const
{
    double latency = latencyMs;
    for (const auto& step : steps) {
        if (step.first * 1000 <= tMs) {
            latency = step.second;
        }
    }
    return latency + driftMsPerMin * tMs / 60000;
}

bool Scenario::pollLostAt(double tMs) const
{
    for (const auto& lost : lostPolls) {
        if (lost.first * 1000 <= tMs && tMs < lost.second * 1000) {
            return true;
        }
    }
    return false;
}

bool parseScenario(const std::string& text, Scenario& scenario, std::string& error)
{
    error.clear();
    const json root = json::parse(text, nullptr, false);
    if (root.is_discarded() || !root.is_object()) {
        error = "not a JSON object";
        return false;
    }
    FieldReader reader(root, "", error);
    const json* name = reader.find("name", true);
    if (name == nullptr) {
        return false;
    }
    if (!name->is_string() || name->get<std::string>().empty() ||
        name->get<std::string>().find_first_of(" \t\r\n") != std::string::npos) {
        return reader.fail("name", "must be a text without blanks");
    }
    scenario.name = name->get<std::string>();
    if (!reader.number("duration_s", scenario.durationS, true, 1, 86400) ||
        !reader.whole("poll_ms", scenario.pollMs, 10, 10000) ||
        !reader.whole("seed", scenario.seed, 0, 1e15) ||
        !reader.number("margin_lag_ms", scenario.marginLagMs, false, 0, 10000) ||
        !reader.number("margin_gain", scenario.marginGain, false, 0.1, 10) ||
        !readTrack(reader, "audio", scenario.durationS, scenario.audio, error) ||
        !readTrack(reader, "video", scenario.durationS, scenario.video, error) ||
        !readPairs(reader, "lost_polls", scenario.durationS, true, scenario.lostPolls)) {
        return false;
    }
    if (const json* restarts = reader.find("engine_restarts", false)) {
        for (std::size_t i = 0; restarts->is_array() && i < restarts->size(); ++i) {
            const json& at = (*restarts)[i];
            if (!at.is_number() || at.get<double>() < 0 || at.get<double>() > scenario.durationS) {
                return reader.fail("engine_restarts[" + std::to_string(i) + "]",
                                   "must be a time in s within duration_s");
            }
            scenario.engineRestarts.push_back(at.get<double>());
        }
        if (!restarts->is_array()) {
            return reader.fail("engine_restarts", "must be a list of times in s");
        }
    }
    if (const json* feasible = reader.find("feasible", false)) {
        if (!feasible->is_boolean()) {
            return reader.fail("feasible", "must be true or false");
        }
        scenario.feasible = feasible->get<bool>();
    }
    return reader.noOthers();
}

bool loadScenario(const std::string& path, Scenario& scenario, std::string& error)
{
    std::ifstream in(path);
    std::ostringstream text;
    if (!in || !(text << in.rdbuf())) {
        error = path + ": cannot be read";
        return false;
    }
    if (!parseScenario(text.str(), scenario, error)) {
        error = path + ": " + error;
        return false;
    }
    return true;
}

} // namespace scenario
} // namespace kvo
} // namespace velmo
