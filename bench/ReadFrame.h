#ifndef AKVO_BENCH_READFRAME_H
#define AKVO_BENCH_READFRAME_H

#include <cstddef>
#include <cstring>
#include <unistd.h>

namespace akvo {
namespace bench {

// Reads like the text protocol does, 511 bytes at a time into `frame`, until
// the two line feeds; returns the frame's size, or 0 if the link failed or
// `capacity` was too small. The marker is looked for from the last byte
// read before, with memchr: glibc's memmem takes about eight instructions a
// byte for a needle this short.
inline size_t readFrame(int fd, char* frame, size_t capacity)
{
    size_t used = 0;
    while (used + 511 <= capacity) {
        const ssize_t count = read(fd, frame + used, 511);
        if (count <= 0) {
            return 0;
        }
        const char* at = frame + (used > 0 ? used - 1 : 0);
        used += static_cast<size_t>(count);
        const char* const end = frame + used;
        while ((at = static_cast<const char*>(std::memchr(at, '\n', static_cast<size_t>(end - at)))) !=
                   nullptr &&
               at + 1 < end) {
            if (at[1] == '\n') {
                return used;
            }
            ++at;
        }
    }
    return 0;
}

} // namespace bench
} // namespace akvo

#endif
