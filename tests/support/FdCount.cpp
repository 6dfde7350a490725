#include "FdCount.h"

#include <dirent.h>

namespace akvo {
namespace test {

int openDescriptorCount()
{
    DIR* dir = opendir("/proc/self/fd");
    if (dir == nullptr) {
        return -1;
    }
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
