#include "Commands.h"

#include "ShellInput.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <limits>

namespace velmo {
namespace kvo {
namespace cli {

namespace {

// CLI11 reads unsigned numbers with strtoull, which takes "-1" for the largest
// value, turns every number above 2^64-1 into 2^64-1 without a word, reads
// "-4294967295" as 1 for a 32-bit option, and "040" as 32. A number is decimal
// digits that fit its type; it goes on to CLI11 without its leading zeros.
template <typename Unsigned>
CLI::Validator unsignedNumber()
{
    const std::string expected =
        "expected a number from 0 to " + std::to_string(std::numeric_limits<Unsigned>::max()) + ", got ";
    return CLI::Validator(
        [expected](std::string& text) {
            char* end = nullptr;
            errno = 0;
            const unsigned long long value = std::strtoull(text.c_str(), &end, 10);
            const bool fits = !text.empty() && std::isdigit(static_cast<unsigned char>(text[0])) &&
                              *end == '\0' && errno != ERANGE &&
                              value <= std::numeric_limits<Unsigned>::max();
            if (!fits) {
                return expected + text;
            }
            text = std::to_string(value);
            return std::string();
        },
        "");
}

} // namespace

const char* const shellExitStatus =
    "The shell exits with the status of the last line it ran: its command's, 2 for a line that is no "
    "command, 0 when none ran; quit and the end of input keep it.";

void addServiceCommands(CLI::App& app, CommandArgs& args)
{
    const CLI::Validator u64 = unsignedNumber<unsigned long long>();
    const CLI::Validator u32 = unsignedNumber<unsigned int>();
    app.add_subcommand("caps", "Show the delay margins the engine supports");
    CLI::App* setMargin = app.add_subcommand("set-margin", "Set the audio delay margin (ms)");
    setMargin->add_option("MS", args.delayMs, "Margin in milliseconds: 0 to 100 in steps of 20")
        ->required()
        ->transform(u64);
    app.add_subcommand("get-margin", "Show the last margin the engine accepted from this process (kept "
                                     "by the library, the engine is not asked: 0 unless set-margin "
                                     "succeeded earlier in the same shell)");
    CLI::App* timestamps = app.add_subcommand("timestamps", "Read the audio path's timestamps");
    timestamps->add_option("--count", args.count, "Number of samples (0 with --watch: until interrupted)")
        ->transform(u32);
    timestamps->add_option("--interval-ms", args.intervalMs, "Pause between samples in milliseconds")
        ->transform(u32);
    timestamps->add_flag("--watch", args.watch,
                         "Keep sampling, show latency, network delay and depth live on a terminal, and "
                         "end with their least, mean and greatest values");
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
        return session.timestamps(args.count, args.intervalMs, args.watch, args.csv);
    }
    if (app.got_subcommand("video-ts")) {
        return session.videoTimestamps({args.capture, args.rendering, args.receiving, args.depth});
    }
    return -1;
}

int runShell(const std::string& socketName, const Output& output)
{
    Session session(output);
    CommandArgs args;
    std::string connectPath;
    CLI::App shell("Shell commands");
    shell.footer(shellExitStatus);
    shell.require_subcommand(1);
    addServiceCommands(shell, args);
    shell.add_subcommand("connect", "Connect to the engine")->add_option("PATH", connectPath, "Socket path");
    shell.add_subcommand("disconnect", "Disconnect from the engine");
    shell.add_subcommand("help", "Show the commands");
    shell.add_subcommand("quit", "Leave the shell");

    int status = ExitSuccess;
    std::string line;
    ShellInput input;
    for (ShellInput::Read read; (read = input.next(line)) != ShellInput::Read::End;) {
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
        args = CommandArgs();
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
                std::cout << text << std::flush;
            }
            status = ExitSuccess;
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
            status = runServiceCommand(shell, args, output, session);
        }
    }
    return status;
}

} // namespace cli
} // namespace kvo
} // namespace velmo
