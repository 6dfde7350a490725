#include "Baseline.h"
#include "ClosedLoop.h"
#include "CommandLine.h"
#include "Metrics.h"
#include "PlotPage.h"
#include "Scenario.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>
#include <sys/stat.h>

using namespace velmo::kvo;
using namespace velmo::kvo::synceval;

namespace {

const char* const programName = "akvo-synceval";

const char* const description =
    "Runs the lip-sync controller, the baseline (WebRTC's stream synchronisation as publicly\n"
    "described) and no control at all in closed loop against each scenario, on simulated time,\n"
    "and prints one line per scenario, then 'N passed, M failed'.";

const char* const footer =
    "Percentages are of 10 ms ticks after the first 2 s, leaving out each step's settle allowance\n"
    "(2 s + 2 polls + the margin lag). settle_max is the longest time after a step until the skew\n"
    "entered IS-191 and stayed there 1 s. A scenario passes when the controller keeps is191 at\n"
    "99 % or more, settles every step within its allowance, changes the margin at most once per\n"
    "10 s when nothing moves, and beats the baseline's is191. In a scenario marked infeasible,\n"
    "the ticks whose skew is beyond reach count as on target when the controller says so and\n"
    "holds margin 100 with no video delay; 99 % of all counted ticks must be on target, and at\n"
    "most 1 % of those within reach flagged infeasible. Exit status: 0 all passed, 1 a scenario\n"
    "failed, 2 usage or a bad scenario file.";

std::string seconds(double value)
{
    if (value < 0) {
        return "never";
    }
    char text[32];
    std::snprintf(text, sizeof(text), "%.1fs", value);
    return text;
}

std::string percent(double value)
{
    char text[32];
    std::snprintf(text, sizeof(text), "%.1f%%", value);
    return text;
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app(description, programName);
    std::vector<std::string> files;
    std::string plots;
    app.add_option("--plots", plots, "Write one HTML page per scenario into DIR")->type_name("DIR");
    app.add_option("SCENARIO", files, "Scenario files (JSON)")->required()->type_name("SCENARIO.json");
    app.footer(footer);
    app.set_version_flag("--version", std::string(programName) + " " + AKVO_VERSION);
    if (const std::optional<int> status = tools::parseCommandLine(app, argc, argv)) {
        return *status;
    }
    std::vector<scenario::Scenario> scenarios(files.size());
    for (std::size_t i = 0; i < files.size(); ++i) {
        std::string error;
        if (!scenario::loadScenario(files[i], scenarios[i], error)) {
            return tools::reportUsageError(app, error);
        }
    }
    if (!plots.empty() && ::mkdir(plots.c_str(), 0777) != 0 && errno != EEXIST) {
        std::cerr << programName << ": cannot make " << plots << ": " << std::strerror(errno) << std::endl;
        return 1;
    }
    unsigned passed = 0;
    for (const scenario::Scenario& scenario : scenarios) {
        std::unique_ptr<Strategy> controller = makeController(scenario.pollMs);
        Baseline baseline;
        std::unique_ptr<Strategy> none = makeNoControl();
        const Trace controllerTrace = runClosedLoop(scenario, *controller);
        const Trace baselineTrace = runClosedLoop(scenario, baseline);
        const Trace noneTrace = runClosedLoop(scenario, *none);
        const Measures c = measure(scenario, controllerTrace);
        const Measures b = measure(scenario, baselineTrace);
        const Measures n = measure(scenario, noneTrace);
        const std::vector<std::string> why = failures(scenario, c, b);
        std::ostringstream line;
        line << (why.empty() ? "PASS " : "FAIL ") << scenario.name
             << " controller: is191=" << percent(c.is191) << " bt1359=" << percent(c.bt1359)
             << " settle_max=" << seconds(c.settleMaxS) << " margin_changes=" << c.marginChanges
             << " video_step_max=" << std::lround(c.videoStepMaxMs)
             << "ms | baseline: is191=" << percent(b.is191) << " bt1359=" << percent(b.bt1359)
             << " settle_max=" << seconds(b.settleMaxS) << " | none: is191=" << percent(n.is191);
        std::cout << line.str() << std::endl;
        for (const std::string& reason : why) {
            std::cerr << programName << ": " << scenario.name << ": " << reason << std::endl;
        }
        passed += why.empty();
        if (!plots.empty()) {
            const std::string path = plots + "/" + scenario.name + ".html";
            std::ofstream page(path);
            if (!(page << plotPage(scenario, {controllerTrace, baselineTrace, noneTrace}, line.str()))) {
                std::cerr << programName << ": cannot write " << path << std::endl;
                return 1;
            }
        }
    }
    std::cout << passed << " passed, " << scenarios.size() - passed << " failed" << std::endl;
    return passed == scenarios.size() ? 0 : 1;
}
