#ifndef AKVO_TESTS_SUPPORT_FDCOUNT_H
#define AKVO_TESTS_SUPPORT_FDCOUNT_H

#include <dirent.h>

namespace akvo {
namespace test {

// Number of descriptors the process holds, read from /proc/self/fd.
inline int openDescriptorCount()
{
    DIR* dir = opendir("/proc/self/fd");
    int count = 0;
    while (readdir(dir) != nullptr) {
        ++count;
    }
    closedir(dir);
    // ".", ".." and the descriptor of the listing itself.
    return count - 3;
}

} // namespace test
} // namespace akvo

#endif
