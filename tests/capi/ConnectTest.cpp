#include "CInterface.h"
#include "ChildProcess.h"
#include "FdCount.h"
#include "ResultTexts.h"
#include "StderrCapture.h"
#include "TempDir.h"
#include "UnixSocket.h"

#include <gtest/gtest.h>

#include <cerrno>

using akvo::test::newHandle;
using akvo::test::outcome;
using akvo::test::succeeded;

namespace {

// Listens at `path`, whose 108th byte fills sun_path without a terminator.
int listeningAt(const std::string& path, int backlog)
{
    const int fd = akvo::test::listeningUnixSocket(path, backlog);
    EXPECT_LE(0, fd) << path;
    return fd;
}

TEST(CInterfaceConnect, NamesThatAUnixAddressCannotHoldAreRefusedBeforeAnythingIsDone)
{
    const akvo::test::TempDir folder;
    const std::string fits = folder.path + "/" + std::string(106 - folder.path.size(), 'n');
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
    const akvo::test::TempDir folder;
    const std::string path = folder.file("engine");
    const int listener = listeningAt(path, 0);
    const int queued = akvo::test::connectedUnixSocket(path);
    const std::string result = akvo::test::cannotConnectText(path, EAGAIN);
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
