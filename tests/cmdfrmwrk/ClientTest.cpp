#include "velmo/kvo/cmdfrmwrk/Client.h"
#include "FdCount.h"
#include "velmo/kvo/cmdfrmwrk/Command.h"
#include "velmo/kvo/comms/Link.h"
#include "velmo/kvo/lipsync/GetAudioTs.h"
#include "velmo/kvo/lipsync/LipSyncSerializer.h"
#include "velmo/kvo/lipsync/SetAudioDelay.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using velmo::kvo::cmdfrmwrk::Client;
using velmo::kvo::cmdfrmwrk::Command;
using velmo::kvo::cmdfrmwrk::Peer;
using velmo::kvo::comms::Link;
using velmo::kvo::lipsync::GetAudioTs;
using velmo::kvo::lipsync::LipSyncXmlSerializer;
using velmo::kvo::lipsync::SetAudioDelay;

// The server end of a socketpair, played by a thread: for each reply it reads
// one request frame and writes the reply (nothing for an empty one); then it
// hangs up.
class ScriptedPeer
{
public:
    explicit ScriptedPeer(const std::vector<std::string>& replies)
    {
        int fds[2];
        EXPECT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM, 0, fds));
        clientFd = fds[0];
        _thread = std::thread([this, replies, fd = fds[1]] {
            for (const std::string& reply : replies) {
                if (!readFrame(fd)) {
                    break;
                }
                EXPECT_EQ(static_cast<ssize_t>(reply.size()),
                          ::send(fd, reply.data(), reply.size(), MSG_NOSIGNAL));
            }
            ::close(fd);
        });
    }

    ~ScriptedPeer() { received(); }

    // Waits for the script to end and returns every byte the peer read.
    std::string received()
    {
        if (_thread.joinable()) {
            _thread.join();
        }
        return _received;
    }

    int clientFd;

private:
    bool readFrame(int fd)
    {
        char chunk[256];
        do {
            const ssize_t count = ::read(fd, chunk, sizeof(chunk));
            if (count <= 0) {
                return false;
            }
            _received.append(chunk, static_cast<std::string::size_type>(count));
        } while (_received.size() < 2 || _received.compare(_received.size() - 2, 2, "\n\n") != 0);
        return true;
    }

    std::string _received;
    std::thread _thread;
};

const std::string getAudioTsRequest =
    "<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\"><GetAudioTs_Request /></AKVO>\n\n";

std::string getAudioTsReply(const std::string& version)
{
    return "<?xml version=\"1.0\" ?><AKVO version=\"" + version +
           "\"><GetAudioTs_Answer><Result><ErrorCode>1000</ErrorCode><Message></Message></Result>"
           "<LipSyncNtpTimestamps><capture_timestamp>16045690984833536</capture_timestamp>"
           "<rendering_timestamp>16045690985263104</rendering_timestamp>"
           "<receiving_timestamp>16045690984404992</receiving_timestamp>"
           "<jitter_buffer_depth>40</jitter_buffer_depth></LipSyncNtpTimestamps></GetAudioTs_Answer></"
           "AKVO>\n\n";
}

Peer::PeerResult getAudioTimestamps(Client& client, GetAudioTs::Answer& answer)
{
    return client.executeCommand<GetAudioTs, LipSyncXmlSerializer>(GetAudioTs::Request(), answer);
}

Peer::PeerResult setAudioDelay(Client& client, unsigned long long delayMs, SetAudioDelay::Answer& answer)
{
    SetAudioDelay::Request request;
    request.delayMs = delayMs;
    return client.executeCommand<SetAudioDelay, LipSyncXmlSerializer>(request, answer);
}

TEST(ExecuteCommand, ReturnsTheServerTimestamps)
{
    const int before = akvo::test::openDescriptorCount();
    {
        ScriptedPeer peer({getAudioTsReply("0.1.0")});
        Client client(new Link(peer.clientFd));
        GetAudioTs::Answer answer;
        EXPECT_EQ("Success", getAudioTimestamps(client, answer).format());
        EXPECT_EQ(getAudioTsRequest, peer.received());
        EXPECT_TRUE(answer.result.isSuccess());
        EXPECT_EQ(16045690984833536ULL, answer.timestamps.tCap);
        EXPECT_EQ(16045690985263104ULL, answer.timestamps.tRdr);
        EXPECT_EQ(16045690984404992ULL, answer.timestamps.tRcv);
        EXPECT_EQ(40ULL, answer.timestamps.jbmDepth);
    }
    EXPECT_EQ(before, akvo::test::openDescriptorCount());
}

TEST(ExecuteCommand, ServerRefusalTravelsInTheAnswer)
{
    ScriptedPeer peer(
        {"<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\"><SetAudioDelay_Answer><Result><ErrorCode>1003"
         "</ErrorCode><Message>not in call</Message></Result></SetAudioDelay_Answer></AKVO>\n\n"});
    Client client(new Link(peer.clientFd));
    SetAudioDelay::Answer answer;
    EXPECT_EQ("Success", setAudioDelay(client, 60, answer).format());
    EXPECT_EQ(
        "<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\"><SetAudioDelay_Request>60</SetAudioDelay_Request>"
        "</AKVO>\n\n",
        peer.received());
    EXPECT_EQ(Command::BadState, answer.result.getErrorCode());
    EXPECT_EQ("not in call", answer.result.getMainMessage());
}

TEST(ExecuteCommand, PeerHangingUpAfterTheRequest)
{
    ScriptedPeer peer({""});
    Client client(new Link(peer.clientFd));
    GetAudioTs::Answer answer;
    EXPECT_EQ("Connection closed by distant (Code 5905): {Protocol has been closed by distant (Code 40005): "
              "{Closed by distant (Code 10003)}}",
              getAudioTimestamps(client, answer).format());
    EXPECT_EQ(getAudioTsRequest, peer.received());
    EXPECT_EQ("Unknown error (Code 1001)", answer.result.format());
}

// The test keeps the Link that the client owns but does not expose, to close
// it locally; the request then goes to a shut-down socket.
TEST(ExecuteCommand, LocallyClosedLink)
{
    const auto previous = std::signal(SIGPIPE, SIG_IGN);
    {
        ScriptedPeer peer({""});
        Link* link = new Link(peer.clientFd);
        Client client(link);
        link->close();
        SetAudioDelay::Answer answer;
        EXPECT_EQ("Connection closed (Code 5904): {Protocol is closed. (Code 40004): {Closed (Code 10002)}}",
                  setAudioDelay(client, 20, answer).format());
        EXPECT_EQ("", peer.received());
    }
    std::signal(SIGPIPE, previous);
}

TEST(ExecuteCommand, AnswerInAnotherVersion)
{
    ScriptedPeer peer({getAudioTsReply("0.1.1")});
    Client client(new Link(peer.clientFd));
    GetAudioTs::Answer answer;
    EXPECT_EQ(
        "Serializer error (Code 5903): {Conversion failed (Code 71): Version does not match; expect '0.1.0' "
        "got '0.1.1'.}",
        getAudioTimestamps(client, answer).format());
    EXPECT_EQ(0ULL, answer.timestamps.tCap);
}

} // namespace
