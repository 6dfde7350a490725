#ifndef AKVO_TESTS_COMMS_TEMPDIR_H
#define AKVO_TESTS_COMMS_TEMPDIR_H

#include <string>

namespace akvo {
namespace test {

// A fresh directory under /tmp, removed with everything in it on destruction,
// so that socket names never collide between test binaries run in parallel.
class TempDir
{
public:
    TempDir();
    ~TempDir();

    const std::string& path() const { return _path; }
    std::string file(const std::string& name) const { return _path + "/" + name; }

    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

private:
    std::string _path;
};

} // namespace test
} // namespace akvo

#endif
