#ifndef VELMO_KVO_CLI_SHELLINPUT_H
#define VELMO_KVO_CLI_SHELLINPUT_H

#include <cstddef>
#include <string>

namespace velmo {
namespace kvo {
namespace cli {

// Splitting and parsing a line take time quadratic in its number of words: a
// line of millions would hold the shell for minutes.
constexpr std::size_t maxLineBytes = 64 * 1024;

// The shell's lines from standard input. When standard input and output are
// a terminal, libedit reads them with a prompt, line editing and the history
// of the session; otherwise, from a script or a pipe, they are read as they
// come.
class ShellInput
{
public:
    enum class Read
    {
        Line,
        TooLong, // the line was read to its end and dropped
        End
    };

    ShellInput();

    Read next(std::string& line);

private:
    Read fromTerminal(std::string& line);
    Read fromStream(std::string& line);

    bool _terminal;
};

} // namespace cli
} // namespace kvo
} // namespace velmo

#endif
