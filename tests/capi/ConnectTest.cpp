#include "CInterface.h"
#include "ChildProcess.h"
#include "FdCount.h"
#include "ResultTexts.h"
#include "StderrCapture.h"
#include "UnixSocket.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sys/socket.h>
#include <sys/un.h>

using akvo::test::newHandle;
using akvo::test::outcome;
using akvo::test::succeeded;

namespace {

// A fresh folder, removed again with what the test left in it.
struct Folder
{
    Folder() { mkdtemp(path); }
    ~Folder() { std::filesystem::remove_all(path); }
    char path[22] = "/tmp/akvo-capi-XXXXXX";
};

// Listens at `path` of up to 108 bytes, the last one without a terminator.
int listeningAt(const std::string& path, int backlog)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path));
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    EXPECT_EQ(0, bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address))) << path;
    EXPECT_EQ(0, listen(fd, backlog));
    return fd;
}

TEST(CInterfaceConnect, NamesThatAUnixAddressCannotHoldAreRefusedBeforeAnythingIsDone)
{
    const Folder folder;
    const std::string fits =
        std::string(folder.path) + "/" + std::string(106 - std::strlen(folder.path), 'n');
    const int longest = listeningAt(fits, 1);
    // A longer name would be cut to the first 108 bytes, which name this socket.
    const int cut = listeningAt(fits + "x", 1);
    const std::string refused = "1002 Invalid Param (Code 1002): socket_name is ";
    const akvo::test::Handle handle = newHandle();
    akvo::test::StderrCapture log;
    EXPECT_EQ(refused + "empty", outcome(akvo_lipsync_connect(handle.get(), "")));
    EXPECT_EQ(refused + "108 bytes long, more than the 107 that a Unix socket address holds",
              outcome(akvo_lipsync_connect(handle.get(), (fits + "x").c_str())));
    EXPECT_EQ(refused + "123 bytes long, more than the 107 that a Unix socket address holds",
              outcome(akvo_lipsync_connect(handle.get(), (fits + "xyyyyyyyyyyyyyyy").c_str())));
    EXPECT_EQ("", log.text());
    EXPECT_EQ(succeeded, outcome(akvo_lipsync_connect(handle.get(), fits.c_str())));
    close(longest);
    close(cut);
}

// An engine that stopped accepting leaves connections in its queue until it
// is full; then connect() would wait for good.
TEST(CInterfaceConnect, AFullQueueOfConnectionsHoldsConnectOnlyUntilTheDeadline)
{
    const Folder folder;
    const std::string path = std::string(folder.path) + "/engine";
    const int listener = listeningAt(path, 0);
    const int queued = akvo::test::connectedUnixSocket(path);
    const std::string result =
        "Cannot connect to Audio KVO (Code 1004): {Connection has failed (Code 20002): "
        "Unable to connect to " +
        path + " {" + akvo::test::errnoText(EAGAIN) + "}}";
    akvo::test::expectPassesInChild([&] {
        const akvo::test::Handle handle = newHandle();
        ASSERT_EQ(AKVO_LIPSYNC_SUCCESS, akvo_lipsync_set_deadline(handle.get(), 100));
        akvo::test::StderrCapture log;
        const int descriptors = akvo::test::openDescriptorCount();
        EXPECT_EQ("1100 Deadline exceeded (Code 1100): Not accepted within 100 ms {" + result + "}",
                  outcome(akvo_lipsync_connect(handle.get(), path.c_str())));
        EXPECT_EQ(descriptors, akvo::test::openDescriptorCount());
        EXPECT_EQ("I/AKVOLIPSYNCAPI Client is connecting with input params: lipsyncSocketName=" + path +
                      "  with result: " + result + "\n",
                  log.text());
    });
    close(queued);
    close(listener);
}

} // namespace
