#include "ShellInput.h"

#include <cstdio>
#include <cstdlib>
#include <signal.h>
#include <unistd.h>

#ifdef AKVO_LINE_EDITING
#include <editline/readline.h>
#endif

namespace velmo {
namespace kvo {
namespace cli {

namespace {

volatile sig_atomic_t interrupted = 0;

extern "C" void onInterrupt(int)
{
    interrupted = 1;
}

// While it lives, Ctrl-C ends the wait for a line instead of the program:
// without SA_RESTART the read fails with EINTR and the line is dropped. A
// command that runs keeps the program's own disposition, so that Ctrl-C still
// ends one that the engine holds up.
class PromptInterrupts
{
public:
    PromptInterrupts()
    {
        interrupted = 0;
        struct sigaction action = {};
        action.sa_handler = onInterrupt;
        sigemptyset(&action.sa_mask);
        sigaction(SIGINT, &action, &_previous);
    }

    ~PromptInterrupts() { sigaction(SIGINT, &_previous, nullptr); }

    bool happened() const { return interrupted != 0; }

    PromptInterrupts(const PromptInterrupts&) = delete;
    PromptInterrupts& operator=(const PromptInterrupts&) = delete;

private:
    struct sigaction _previous;
};

} // namespace

ShellInput::ShellInput() : _terminal(isatty(STDIN_FILENO) && isatty(STDOUT_FILENO)) {}

ShellInput::Read ShellInput::next(std::string& line)
{
    line.clear();
    return _terminal ? fromTerminal(line) : fromStream(line);
}

// Built without libedit (no 32-bit libedit installs beside the 64-bit one),
// a terminal still gets the prompt, without editing or history. Ctrl-C at the
// prompt drops the line and shows a new prompt, as shells do.
ShellInput::Read ShellInput::fromTerminal(std::string& line)
{
    for (;;) {
        const PromptInterrupts interrupts;
#ifdef AKVO_LINE_EDITING
        char* text = readline("akvo> ");
        if (text == nullptr && interrupts.happened()) {
            // In raw mode the terminal does not echo the key itself.
            std::printf("^C\n");
            continue;
        }
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
        const Read read = fromStream(line);
        if (!interrupts.happened()) {
            return read;
        }
        std::clearerr(stdin);
        line.clear();
        std::printf("\n");
#endif
    }
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
