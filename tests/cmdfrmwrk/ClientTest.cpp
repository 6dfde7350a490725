#include "ScriptedPeer.h"

#include "FdCount.h"
#include "velmo/kvo/cmdfrmwrk/Client.h"
#include "velmo/kvo/cmdfrmwrk/Command.h"
#include "velmo/kvo/comms/Link.h"
#include "velmo/kvo/lipsync/GetAudioTs.h"
#include "velmo/kvo/lipsync/LipSyncSerializer.h"
#include "velmo/kvo/lipsync/SetAudioDelay.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>

namespace {

using akvo::test::ScriptedPeer;
using velmo::kvo::cmdfrmwrk::Client;
using velmo::kvo::cmdfrmwrk::Command;
using velmo::kvo::cmdfrmwrk::Peer;
using velmo::kvo::comms::Link;
using velmo::kvo::lipsync::GetAudioTs;
using velmo::kvo::lipsync::LipSyncXmlSerializer;
using velmo::kvo::lipsync::SetAudioDelay;

const std::string getAudioTsRequest =
    "<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\"><GetAudioTs_Request /></AKVO>\n\n";

std::string setAudioDelayRequest(const std::string& delay)
{
    return "<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\"><SetAudioDelay_Request>" + delay +
           "</SetAudioDelay_Request></AKVO>\n\n";
}

std::string getAudioTsReply(const std::string& version, const std::string& timestamps)
{
    return "<?xml version=\"1.0\" ?><AKVO version=\"" + version +
           "\"><GetAudioTs_Answer><Result><ErrorCode>1000</ErrorCode><Message></Message></Result>"
           "<LipSyncNtpTimestamps><capture_timestamp>" +
           timestamps +
           "</capture_timestamp><rendering_timestamp>16045690985263104</rendering_timestamp>"
           "<receiving_timestamp>16045690984404992</receiving_timestamp>"
           "<jitter_buffer_depth>40</jitter_buffer_depth></LipSyncNtpTimestamps></GetAudioTs_Answer></"
           "AKVO>\n\n";
}

std::string setAudioDelayReply(const std::string& code, const std::string& message)
{
    return "<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\"><SetAudioDelay_Answer><Result><ErrorCode>" +
           code + "</ErrorCode><Message>" + message + "</Message></Result></SetAudioDelay_Answer></AKVO>\n\n";
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
    ScriptedPeer peer({getAudioTsReply("0.1.0", "16045690984833536")});
    Client client(new Link(peer.clientFd()));
    GetAudioTs::Answer answer;
    EXPECT_EQ("Success", getAudioTimestamps(client, answer).format());
    EXPECT_EQ(getAudioTsRequest, peer.received());
    EXPECT_TRUE(answer.result.isSuccess());
    EXPECT_EQ(16045690984833536ULL, answer.timestamps.tCap);
    EXPECT_EQ(16045690985263104ULL, answer.timestamps.tRdr);
    EXPECT_EQ(16045690984404992ULL, answer.timestamps.tRcv);
    EXPECT_EQ(40ULL, answer.timestamps.jbmDepth);
}

TEST(ExecuteCommand, ServerRefusalTravelsInTheAnswer)
{
    ScriptedPeer peer({setAudioDelayReply("1003", "not in call")});
    Client client(new Link(peer.clientFd()));
    SetAudioDelay::Answer answer;
    const Peer::PeerResult result = setAudioDelay(client, 60, answer);
    EXPECT_EQ(Peer::Success, result.getErrorCode());
    EXPECT_EQ(setAudioDelayRequest("60"), peer.received());
    EXPECT_EQ(Command::BadState, answer.result.getErrorCode());
    EXPECT_EQ("not in call", answer.result.getMainMessage());
}

TEST(ExecuteCommand, RunsCommandsOneAfterTheOther)
{
    ScriptedPeer peer({setAudioDelayReply("1000", ""), getAudioTsReply("0.1.0", "7")});
    Client client(new Link(peer.clientFd()));
    SetAudioDelay::Answer delayAnswer;
    EXPECT_EQ("Success", setAudioDelay(client, 18446744073709551615ULL, delayAnswer).format());
    EXPECT_TRUE(delayAnswer.result.isSuccess());
    GetAudioTs::Answer timestampsAnswer;
    EXPECT_EQ("Success", getAudioTimestamps(client, timestampsAnswer).format());
    EXPECT_EQ(7ULL, timestampsAnswer.timestamps.tCap);
    EXPECT_EQ(setAudioDelayRequest("18446744073709551615") + getAudioTsRequest, peer.received());
}

TEST(ExecuteCommand, PeerHangingUpAfterTheRequest)
{
    ScriptedPeer peer({""});
    Client client(new Link(peer.clientFd()));
    GetAudioTs::Answer answer;
    const Peer::PeerResult result = getAudioTimestamps(client, answer);
    EXPECT_EQ(Peer::ConnectionClosedByDistant, result.getErrorCode());
    EXPECT_EQ("Connection closed by distant (Code 5905): {Protocol has been closed by distant (Code 40005): "
              "{Closed by "
              "distant (Code 10003)}}",
              result.format());
    EXPECT_EQ(getAudioTsRequest, peer.received());
    EXPECT_EQ("Unknown error (Code 1001)", answer.result.format());
}

TEST(ExecuteCommand, PeerHangingUpInTheMiddleOfTheAnswer)
{
    const std::string reply = setAudioDelayReply("1000", "");
    ScriptedPeer peer({reply.substr(0, reply.size() / 2)});
    Client client(new Link(peer.clientFd()));
    SetAudioDelay::Answer answer;
    EXPECT_EQ(Peer::ConnectionClosedByDistant, setAudioDelay(client, 0, answer).getErrorCode());
    EXPECT_EQ(setAudioDelayRequest("0"), peer.received());
}

TEST(ExecuteCommand, AnswerInAnotherVersion)
{
    ScriptedPeer peer({getAudioTsReply("0.1.1", "1")});
    Client client(new Link(peer.clientFd()));
    GetAudioTs::Answer answer;
    EXPECT_EQ(
        "Serializer error (Code 5903): {Conversion failed (Code 71): Version does not match; expect '0.1.0' "
        "got '0.1.1'.}",
        getAudioTimestamps(client, answer).format());
    EXPECT_EQ(0ULL, answer.timestamps.tCap);
}

TEST(ExecuteCommand, AnswerWithABadNumber)
{
    ScriptedPeer peer({getAudioTsReply("0.1.0", "0X1F")});
    Client client(new Link(peer.clientFd()));
    GetAudioTs::Answer answer;
    EXPECT_EQ(
        "Serializer error (Code 5903): {Conversion failed (Code 71): Unable to convert from string \"0X1F\". "
        "(While desserializing \"capture_timestamp\") (While desserializing \"LipSyncNtpTimestamps\") (While "
        "desserializing \"GetAudioTs_Answer\")}",
        getAudioTimestamps(client, answer).format());
}

TEST(ExecuteCommand, AnswerToAnotherCommand)
{
    ScriptedPeer peer({setAudioDelayReply("1000", "")});
    Client client(new Link(peer.clientFd()));
    GetAudioTs::Answer answer;
    EXPECT_EQ("Serializer error (Code 5903): {Wrong XML node (Code 68): Trying to deserialize the wrong "
              "element.Found \"SetAudioDelay_Answer\" expected GetAudioTs_Answer}",
              getAudioTimestamps(client, answer).format());
}

// The test keeps the Link it handed over, which the client owns but does not
// expose, to close it locally.
TEST(ExecuteCommand, LocallyClosedLink)
{
    struct sigaction ignore = {};
    ignore.sa_handler = SIG_IGN;
    struct sigaction previous;
    ASSERT_EQ(0, sigaction(SIGPIPE, &ignore, &previous));
    {
        ScriptedPeer peer({setAudioDelayReply("1000", "")});
        Link* link = new Link(peer.clientFd());
        Client client(link);
        link->close();
        SetAudioDelay::Answer answer;
        EXPECT_EQ("Connection closed (Code 5904): {Protocol is closed. (Code 40004): {Closed (Code 10002)}}",
                  setAudioDelay(client, 20, answer).format());
        EXPECT_EQ("", peer.received());
    }
    sigaction(SIGPIPE, &previous, NULL);
}

TEST(ExecuteCommand, DestroyingTheClientClosesTheSocket)
{
    const int before = akvo::test::openDescriptorCount();
    {
        ScriptedPeer peer({getAudioTsReply("0.1.0", "1")});
        Client client(new Link(peer.clientFd()));
        GetAudioTs::Answer answer;
        EXPECT_EQ("Success", getAudioTimestamps(client, answer).format());
        peer.received();
    }
    EXPECT_EQ(before, akvo::test::openDescriptorCount());
}

} // namespace
