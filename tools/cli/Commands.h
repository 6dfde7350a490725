#ifndef VELMO_KVO_CLI_COMMANDS_H
#define VELMO_KVO_CLI_COMMANDS_H

#include "Session.h"

#include <CLI/CLI.hpp>

#include <string>

namespace velmo {
namespace kvo {
namespace cli {

// The values of the command that was parsed last; the same definitions serve
// the command line and the lines of the shell.
struct CommandArgs
{
    unsigned int timeoutMs = 0;
    unsigned long long delayMs = 0;
    unsigned int count = 1;
    unsigned int intervalMs = 1000;
    bool watch = false;
    bool csv = false;
    unsigned long long capture = 0;
    unsigned long long rendering = 0;
    unsigned long long receiving = 0;
    unsigned long long depth = 0;
};

// The exit statuses, for the help texts.
extern const char* const exitStatusHelp;

// Adds --timeout-ms to `app`, and to its commands, which take their parent's options.
void addTimeoutOption(CLI::App& app, CommandArgs& args);

// Adds caps, set-margin, get-margin, timestamps and video-ts to `app`.
void addServiceCommands(CLI::App& app, CommandArgs& args);

// Runs the service command that `app` parsed; returns -1 if none was given.
int runServiceCommand(const CLI::App& app, const CommandArgs& args, const Output& output, Session& session);

// How the shell chooses its exit status, for the help texts.
extern const char* const shellExitStatus;

// Reads commands from standard input line by line until its end or "quit",
// each line's calls bounded by `timeoutMs` unless it gives its own; returns
// the exit status that shellExitStatus describes.
int runShell(Session& session, const std::string& socketName, unsigned int timeoutMs, const Output& output);

} // namespace cli
} // namespace kvo
} // namespace velmo

#endif
