#include "Commands.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <limits>

namespace akvo {
namespace cli {

namespace {

// CLI11 reads unsigned numbers with strtoull, which takes "-1" for the largest
// value, turns every number above 2^64-1 into 2^64-1 without a word, and reads
// "-4294967295" as 1 for a 32-bit option. A number must begin with a digit and
// fit its type.
template <typename Unsigned>
CLI::Validator unsignedNumber()
{
    const std::string expected =
        "expected a number from 0 to " + std::to_string(std::numeric_limits<Unsigned>::max()) + ", got ";
    return CLI::Validator(
        [expected](std::string& text) {
            char* end = nullptr;
            errno = 0;
            const unsigned long long value = std::strtoull(text.c_str(), &end, 0);
            const bool fits = !text.empty() && std::isdigit(static_cast<unsigned char>(text[0])) &&
                              *end == '\0' && errno != ERANGE &&
                              value <= std::numeric_limits<Unsigned>::max();
            return fits ? std::string() : expected + text;
        },
        "");
}

// Splitting and parsing a line take time quadratic in its number of words: a
// line of millions would hold the shell for minutes.
constexpr std::size_t maxLineBytes = 64 * 1024;

enum class LineRead
{
    Line,
    TooLong, // the line was read to its end and dropped
    End
};

LineRead readLine(std::istream& in, std::string& line)
{
    line.clear();
    std::streambuf& input = *in.rdbuf();
    int c;
    while ((c = input.sbumpc()) != std::char_traits<char>::eof() && c != '\n') {
        if (line.size() <= maxLineBytes) {
            line += static_cast<char>(c);
        }
    }
    if (line.size() > maxLineBytes) {
        return LineRead::TooLong;
    }
    return c == std::char_traits<char>::eof() && line.empty() ? LineRead::End : LineRead::Line;
}

} // namespace

void addServiceCommands(CLI::App& app, CommandArgs& args)
{
    const CLI::Validator u64 = unsignedNumber<unsigned long long>();
    const CLI::Validator u32 = unsignedNumber<unsigned int>();
    app.add_subcommand("caps", "Show the delay margins the engine supports");
    CLI::App* setMargin = app.add_subcommand("set-margin", "Set the audio delay margin (ms)");
    setMargin->add_option("MS", args.delayMs, "Margin in milliseconds: 0 to 100 in steps of 20")
        ->required()
        ->check(u64);
    app.add_subcommand("get-margin", "Show the last margin the engine accepted from this process (kept "
                                     "by the library, the engine is not asked: 0 unless set-margin "
                                     "succeeded earlier in the same shell)");
    CLI::App* timestamps = app.add_subcommand("timestamps", "Read the audio path's timestamps");
    timestamps->add_option("--count", args.count, "Number of samples (0 with --watch: until interrupted)")
        ->check(u32);
    timestamps->add_option("--interval-ms", args.intervalMs, "Pause between samples in milliseconds")
        ->check(u32);
    timestamps->add_flag("--watch", args.watch,
                         "Keep sampling and show latency, network delay and depth live");
    CLI::App* video = app.add_subcommand("video-ts", "Hand over video timestamps");
    video->add_option("CAP", args.capture, "Capture timestamp (NTP 64-bit)")->required()->check(u64);
    video->add_option("RDR", args.rendering, "Rendering timestamp (NTP 64-bit)")->required()->check(u64);
    video->add_option("RCV", args.receiving, "Receiving timestamp (NTP 64-bit)")->required()->check(u64);
    video->add_option("DEPTH", args.depth, "Jitter buffer depth")->required()->check(u64);
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
    for (LineRead read; (read = readLine(in, line)) != LineRead::End;) {
        if (read == LineRead::TooLong) {
            output.error("shell", "line longer than " + std::to_string(maxLineBytes) + " bytes, skipped");
            status = ExitUsage;
            continue;
        }
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
