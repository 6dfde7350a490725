#ifndef AKVO_TESTS_SUPPORT_TEMPDIR_H
#define AKVO_TESTS_SUPPORT_TEMPDIR_H

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace akvo {
namespace test {

// A fresh folder for socket names and files, so that parallel test binaries
// never collide; removed again with all that was left in it.
struct TempDir
{
    TempDir() : path("/tmp/akvo-test-XXXXXX") { mkdtemp(&path[0]); }
    ~TempDir()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string file(const std::string& name) const { return path + "/" + name; }

    std::string path;
};

} // namespace test
} // namespace akvo

#endif
