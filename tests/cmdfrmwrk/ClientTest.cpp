#include "velmo/kvo/cmdfrmwrk/Client.h"
#include "CannedEngine.h"
#include "EngineMessages.h"
#include "FdCount.h"
#include "Timestamps.h"
#include "velmo/kvo/comms/Link.h"
#include "velmo/kvo/lipsync/GetAudioTs.h"
#include "velmo/kvo/lipsync/LipSyncSerializer.h"
#include "velmo/kvo/lipsync/SetAudioDelay.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>

namespace {

using velmo::kvo::cmdfrmwrk::Client;
using velmo::kvo::cmdfrmwrk::Peer;
using velmo::kvo::comms::Link;
using velmo::kvo::lipsync::GetAudioTs;
using velmo::kvo::lipsync::LipSyncXmlSerializer;
using velmo::kvo::lipsync::SetAudioDelay;

using namespace akvo::test;

// A command client connected to `engine`.
Client clientOf(CannedEngine& engine)
{
    return Client(new Link(connectedUnixSocket(engine.socketPath())));
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
    const int before = openDescriptorCount();
    {
        CannedEngine engine(framed(fixedGetAudioTsAnswer));
        Client client = clientOf(engine);
        GetAudioTs::Answer answer;
        EXPECT_EQ("Success", getAudioTimestamps(client, answer).format());
        EXPECT_EQ(framed(getAudioTsRequest), engine.received());
        EXPECT_TRUE(answer.result.isSuccess());
        EXPECT_TRUE(sameTimestamps(fixedTimestamps, answer.timestamps));
    }
    EXPECT_EQ(before, openDescriptorCount());
}

TEST(ExecuteCommand, PeerHangingUpAfterTheRequest)
{
    CannedEngine engine("");
    Client client = clientOf(engine);
    GetAudioTs::Answer answer;
    EXPECT_EQ("Connection closed by distant (Code 5905): {Protocol has been closed by distant (Code 40005): "
              "{Closed by distant (Code 10003)}}",
              getAudioTimestamps(client, answer).format());
    EXPECT_EQ(framed(getAudioTsRequest), engine.received());
    EXPECT_EQ("Unknown error (Code 1001)", answer.result.format());
}

// The test keeps the Link that the client owns but does not expose, to close
// it locally; the request then goes to a shut-down socket.
TEST(ExecuteCommand, LocallyClosedLink)
{
    const auto previous = std::signal(SIGPIPE, SIG_IGN);
    {
        CannedEngine engine("");
        Link* link = new Link(connectedUnixSocket(engine.socketPath()));
        Client client(link);
        link->close();
        SetAudioDelay::Answer answer;
        EXPECT_EQ("Connection closed (Code 5904): {Protocol is closed. (Code 40004): {Closed (Code 10002)}}",
                  setAudioDelay(client, 20, answer).format());
        EXPECT_EQ("", engine.received());
    }
    std::signal(SIGPIPE, previous);
}

} // namespace
