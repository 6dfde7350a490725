#ifndef VELMO_KVO_TOOLS_COMMANDLINE_H
#define VELMO_KVO_TOOLS_COMMANDLINE_H

// Header-only so that what needs no CLI11, such as the log decoder, builds
// where CLI11 is missing.
#include "ExitStatus.h"

#include <CLI/CLI.hpp>

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <limits>
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

// CLI11 reads unsigned numbers with strtoull, which takes "-1" for the largest
// value, turns every number above 2^64-1 into 2^64-1 without a word, reads
// "-4294967295" as 1 for a 32-bit option, and "040" as 32. A number is decimal
// digits that fit its type; it goes on to CLI11 without its leading zeros.
template <typename Number>
CLI::Validator unsignedNumber()
{
    constexpr unsigned long long largest = std::numeric_limits<Number>::max();
    const std::string expected = "expected a number from 0 to " + std::to_string(largest) + ", got ";
    return CLI::Validator(
        [expected](std::string& text) {
            char* end = nullptr;
            errno = 0;
            const unsigned long long value = std::strtoull(text.c_str(), &end, 10);
            const bool fits = !text.empty() && std::isdigit(static_cast<unsigned char>(text[0])) &&
                              *end == '\0' && errno != ERANGE && value <= largest;
            if (!fits) {
                return expected + text;
            }
            text = std::to_string(value);
            return std::string();
        },
        "");
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
