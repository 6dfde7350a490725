#include "OwnedSocket.h"
#include "TempDir.h"
#include "UnixSocket.h"

#include <gtest/gtest.h>

#include <fstream>
#include <optional>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using velmo::kvo::tools::OwnedSocket;
using Outcome = OwnedSocket::Outcome;

namespace {

// A fresh folder for the path, removed with all in it; the descriptors of
// what occupies the path are closed at the end.
class SocketFolder : public ::testing::Test
{
public:
    ~SocketFolder() override
    {
        for (const int fd : fds) {
            close(fd);
        }
    }

    int keep(int fd) { return fds.emplace_back(fd); }

    // Connects `fd` to the path; 0 or the error.
    int reach(int fd) const
    {
        const sockaddr_un address = akvo::test::unixAddress(path);
        return connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 ? 0 : errno;
    }

    // A stream socket listening at the path, its backlog full when `full`.
    void listening(bool full)
    {
        ASSERT_EQ(0, listen(keep(akvo::test::boundUnixSocket(SOCK_STREAM, path)), 0));
        // With no room for pending connections, one that nobody accepts fills the backlog.
        if (full) {
            ASSERT_EQ(0, reach(keep(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0))));
            ASSERT_EQ(EAGAIN, reach(keep(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0))));
        }
    }

    akvo::test::TempDir folder;
    std::string path = folder.file("socket");
    std::vector<int> fds;
};

struct PathCase
{
    const char* name;
    int type;
    void (*occupy)(SocketFolder&); // what lies at the path first
    const char* reason;            // with PATH for the path; none when the socket is bound
};

class OwnedSocketPath : public SocketFolder, public ::testing::WithParamInterface<PathCase>
{
};

TEST_P(OwnedSocketPath, IsTakenOnlyWhenFreeOrStaleAndFreedAgain)
{
    ASSERT_NO_FATAL_FAILURE(GetParam().occupy(*this));
    const bool existed = access(path.c_str(), F_OK) == 0;
    std::optional<OwnedSocket> owned(std::in_place);
    std::string error;
    const Outcome outcome = owned->bind(GetParam().type, path, error);
    if (GetParam().reason == nullptr) {
        ASSERT_EQ(Outcome::Bound, outcome) << error;
        ASSERT_TRUE(GetParam().type == SOCK_DGRAM || listen(owned->fd(), 1) == 0);
        EXPECT_EQ(0, reach(keep(socket(AF_UNIX, GetParam().type, 0))))
            << "the socket file is not the owner's";
        owned.reset();
        EXPECT_NE(0, access(path.c_str(), F_OK)) << "the socket file outlived its owner";
        return;
    }
    std::string reason = GetParam().reason;
    EXPECT_EQ(Outcome::Refused, outcome);
    EXPECT_EQ(reason.replace(reason.find("PATH"), 4, path), error);
    EXPECT_EQ(-1, owned->fd());
    owned.reset();
    EXPECT_EQ(existed, access(path.c_str(), F_OK) == 0) << "the occupant was not left in place";
}

const char* const inUse = "path in use by another process: PATH";
const char* const notASocket = "path exists and is not a socket: PATH";
const char* const badLength = "socket path must be 1 to 107 bytes long: PATH";

INSTANTIATE_TEST_SUITE_P(
    Occupants, OwnedSocketPath,
    ::testing::Values(
        PathCase{"Free", SOCK_DGRAM, [](SocketFolder&) {}, nullptr},
        PathCase{"StaleStream", SOCK_STREAM,
                 [](SocketFolder& f) { close(akvo::test::boundUnixSocket(SOCK_STREAM, f.path)); }, nullptr},
        PathCase{"StaleDatagram", SOCK_DGRAM,
                 [](SocketFolder& f) { close(akvo::test::boundUnixSocket(SOCK_DGRAM, f.path)); }, nullptr},
        PathCase{"LiveStream", SOCK_STREAM, [](SocketFolder& f) { f.listening(false); }, inUse},
        PathCase{"StreamWithAFullBacklog", SOCK_STREAM, [](SocketFolder& f) { f.listening(true); }, inUse},
        // A probe of the other type fails with EPROTOTYPE.
        PathCase{"StreamForADatagram", SOCK_DGRAM, [](SocketFolder& f) { f.listening(false); }, inUse},
        PathCase{"LiveDatagram", SOCK_DGRAM,
                 [](SocketFolder& f) { f.keep(akvo::test::boundUnixSocket(SOCK_DGRAM, f.path)); }, inUse},
        PathCase{"DatagramForAStream", SOCK_STREAM,
                 [](SocketFolder& f) { f.keep(akvo::test::boundUnixSocket(SOCK_DGRAM, f.path)); }, inUse},
        PathCase{"File", SOCK_STREAM, [](SocketFolder& f) { std::ofstream(f.path) << "data"; }, notASocket},
        PathCase{"Folder", SOCK_DGRAM, [](SocketFolder& f) { mkdir(f.path.c_str(), 0700); }, notASocket},
        PathCase{"MissingFolder", SOCK_DGRAM,
                 [](SocketFolder& f) { f.path = f.folder.file("missing/socket"); },
                 "cannot bind PATH: No such file or directory"},
        PathCase{"LongPath", SOCK_STREAM, [](SocketFolder& f) { f.path += std::string(100, 'p'); },
                 badLength},
        PathCase{"EmptyPath", SOCK_DGRAM, [](SocketFolder& f) { f.path.clear(); }, badLength},
        // Connecting to a datagram socket that has a peer, here itself, is refused (EPERM).
        PathCase{"DatagramWithAPeer", SOCK_DGRAM,
                 [](SocketFolder& f) { f.reach(f.keep(akvo::test::boundUnixSocket(SOCK_DGRAM, f.path))); },
                 "cannot check PATH: Operation not permitted"}),
    [](const ::testing::TestParamInfo<PathCase>& info) { return std::string(info.param.name); });

TEST_F(SocketFolder, TheOwnerLeavesAFileThatIsNoLongerItsOwn)
{
    std::optional<OwnedSocket> owned(std::in_place);
    std::string error;
    ASSERT_EQ(Outcome::Bound, owned->bind(SOCK_DGRAM, path, error)) << error;
    unlink(path.c_str());
    std::ofstream(path) << "successor";
    owned.reset();
    std::ifstream successor(path);
    EXPECT_EQ("successor", std::string(std::istreambuf_iterator<char>(successor), {}));
}

} // namespace
