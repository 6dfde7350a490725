#include "Commands.h"

#include "CommandLine.h"
#include "ShellInput.h"

namespace velmo {
namespace kvo {
namespace cli {

const char* const exitStatusHelp =
    "Exit status: 0 success, 1 other failure (standard output could not be written, among others),\n"
    "2 usage, 3 cannot connect, 4 invalid parameter, 5 bad state, 6 transport error, 7 server error,\n"
    "8 engine not in a call, 9 no answer within --timeout-ms.";

const char* const shellExitStatus =
    "The shell exits with the status of the last line it ran: its command's, 2 for a line that is no "
    "command, 0 when none ran; quit and the end of input keep it. Ctrl-C at the prompt clears the line.";

void addTimeoutOption(CLI::App& app, CommandArgs& args)
{
    app.add_option("--timeout-ms", args.timeoutMs,
                   "Give up on a call that waits longer than MS milliseconds for the engine (each sample "
                   "of timestamps is a call): it fails with code 1100 and exit status 9, and the "
                   "connection is closed (in the shell, connect again). 0, the default, waits as long as "
                   "the engine takes")
        ->type_name("MS")
        ->transform(tools::unsignedNumber<unsigned int>());
    app.fallthrough();
}

void addServiceCommands(CLI::App& app, CommandArgs& args)
{
    const CLI::Validator u64 = tools::unsignedNumber<unsigned long long>();
    const CLI::Validator u32 = tools::unsignedNumber<unsigned int>();
    app.add_subcommand("caps", "Show the delay margins the engine supports");
    CLI::App* setMargin = app.add_subcommand("set-margin", "Set the audio delay margin (ms)");
    setMargin->add_option("MS", args.delayMs, "Margin in milliseconds: 0 to 100 in steps of 20")
        ->required()
        ->transform(u64);
    app.add_subcommand("get-margin", "Show the last margin the engine accepted from this process (kept "
                                     "by the library, the engine is not asked: 0 unless set-margin "
                                     "succeeded earlier in the same shell)");
    CLI::App* timestamps = app.add_subcommand("timestamps", "Read the audio path's timestamps");
    timestamps
        ->add_option("--count", args.count,
                     "Number of samples; 1 by default, and with --watch until interrupted, as with --count 0")
        ->transform(u32);
    timestamps->add_option("--interval-ms", args.intervalMs, "Pause between samples in milliseconds")
        ->transform(u32);
    timestamps->add_flag("--watch", args.watch,
                         "Keep sampling until interrupted (Ctrl-C) or --count samples, show latency, "
                         "network delay and depth live on a terminal, and end with their least, mean and "
                         "greatest values");
    timestamps->add_flag("--csv", args.csv,
                         "Print a header and one comma-separated row per sample, failures on standard error");
    CLI::App* video = app.add_subcommand("video-ts", "Hand over video timestamps");
    video->add_option("CAP", args.capture, "Capture timestamp (NTP 64-bit)")->required()->transform(u64);
    video->add_option("RDR", args.rendering, "Rendering timestamp (NTP 64-bit)")->required()->transform(u64);
    video->add_option("RCV", args.receiving, "Receiving timestamp (NTP 64-bit)")->required()->transform(u64);
    video->add_option("DEPTH", args.depth, "Jitter buffer depth")->required()->transform(u64);
}

int runServiceCommand(const CLI::App& app, const CommandArgs& args, const Output& output, Session& session)
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
        if (args.csv && output.json()) {
            output.report("timestamps", ExitUsage, "--csv and --json exclude each other");
            return ExitUsage;
        }
        const bool counted = app.get_subcommand("timestamps")->count("--count") > 0;
        return session.timestamps(counted || !args.watch ? args.count : 0, args.intervalMs, args.watch,
                                  args.csv);
    }
    if (app.got_subcommand("video-ts")) {
        return session.videoTimestamps({args.capture, args.rendering, args.receiving, args.depth});
    }
    return -1;
}

int runShell(Session& session, const std::string& socketName, unsigned int timeoutMs, const Output& output)
{
    CommandArgs args;
    std::string connectPath;
    CLI::App shell("Shell commands");
    shell.footer(shellExitStatus);
    shell.require_subcommand(1);
    addTimeoutOption(shell, args);
    addServiceCommands(shell, args);
    shell.add_subcommand("connect", "Connect to the engine")->add_option("PATH", connectPath, "Socket path");
    shell.add_subcommand("disconnect", "Disconnect from the engine");
    shell.add_subcommand("help", "Show the commands");
    shell.add_subcommand("quit", "Leave the shell");

    int status = ExitSuccess;
    std::string line;
    ShellInput input;
    for (ShellInput::Read read; !Output::broken() && (read = input.next(line)) != ShellInput::Read::End;) {
        if (read == ShellInput::Read::TooLong) {
            output.report("shell", ExitUsage,
                          "line longer than " + std::to_string(maxLineBytes) + " bytes, skipped");
            status = ExitUsage;
            continue;
        }
        if (line.find_first_not_of(" \t\r") == std::string::npos ||
            line[line.find_first_not_of(" \t")] == '#') {
            continue;
        }
        const size_t start = line.find_first_not_of(" \t");
        const std::string word = line.substr(start, line.find_first_of(" \t\r", start) - start);
        if (word[0] != '-' &&
            shell.get_subcommands([&word](CLI::App* command) { return command->check_name(word); }).empty()) {
            output.report(line, ExitUsage, "unknown command \"" + word + "\"; help lists the commands");
            status = ExitUsage;
            continue;
        }
        args = CommandArgs();
        args.timeoutMs = timeoutMs;
        connectPath = socketName;
        bool help = false;
        try {
            shell.parse(line, false);
            help = shell.got_subcommand("help");
        } catch (const CLI::CallForHelp&) {
            help = true;
        } catch (const CLI::ParseError& error) {
            output.report(line, ExitUsage, error.what());
            status = ExitUsage;
            continue;
        }
        if (help) {
            // Once a line is parsed, help() would describe its command alone.
            shell.clear();
            std::string text = shell.help();
            text += text.back() == '\n' ? "" : "\n";
            // In JSON too every line is an object.
            if (output.json()) {
                output.report("help", ExitSuccess, text);
            } else {
                output.write(text);
            }
            status = ExitSuccess;
            continue;
        }
        if (shell.got_subcommand("quit")) {
            break;
        }
        session.setTimeout(args.timeoutMs);
        if (shell.got_subcommand("connect")) {
            status = session.connect(connectPath, false);
        } else if (shell.got_subcommand("disconnect")) {
            status = session.disconnect(false);
        } else {
            status = runServiceCommand(shell, args, output, session);
        }
    }
    return status;
}

} // namespace cli
} // namespace kvo
} // namespace velmo
