#include "TempDir.h"

#include <dirent.h>
#include <stdexcept>
#include <string.h>
#include <unistd.h>
#include <vector>

namespace akvo {
namespace test {

TempDir::TempDir()
{
    std::vector<char> name(std::begin("/tmp/akvo-comms-XXXXXX"), std::end("/tmp/akvo-comms-XXXXXX"));
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error(std::string("mkdtemp: ") + strerror(errno));
    }
    _path = name.data();
}

TempDir::~TempDir()
{
    DIR* dir = opendir(_path.c_str());
    if (dir != nullptr) {
        std::vector<std::string> entries;
        while (const dirent* entry = readdir(dir)) {
            const std::string entryName = entry->d_name;
            if (entryName != "." && entryName != "..") {
                entries.push_back(file(entryName));
            }
        }
        closedir(dir);
        for (const std::string& entry : entries) {
            unlink(entry.c_str());
        }
    }
    rmdir(_path.c_str());
}

} // namespace test
} // namespace akvo
