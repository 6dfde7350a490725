#include "velmo/utilities/log/StandardErrorLine.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <sys/uio.h>
#include <unistd.h>

namespace velmo {
namespace utilities {

namespace {

// Goes on after a partial write or an interruption; stops at any other error.
// A single piece goes with write(), which the kernel takes a shorter way than
// writev().
void writeWhole(int fd, iovec* pieces, int count)
{
    for (;;) {
        while (count > 0 && pieces->iov_len == 0) {
            ++pieces;
            --count;
        }
        if (count == 0) {
            return;
        }
        ssize_t written =
            count == 1 ? write(fd, pieces->iov_base, pieces->iov_len) : writev(fd, pieces, count);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return;
        }
        for (; count > 0 && static_cast<size_t>(written) >= pieces->iov_len; ++pieces, --count) {
            written -= static_cast<ssize_t>(pieces->iov_len);
        }
        if (count > 0) {
            pieces->iov_base = static_cast<char*>(pieces->iov_base) + written;
            pieces->iov_len -= static_cast<size_t>(written);
        }
    }
}

// The text of a "%s" format, which is how every line of the library's own
// log comes: it goes out as it stands. Null for any other format.
const char* plainText(const char* format, va_list args)
{
    if (std::strcmp(format, "%s") != 0) {
        return nullptr;
    }
    va_list copy;
    va_copy(copy, args);
    const char* text = va_arg(copy, const char*);
    va_end(copy);
    return text;
}

char* copy(char* out, const char* text, size_t size)
{
    std::memcpy(out, text, size);
    return out + size;
}

} // namespace

void writeStandardErrorLine(const char* letter, const char* tag, const char* format, va_list args)
{
    char formatted[1024];
    std::unique_ptr<char[]> large;
    const char* message = plainText(format, args);
    size_t size = 0;
    if (message != nullptr) {
        size = std::strlen(message);
    } else {
        va_list copy;
        va_copy(copy, args);
        const int length = std::vsnprintf(formatted, sizeof(formatted), format, copy);
        va_end(copy);
        message = formatted;
        size = length < 0 ? 0 : static_cast<size_t>(length);
        if (size >= sizeof(formatted)) {
            large.reset(new (std::nothrow) char[size + 1]);
            if (large != nullptr) {
                std::vsnprintf(large.get(), size + 1, format, args);
                message = large.get();
            } else {
                size = sizeof(formatted) - 1;
            }
        }
    }
    // A line that fits goes out of one buffer; a longer one in pieces,
    // still with one call.
    const size_t letterSize = std::strlen(letter);
    const size_t tagSize = std::strlen(tag);
    char line[1024];
    if (letterSize + tagSize + size + 3 <= sizeof(line)) {
        char* out = copy(line, letter, letterSize);
        *out++ = '/';
        out = copy(out, tag, tagSize);
        *out++ = ' ';
        out = copy(out, message, size);
        *out++ = '\n';
        iovec whole = {line, static_cast<size_t>(out - line)};
        writeWhole(fileno(stderr), &whole, 1);
        return;
    }
    char separators[] = "/ \n";
    iovec pieces[] = {{const_cast<char*>(letter), letterSize}, {separators, 1},
                      {const_cast<char*>(tag), tagSize},       {separators + 1, 1},
                      {const_cast<char*>(message), size},      {separators + 2, 1}};
    writeWhole(fileno(stderr), pieces, sizeof(pieces) / sizeof(pieces[0]));
}

} // namespace utilities
} // namespace velmo
