#include "ChildProcess.h"
#include "FdCount.h"
#include "Sockets.h"

#include "velmo/kvo/comms/Client.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <sys/resource.h>

using namespace akvo::test;
using velmo::kvo::comms::Client;
using velmo::kvo::comms::Link;

namespace {

// Never dereferenced: shows that the operations reset the out-parameter.
alignas(Link) unsigned char previousLinkStorage[sizeof(Link)];
Link* const previousLink = reinterpret_cast<Link*>(previousLinkStorage);

std::string connectionFailed(const std::string& mainMessage, int error)
{
    return "Connection has failed (Code 20002): " + mainMessage + " {" + errnoText(error) + "}";
}

using Attempt = std::function<Client::ClientResult(Link*& link)>;

// The new Link reaches the listener's next connection.
void expectConnected(int listener, const Attempt& attempt)
{
    Link* link = nullptr;
    EXPECT_EQ("Success", attempt(link).format());
    ASSERT_NE(nullptr, link);
    std::unique_ptr<Link> owned(link);
    UniqueFd server = acceptOne(listener);
    EXPECT_EQ("Success", link->write("ping", 4).format());
    EXPECT_EQ("ping", readExactly(server.get(), 4));
}

void expectFailure(const std::string& expected, const Attempt& attempt)
{
    const int descriptorsBefore = openDescriptorCount();
    Link* link = previousLink;
    EXPECT_EQ(expected, attempt(link).format());
    EXPECT_EQ(nullptr, link);
    EXPECT_EQ(descriptorsBefore, openDescriptorCount());
}

// The empty path names the abstract address of zero bytes, where nobody listens.
TEST(ClientUnix, PathNobodyListensOnFailsAndLeaksNothing)
{
    TempDir dir;
    const std::pair<std::string, int> cases[] = {{dir.file("server"), ENOENT}, {"", ECONNREFUSED}};
    for (const auto& [path, error] : cases) {
        // C++17 lets no lambda capture a structured binding, so the path goes by name.
        const char* const name = path.c_str();
        expectFailure(connectionFailed("Unable to connect to " + path, error),
                      [name](Link*& link) { return Client::connectUnixServer(name, link); });
    }
}

// A path is cut to 108 bytes without a terminator, so the tail of a longer
// one is ignored.
TEST(ClientUnix, ConnectsToAListeningServer)
{
    TempDir dir;
    const std::string fullLength = dir.path + "/" + std::string(107 - dir.path.size(), 'p');
    for (const std::string& path : {dir.file("server"), fullLength + "-ignored-tail"}) {
        UniqueFd listener(listeningUnixSocket(path.substr(0, 108)));
        expectConnected(listener.get(),
                        [&](Link*& link) { return Client::connectUnixServer(path.c_str(), link); });
    }
}

// Ports wrap to their low 16 bits but print as given; an ip that is not
// dotted decimal leaves the zero address, which Linux takes as the local host.
TEST(ClientTcp, ConnectsOrReportsTheGivenIpAndPort)
{
    const std::pair<const char*, int> targets[] = {{"127.0.0.1", 0}, {"127.0.0.1", 65536}, {"abc", 0}};
    for (const auto& target : targets) {
        const char* const ip = target.first;
        uint16_t port = 0;
        UniqueFd listener = tcpPort(port, true);
        expectConnected(listener.get(), [&](Link*& link) {
            return Client::connectTcpServer(ip, port + target.second, link);
        });
        UniqueFd refusing = tcpPort(port, false);
        const int given = port + target.second;
        expectFailure(
            connectionFailed("Unable to connect to " + std::string(ip) + ":" + std::to_string(given),
                             ECONNREFUSED),
            [&](Link*& link) { return Client::connectTcpServer(ip, given, link); });
    }
}

// With no descriptor left, socket() itself fails; the limit holds only in a
// child. One failure is rendered before the limit is set:
// UndefinedBehaviorSanitizer opens files the first time it checks a stream's
// type, and could not do so afterwards.
void expectFailureWithoutDescriptors(const Attempt& attempt, const std::string& expected)
{
    expectPassesInChild([&] {
        Link* link = nullptr;
        Client::connectTcpServer("127.0.0.1", 0, link).format();
        rlimit saved;
        ASSERT_EQ(0, getrlimit(RLIMIT_NOFILE, &saved));
        const rlimit none = {0, saved.rlim_max};
        ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &none));
        link = previousLink;
        const std::string result = attempt(link).format();
        setrlimit(RLIMIT_NOFILE, &saved);
        EXPECT_EQ(expected, result);
        EXPECT_EQ(nullptr, link);
    });
}

TEST(ClientSocketFailure, UnixHasNoMainMessageAndTcpNamesTheTarget)
{
    expectFailureWithoutDescriptors([](Link*& link) { return Client::connectUnixServer("/nowhere", link); },
                                    "Connection has failed (Code 20002): {" + errnoText(EMFILE) + "}");
    expectFailureWithoutDescriptors(
        [](Link*& link) { return Client::connectTcpServer("127.0.0.1", -7, link); },
        connectionFailed("Unable to create socket to 127.0.0.1:-7", EMFILE));
}

} // namespace
