// akvo-lipsync: talks to the audio engine's lip-sync service through the
// library, for people and scripts working without the media application.

#include "BrokenPipes.h"
#include "CommandLine.h"
#include "Commands.h"
#include "SyncCommand.h"

#include "velmo/kvo/lipsyncapi/Service.h"

#include <cstdio>

int main(int argc, char** argv)
{
    using namespace velmo::kvo::cli;
    velmo::kvo::tools::ignoreBrokenPipes();

    std::string socketName = velmo::kvo::lipsyncapi::Service::defaultLipsyncSocketName;
    bool json = false;
    CommandArgs args;
    SyncArgs syncArgs;

    CLI::App app(std::string("Client of the audio engine's lip-sync service.\n") + exitStatusHelp,
                 "akvo-lipsync");
    app.add_option("--socket", socketName, "Path of the engine's lip-sync socket")->capture_default_str();
    app.add_flag("--json", json,
                 "Print one JSON object per line: command, code (the library's result code, or the exit "
                 "status for what the tool answers itself), result, then the values; timestamps are "
                 "strings of decimal digits, which readers that hold numbers in doubles keep whole");
    addTimeoutOption(app, args);
    app.set_version_flag("--version", std::string("akvo-lipsync ") + AKVO_VERSION);
    app.require_subcommand(1);
    addServiceCommands(app, args);
    app.footer("The options may also follow the command: akvo-lipsync caps --timeout-ms 500.");
    app.add_subcommand("shell", "Read commands from standard input, one per line, over one connection "
                                "(the commands above plus connect [PATH], disconnect, help and quit), "
                                "with a prompt, line editing and history on a terminal; a line may give "
                                "its own --timeout-ms")
        ->footer(shellExitStatus);
    addSyncCommand(app, syncArgs);
    if (const std::optional<int> status = velmo::kvo::tools::parseCommandLine(app, argc, argv)) {
        return *status;
    }

    // A table on standard output takes no failure lines, the connection's included.
    const Output output(json, args.csv && !json ? stderr : stdout);
    Session session(output);
    if (!session.ready()) {
        std::fprintf(stderr, "akvo-lipsync: not enough memory for the service\n");
        return ExitOtherFailure;
    }
    session.setTimeout(args.timeoutMs);
    int status = ExitSuccess;
    if (app.got_subcommand("shell")) {
        status = runShell(session, socketName, args.timeoutMs, output);
    } else if (app.got_subcommand("sync")) {
        status = runSync(syncArgs, socketName, args.timeoutMs, output);
    } else {
        status = session.connect(socketName, true);
        if (status == ExitSuccess) {
            status = runServiceCommand(app, args, output, session);
        }
    }
    if (Output::broken()) {
        std::fprintf(stderr, "akvo-lipsync: %s\n", Output::whyBroken().c_str());
        return ExitOtherFailure;
    }
    return status;
}
