#include "Commands.h"

#include <iostream>

namespace akvo {
namespace cli {

void addServiceCommands(CLI::App& app, CommandArgs& args)
{
    app.add_subcommand("caps", "Show the delay margins the engine supports");
    CLI::App* setMargin = app.add_subcommand("set-margin", "Set the audio delay margin (ms)");
    setMargin->add_option("MS", args.delayMs, "Margin in milliseconds: 0 to 100 in steps of 20")->required();
    app.add_subcommand("get-margin", "Show the last margin the engine accepted");
    CLI::App* timestamps = app.add_subcommand("timestamps", "Read the audio path's timestamps");
    timestamps->add_option("--count", args.count, "Number of samples (0 with --watch: until interrupted)");
    timestamps->add_option("--interval-ms", args.intervalMs, "Pause between samples in milliseconds");
    timestamps->add_flag("--watch", args.watch,
                         "Keep sampling and show latency, network delay and depth live");
    CLI::App* video = app.add_subcommand("video-ts", "Hand over video timestamps");
    video->add_option("CAP", args.capture, "Capture timestamp (NTP 64-bit)")->required();
    video->add_option("RDR", args.rendering, "Rendering timestamp (NTP 64-bit)")->required();
    video->add_option("RCV", args.receiving, "Receiving timestamp (NTP 64-bit)")->required();
    video->add_option("DEPTH", args.depth, "Jitter buffer depth")->required();
}

int runServiceCommand(const CLI::App& app, const CommandArgs& args, Session& session)
{
    if (app.got_subcommand("caps")) {
        return session.caps();
    }
    if (app.got_subcommand("set-margin")) {
        return session.setMargin(args.delayMs);
    }
    if (app.got_subcommand("get-margin")) {
        return session.getMargin();
    }
    if (app.got_subcommand("timestamps")) {
        return session.timestamps(args.count, args.intervalMs, args.watch);
    }
    if (app.got_subcommand("video-ts")) {
        return session.videoTimestamps({args.capture, args.rendering, args.receiving, args.depth});
    }
    return -1;
}

int runShell(std::istream& in, const std::string& socketName, const Output& output)
{
    Session session(output);
    CommandArgs args;
    std::string connectPath;
    CLI::App shell("Shell commands");
    shell.require_subcommand(1);
    addServiceCommands(shell, args);
    shell.add_subcommand("connect", "Connect to the engine")->add_option("PATH", connectPath, "Socket path");
    shell.add_subcommand("disconnect", "Disconnect from the engine");
    shell.add_subcommand("quit", "Leave the shell");

    int status = ExitSuccess;
    std::string line;
    while (std::getline(in, line)) {
        if (line.find_first_not_of(" \t\r") == std::string::npos ||
            line[line.find_first_not_of(" \t")] == '#') {
            continue;
        }
        args = CommandArgs();
        connectPath = socketName;
        try {
            shell.parse(line, false);
        } catch (const CLI::CallForHelp&) {
            std::cout << shell.help();
            continue;
        } catch (const CLI::ParseError& error) {
            output.error(line, error.what());
            status = ExitUsage;
            continue;
        }
        if (shell.got_subcommand("quit")) {
            break;
        }
        if (shell.got_subcommand("connect")) {
            status = session.connect(connectPath, false);
        } else if (shell.got_subcommand("disconnect")) {
            status = session.disconnect(false);
        } else {
            status = runServiceCommand(shell, args, session);
        }
    }
    return status;
}

} // namespace cli
} // namespace akvo
