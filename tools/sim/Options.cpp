#include "Options.h"

#include "CommandLine.h"
#include "Log.h"

namespace velmo {
namespace kvo {
namespace sim {

namespace {

const char* const description =
    "A stand-in for the audio engine's lip-sync server: answers GetAudioTs and SetAudioDelay\n"
    "requests on a Unix stream socket, and misbehaves on demand.";

const char* const faultHelp =
    "Faults: FAULT is WHICH:ACTION[:ARGS]. WHICH is a request number counted from 1 over the\n"
    "server's whole life in order of arrival, across all clients (every message counts, even one\n"
    "that is not a valid request), or * for every request; a numbered fault takes precedence\n"
    "over *, and no request may have two faults. ACTION is one of\n"
    "  close                 close the connection instead of answering\n"
    "  close-after:N         send the first N bytes of the framed answer, then close\n"
    "  split:SIZE:PAUSE_MS   send the framed answer in writes of SIZE bytes, PAUSE_MS apart\n"
    "  double                send the framed answer twice in one write\n"
    "  version:V             answer in envelope version V\n"
    "  error:CODE:MESSAGE    answer with ErrorCode CODE and Message MESSAGE; the command is not\n"
    "                        carried out, and a GetAudioTs answer carries zero timestamps\n"
    "  garbage               send a framed text that is not XML\n"
    "  delay:MS              answer after MS milliseconds\n"
    "Except with error, the engine carries the command out whatever happens to its answer.\n"
    "Other clients are served meanwhile; answers to one client always leave in request order.\n"
    "A fault file holds one FAULT per line; blank lines and lines starting with # are skipped.\n"
    "\n"
    "Example: akvo-lipsync-sim --socket /tmp/lipsync --fault 2:delay:500 --fault '*:split:16:10'";

} // namespace

std::optional<int> parseOptions(int argc, char** argv, Options& options)
{
    CLI::App app(description, programName);
    std::vector<std::string> faults;
    std::string faultFile;
    app.add_option("--socket", options.socketPath, "Unix socket path to serve on (at most 107 bytes)")
        ->required()
        ->type_name("PATH");
    app.add_flag("--verbose", options.verbose, "Print one line per request and per answer on standard error");
    app.add_flag("--idle", options.idle,
                 "Engine not in a call: every request is answered with ErrorCode 1003");
    CLI::Option* fixed = app.add_flag(
        "--fixed", options.fixed,
        "Report the same timestamps every time, whatever the delay margin, for reproducible runs");
    std::string scenarioFile;
    app.add_option("--scenario", scenarioFile,
                   "Move the audio delay as the scenario file says (its audio part, margin lag, lost polls "
                   "and engine restarts), from the simulator's start")
        ->type_name("FILE")
        ->excludes(fixed);
    app.add_option("--fault", faults, "Misbehave as FAULT says (see below); may be given several times")
        ->type_name("FAULT")
        ->expected(1)
        ->take_all();
    app.add_option("--fault-file", faultFile, "Read faults from a file, one per line")->type_name("PATH");
    app.footer(faultHelp);
    app.set_version_flag("--version", std::string(programName) + " " + AKVO_VERSION);
    if (const std::optional<int> status = tools::parseCommandLine(app, argc, argv)) {
        return status;
    }
    std::string error;
    for (const std::string& rule : faults) {
        if (!options.faults.add(rule, error)) {
            return tools::reportUsageError(app, error);
        }
    }
    if (!faultFile.empty() && !options.faults.addFile(faultFile, error)) {
        return tools::reportUsageError(app, error);
    }
    if (!scenarioFile.empty()) {
        options.scenario.emplace();
        if (!scenario::loadScenario(scenarioFile, *options.scenario, error)) {
            return tools::reportUsageError(app, error);
        }
    }
    return std::nullopt;
}

} // namespace sim
} // namespace kvo
} // namespace velmo
