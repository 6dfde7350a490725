#ifndef AKVO_TESTS_TOOLS_SIM_SIMPROTOCOL_H
#define AKVO_TESTS_TOOLS_SIM_SIMPROTOCOL_H

#include "Simulator.h"

#include <gtest/gtest.h>

#include <string>
#include <sys/socket.h>

namespace akvo {
namespace test {

inline const std::string envelope = R"(<?xml version="1.0" ?><AKVO version="0.1.0">)";

// Requests exactly as the library writes them.
inline const std::string getAudioTsRequest = envelope + "<GetAudioTs_Request /></AKVO>";

inline std::string setAudioDelayRequest(const std::string& delay)
{
    return envelope + "<SetAudioDelay_Request>" + delay + "</SetAudioDelay_Request></AKVO>";
}

inline std::string framed(const std::string& message)
{
    return message + "\n\n";
}

// The answer of the simulator with --fixed.
inline const std::string fixedGetAudioTsAnswer =
    envelope +
    "<GetAudioTs_Answer><Result><ErrorCode>1000</ErrorCode><Message></Message></Result><LipSyncNtpTimestamps>"
    "<capture_timestamp>16045690984833536</capture_timestamp>"
    "<rendering_timestamp>16045690985263104</rendering_timestamp>"
    "<receiving_timestamp>16045690984404992</receiving_timestamp>"
    "<jitter_buffer_depth>40</jitter_buffer_depth></LipSyncNtpTimestamps></GetAudioTs_Answer></AKVO>";

inline std::string setAudioDelayAnswer(const std::string& code, const std::string& message)
{
    return envelope + "<SetAudioDelay_Answer><Result><ErrorCode>" + code + "</ErrorCode>" +
           (message.empty() ? "<Message/>" : "<Message>" + message + "</Message>") +
           "</Result></SetAudioDelay_Answer></AKVO>";
}

inline const std::string setAudioDelaySuccess = setAudioDelayAnswer("1000", "");
inline const std::string delayRefused = setAudioDelayAnswer("1002", "delay must be 0 to 100 in steps of 20");

// Sends `bytes` on a new connection, shuts its sending side and returns all
// that the server sent before it closed the connection.
inline std::string serverReply(const std::string& socketPath, const std::string& bytes)
{
    RawClient client(socketPath);
    EXPECT_TRUE(client.write(bytes));
    shutdown(client.fd(), SHUT_WR);
    return client.readUntilClosed();
}

} // namespace test
} // namespace akvo

#endif
