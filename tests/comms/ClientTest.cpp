#include "FdCount.h"
#include "Sockets.h"
#include "TempDir.h"
#include "Texts.h"

#include "velmo/kvo/comms/Client.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

using namespace akvo::test;
using velmo::kvo::comms::Client;
using velmo::kvo::comms::Link;

namespace {

const char* const success = "Success";

// Never dereferenced: only shows that the operations reset the out-parameter.
alignas(Link) unsigned char previousLinkStorage[sizeof(Link)];
Link* const previousLink = reinterpret_cast<Link*>(previousLinkStorage);

std::string connectionFailed(const std::string& mainMessage, int error)
{
    return "Connection has failed (Code 20002): " + mainMessage + " {" + errnoText(error) + "}";
}

// Bytes go both ways between the Link and the server's accepted socket.
void expectUsable(Link& link, int server)
{
    EXPECT_EQ(success, link.write("ping", 4).format());
    EXPECT_EQ("ping", readExactly(server, 4));
    writeAll(server, "pong");
    char buffer[511];
    unsigned int bytesRead = 0;
    EXPECT_EQ(success, link.read(buffer, sizeof(buffer), bytesRead).format());
    EXPECT_EQ("pong", std::string(buffer, bytesRead));
}

// A name of exactly 108 bytes inside `dir`.
std::string fullLengthPath(const TempDir& dir)
{
    const std::string prefix = dir.path() + "/";
    return prefix + std::string(108 - prefix.size(), 'p');
}

struct UnixFailureCase
{
    const char* name;
    int error;
    void (*prepare)(const std::string& path, UniqueFd& keep);
};

class ClientUnixFailure : public ::testing::TestWithParam<UnixFailureCase>
{
};

TEST_P(ClientUnixFailure, ReportsThePathAndTheCLibraryErrorAndLeaksNothing)
{
    const UnixFailureCase& c = GetParam();
    TempDir dir;
    const std::string path = dir.file("server");
    UniqueFd keep;
    c.prepare(path, keep);
    const int descriptorsBefore = openDescriptorCount();
    Link* link = previousLink;
    const std::string result = Client::connectUnixServer(path.c_str(), link).format();
    EXPECT_EQ(connectionFailed("Unable to connect to " + path, c.error), result);
    EXPECT_EQ(nullptr, link);
    EXPECT_EQ(descriptorsBefore, openDescriptorCount());
}

INSTANTIATE_TEST_SUITE_P(
    Servers, ClientUnixFailure,
    ::testing::Values(UnixFailureCase{"Missing", ENOENT, [](const std::string&, UniqueFd&) {}},
                      UnixFailureCase{"BoundButNotListening", ECONNREFUSED,
                                      [](const std::string& path, UniqueFd& keep) { keep = bindUnix(path); }},
                      UnixFailureCase{"RegularFile", ECONNREFUSED,
                                      [](const std::string& path, UniqueFd& keep) {
                                          keep = UniqueFd(open(path.c_str(), O_CREAT | O_WRONLY, 0600));
                                      }}),
    [](const ::testing::TestParamInfo<UnixFailureCase>& info) { return info.param.name; });

TEST(ClientUnix, ConnectsToAListeningServer)
{
    TempDir dir;
    const std::string path = dir.file("server");
    UniqueFd listener = listenUnix(path);
    Link* link = previousLink;
    EXPECT_EQ(success, Client::connectUnixServer(path.c_str(), link).format());
    ASSERT_NE(nullptr, link);
    std::unique_ptr<Link> owned(link);
    UniqueFd server = acceptOne(listener.get());
    expectUsable(*owned, server.get());
}

// The name is cut to 108 bytes without a terminator, so anything after them
// is ignored and the server bound at the cut name is reached.
TEST(ClientUnix, UsesOnlyTheFirst108BytesOfThePath)
{
    TempDir dir;
    const std::string cutPath = fullLengthPath(dir);
    UniqueFd listener = listenUnix(cutPath);
    for (const std::string& given : {cutPath, cutPath + "-ignored-tail"}) {
        SCOPED_TRACE(given);
        Link* link = previousLink;
        EXPECT_EQ(success, Client::connectUnixServer(given.c_str(), link).format());
        ASSERT_NE(nullptr, link);
        std::unique_ptr<Link> owned(link);
        UniqueFd server = acceptOne(listener.get());
        expectUsable(*owned, server.get());
    }
}

TEST(ClientUnix, FailureOnALongPathPrintsTheWholeGivenPath)
{
    TempDir dir;
    const std::string given = fullLengthPath(dir) + "-ignored-tail";
    Link* link = previousLink;
    EXPECT_EQ(connectionFailed("Unable to connect to " + given, ENOENT),
              Client::connectUnixServer(given.c_str(), link).format());
    EXPECT_EQ(nullptr, link);
}

// An empty path leaves a path field of zero bytes, which Linux reads as the
// abstract name made of 107 zero bytes (the full address length is passed).
TEST(ClientUnix, EmptyPathFailsWithNothingAfterTheMessage)
{
    Link* link = previousLink;
    EXPECT_EQ("Connection has failed (Code 20002): Unable to connect to  {" + errnoText(ECONNREFUSED) + "}",
              Client::connectUnixServer("", link).format());
    EXPECT_EQ(nullptr, link);
}

TEST(ClientUnix, EmptyPathReachesTheAbstractNameOfZeroBytes)
{
    UniqueFd listener = listenUnix(std::string(108, '\0'));
    Link* link = previousLink;
    EXPECT_EQ(success, Client::connectUnixServer("", link).format());
    ASSERT_NE(nullptr, link);
    std::unique_ptr<Link> owned(link);
    UniqueFd server = acceptOne(listener.get());
    expectUsable(*owned, server.get());
}

struct TcpTarget
{
    const char* name;
    const char* ip;
    int portOffset;
};

// Ports wrap to their low 16 bits; an ip that is not dotted decimal leaves
// the zero address, which Linux connects to the local host.
const TcpTarget tcpTargets[] = {
    {"Loopback", "127.0.0.1", 0},
    {"PortAbove16Bits", "127.0.0.1", 65536},
    {"NegativePort", "127.0.0.1", -65536},
    {"LettersAsIp", "abc", 0},
};

class ClientTcp : public ::testing::TestWithParam<TcpTarget>
{
};

TEST_P(ClientTcp, ConnectsToAListeningServer)
{
    const TcpTarget& c = GetParam();
    uint16_t port = 0;
    UniqueFd listener = listenTcp(port);
    Link* link = previousLink;
    EXPECT_EQ(success, Client::connectTcpServer(c.ip, port + c.portOffset, link).format());
    ASSERT_NE(nullptr, link);
    std::unique_ptr<Link> owned(link);
    UniqueFd server = acceptOne(listener.get());
    expectUsable(*owned, server.get());
}

TEST_P(ClientTcp, RefusedConnectionPrintsTheGivenIpAndPortAndLeaksNothing)
{
    const TcpTarget& c = GetParam();
    uint16_t port = 0;
    UniqueFd reserved = reservedTcpPort(port);
    const int givenPort = port + c.portOffset;
    const int descriptorsBefore = openDescriptorCount();
    Link* link = previousLink;
    EXPECT_EQ(connectionFailed(std::string("Unable to connect to ") + c.ip + ":" + std::to_string(givenPort),
                               ECONNREFUSED),
              Client::connectTcpServer(c.ip, givenPort, link).format());
    EXPECT_EQ(nullptr, link);
    EXPECT_EQ(descriptorsBefore, openDescriptorCount());
}

INSTANTIATE_TEST_SUITE_P(Targets, ClientTcp, ::testing::ValuesIn(tcpTargets),
                         [](const ::testing::TestParamInfo<TcpTarget>& info) { return info.param.name; });

// With no descriptor left to allocate, socket() itself fails. The child
// prints the result and whether the out-parameter was reset. One failure is
// rendered before the limit is set: UndefinedBehaviorSanitizer opens files the
// first time it checks a stream's type, and could not do so afterwards.
void printOutcomeWithoutDescriptors(Client::ClientResult (*attempt)(Link*& link))
{
    Link* unused = nullptr;
    Client::connectTcpServer("127.0.0.1", 0, unused).format();
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_NOFILE, &none);
    Link* link = previousLink;
    const std::string result = attempt(link).format();
    std::fprintf(stderr, "[%s] link %s\n", result.c_str(), link == nullptr ? "null" : "set");
    std::_Exit(0);
}

TEST(ClientSocketFailureDeathTest, UnixFailureHasNoMainMessage)
{
    EXPECT_EXIT(printOutcomeWithoutDescriptors(
                    [](Link*& link) { return Client::connectUnixServer("/nonexistent/server", link); }),
                ::testing::ExitedWithCode(0),
                escapeRegex("[Connection has failed (Code 20002): {" + errnoText(EMFILE) + "}] link null"));
}

TEST(ClientSocketFailureDeathTest, TcpFailureNamesTheTarget)
{
    EXPECT_EXIT(printOutcomeWithoutDescriptors(
                    [](Link*& link) { return Client::connectTcpServer("127.0.0.1", -7, link); }),
                ::testing::ExitedWithCode(0),
                escapeRegex("[" + connectionFailed("Unable to create socket to 127.0.0.1:-7", EMFILE) +
                            "] link null"));
}

// Every Link made by a successful connection releases its descriptor.
TEST(ClientDescriptors, ThousandConnectionsLeaveNoDescriptorBehind)
{
    const int connections = 1000;
    TempDir dir;
    const std::string path = dir.file("server");
    const int descriptorsBefore = openDescriptorCount();
    {
        UniqueFd listener = listenUnix(path);
        std::thread server([&] {
            for (int i = 0; i < connections; ++i) {
                acceptOne(listener.get());
            }
        });
        int successes = 0;
        for (int i = 0; i < connections; ++i) {
            Link* link = nullptr;
            successes += Client::connectUnixServer(path.c_str(), link).isSuccess() ? 1 : 0;
            delete link;
        }
        server.join();
        EXPECT_EQ(connections, successes);
    }
    EXPECT_EQ(descriptorsBefore, openDescriptorCount());
}

} // namespace
