// akvo-lipsync: talks to the audio engine's lip-sync service through the
// library, for people and scripts working without the media application.

#include "CommandLine.h"
#include "Commands.h"

int main(int argc, char** argv)
{
    using namespace velmo::kvo::cli;

    std::string socketName = velmo::kvo::lipsyncapi::Service::defaultLipsyncSocketName;
    bool json = false;
    CommandArgs args;

    CLI::App app("Client of the audio engine's lip-sync service.\n"
                 "Exit status: 0 success, 1 other failure, 2 usage, 3 cannot connect, 4 invalid parameter,\n"
                 "5 bad state, 6 transport error, 7 server error, 8 engine not in a call.",
                 "akvo-lipsync");
    app.add_option("--socket", socketName, "Path of the engine's lip-sync socket")->capture_default_str();
    app.add_flag("--json", json,
                 "Print one JSON object per line: command, code (the library's result code, or the exit "
                 "status for what the tool answers itself), result, then the values; timestamps are "
                 "strings of decimal digits, which readers that hold numbers in doubles keep whole");
    app.set_version_flag("--version", std::string("akvo-lipsync ") + AKVO_VERSION);
    app.require_subcommand(1);
    addServiceCommands(app, args);
    app.add_subcommand("shell", "Read commands from standard input, one per line, over one connection "
                                "(the commands above plus connect [PATH], disconnect, help and quit), "
                                "with a prompt, line editing and history on a terminal")
        ->footer(shellExitStatus);
    if (const std::optional<int> status = velmo::kvo::tools::parseCommandLine(app, argc, argv)) {
        return *status;
    }

    const Output output(json);
    if (app.got_subcommand("shell")) {
        return runShell(socketName, output);
    }
    Session session(output);
    const int connected = session.connect(socketName, true);
    if (connected != ExitSuccess) {
        return connected;
    }
    const int status = runServiceCommand(app, args, output, session);
    session.disconnect(true);
    return status;
}
