#ifndef VELMO_KVO_TOOLS_COMMANDLINE_H
#define VELMO_KVO_TOOLS_COMMANDLINE_H

// Header-only so that what needs no CLI11, such as the log decoder, builds
// where CLI11 is missing.
#include "ExitStatus.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <optional>
#include <string>

namespace velmo {
namespace kvo {
namespace tools {

// Prints "PROGRAM: REASON" on one line of standard error, then where to read
// about the options; returns usageError.
inline int reportUsageError(const CLI::App& app, std::string reason)
{
    for (char& c : reason) {
        c = c == '\n' ? ' ' : c;
    }
    std::cerr << app.get_name() << ": " << reason << "\nRun with --help for more information." << std::endl;
    return usageError;
}

// Reads the command line into `app`. Returns an exit status when the program
// should stop at once: 0 after --help or --version (printed on standard
// output), usageError after a reported error.
inline std::optional<int> parseCommandLine(CLI::App& app, int argc, char** argv)
{
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& success) {
        return app.exit(success);
    } catch (const CLI::ParseError& error) {
        return reportUsageError(app, error.what());
    }
    return std::nullopt;
}

} // namespace tools
} // namespace kvo
} // namespace velmo

#endif
