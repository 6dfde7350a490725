#include "ShellInput.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

#ifdef AKVO_LINE_EDITING
#include <editline/readline.h>
#endif

namespace velmo {
namespace kvo {
namespace cli {

ShellInput::ShellInput() : _terminal(isatty(STDIN_FILENO) && isatty(STDOUT_FILENO)) {}

ShellInput::Read ShellInput::next(std::string& line)
{
    line.clear();
    return _terminal ? fromTerminal(line) : fromStream(line);
}

// Built without libedit (no 32-bit libedit installs beside the 64-bit one),
// a terminal still gets the prompt, without editing or history.
ShellInput::Read ShellInput::fromTerminal(std::string& line)
{
#ifdef AKVO_LINE_EDITING
    char* text = readline("akvo> ");
    if (text == nullptr) {
        // The user's shell prompt would follow ours on the same line.
        std::printf("\n");
        return Read::End;
    }
    line = text;
    std::free(text);
    if (line.size() > maxLineBytes) {
        line.clear();
        return Read::TooLong;
    }
    if (line.find_first_not_of(" \t") != std::string::npos) {
        add_history(line.c_str());
    }
    return Read::Line;
#else
    std::printf("akvo> ");
    std::fflush(stdout);
    return fromStream(line);
#endif
}

ShellInput::Read ShellInput::fromStream(std::string& line)
{
    int c;
    while ((c = std::getchar()) != EOF && c != '\n') {
        if (line.size() <= maxLineBytes) {
            line += static_cast<char>(c);
        }
    }
    if (line.size() > maxLineBytes) {
        return Read::TooLong;
    }
    return c == EOF && line.empty() ? Read::End : Read::Line;
}

} // namespace cli
} // namespace kvo
} // namespace velmo
