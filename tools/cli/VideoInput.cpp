#include "VideoInput.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <poll.h>
#include <unistd.h>

namespace velmo {
namespace kvo {
namespace cli {

namespace {

// Longer lines cannot be two 20-digit numbers, however they are spaced out.
constexpr std::size_t longestLine = 4096;

// A decimal number that fits in 64 bits at `text`, leading blanks skipped; `end` is after it.
bool readNumber(const char* text, const char*& end, unsigned long long& value)
{
    while (*text == ' ' || *text == '\t') {
        ++text;
    }
    if (!std::isdigit(static_cast<unsigned char>(*text))) {
        return false;
    }
    char* after = nullptr;
    errno = 0;
    value = std::strtoull(text, &after, 10);
    end = after;
    return errno != ERANGE;
}

} // namespace

bool VideoInput::frameOnScreen(akvo_lipsync_sync_video& frame)
{
    char chunk[4096];
    pollfd input{STDIN_FILENO, POLLIN, 0};
    while (!_ended && poll(&input, 1, 0) > 0) {
        const ssize_t count = read(STDIN_FILENO, chunk, sizeof(chunk));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        _ended = count <= 0;
        for (ssize_t at = 0; at < count; ++at) {
            if (chunk[at] != '\n') {
                if (_partial.size() <= longestLine) {
                    _partial += chunk[at];
                }
                continue;
            }
            take(_partial);
            _partial.clear();
        }
    }
    frame = _frame;
    return _seen;
}

void VideoInput::take(const std::string& line)
{
    ++_lines;
    const std::string text = !line.empty() && line.back() == '\r' ? line.substr(0, line.size() - 1) : line;
    const char* end = text.c_str();
    unsigned long long capture = 0;
    unsigned long long rendering = 0;
    if (readNumber(end, end, capture) && readNumber(end, end, rendering) &&
        text.find_first_not_of(" \t", static_cast<std::size_t>(end - text.c_str())) == std::string::npos) {
        _frame = {capture, rendering};
        _seen = true;
        return;
    }
    std::fprintf(stderr,
                 "akvo-lipsync: sync: line %llu of standard input is not \"CAPTURE RENDERING\", skipped\n",
                 _lines);
}

} // namespace cli
} // namespace kvo
} // namespace velmo
