#include "CInterface.h"
#include "ResultTexts.h"
#include "Simulator.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

extern "C" void akvo_test_call_every_function(void);

using akvo::test::connectedHandle;
using akvo::test::fixedTimestamps;
using akvo::test::Handle;
using akvo::test::newHandle;
using akvo::test::notConnected;
using akvo::test::outcome;
using akvo::test::SimulatorProcess;
using akvo::test::succeeded;

namespace {

const std::string cutShort =
    "1100 Deadline exceeded (Code 1100): No answer within 200 ms, disconnected {An error has occured in the "
    "transport layer (Code 1005): {Connection closed (Code 5904): {Protocol is closed. (Code 40004): "
    "{Closed (Code 10002)}}}}";
const std::string waitedTooLong =
    "1100 Deadline exceeded (Code 1100): Still waiting for another call after 100 ms, nothing done";

TEST(CInterface, HeaderIsC99AndEveryFunctionLinks)
{
    akvo_test_call_every_function();
    EXPECT_EQ(notConnected, outcome(AKVO_LIPSYNC_BAD_STATE));
}

// What each call does connected, the command-line tool's tests show: it
// makes these calls.
TEST(CInterface, EveryOperationWhileDisconnectedTouchesNothing)
{
    const Handle handle = newHandle();
    akvo_lipsync_service* service = handle.get();
    akvo_lipsync_timestamps timestamps = {1, 2, 3, 4};
    uint64_t granularity = 0;
    uint64_t maximum = 0;
    uint64_t margin = 7;
    EXPECT_EQ(notConnected, outcome(akvo_lipsync_get_capabilities(service, &granularity, &maximum)));
    EXPECT_EQ(notConnected, outcome(akvo_lipsync_set_audio_delay_margin(service, 40)));
    EXPECT_EQ(notConnected, outcome(akvo_lipsync_get_audio_delay_margin(service, &margin)));
    EXPECT_EQ(notConnected, outcome(akvo_lipsync_get_audio_timestamps(service, &timestamps)));
    EXPECT_EQ(notConnected, outcome(akvo_lipsync_set_video_timestamps(service, &timestamps)));
    EXPECT_EQ(notConnected, outcome(akvo_lipsync_disconnect(service)));
    EXPECT_TRUE(granularity == 0 && maximum == 0 && margin == 7);
    EXPECT_TRUE(timestamps == (akvo_lipsync_timestamps{1, 2, 3, 4}));
    akvo_lipsync_destroy(nullptr);
}

TEST(CInterface, NullPointersAreRefusedByName)
{
    const Handle handle = newHandle();
    akvo_lipsync_timestamps timestamps = {0, 0, 0, 0};
    uint64_t value = 0;
    const std::string refused = "1002 Invalid Param (Code 1002): ";
    EXPECT_EQ(refused + "service is NULL", outcome(akvo_lipsync_connect(nullptr, nullptr)));
    EXPECT_EQ(refused + "service is NULL", outcome(akvo_lipsync_set_deadline(nullptr, 10)));
    EXPECT_EQ(refused + "service is NULL", outcome(akvo_lipsync_get_audio_timestamps(nullptr, &timestamps)));
    EXPECT_EQ(refused + "granularity_ms is NULL",
              outcome(akvo_lipsync_get_capabilities(handle.get(), nullptr, &value)));
    EXPECT_EQ(refused + "max_audio_delay_margin_ms is NULL",
              outcome(akvo_lipsync_get_capabilities(handle.get(), &value, nullptr)));
    EXPECT_EQ(refused + "delay_ms is NULL",
              outcome(akvo_lipsync_get_audio_delay_margin(handle.get(), nullptr)));
    EXPECT_EQ(refused + "timestamps is NULL",
              outcome(akvo_lipsync_get_audio_timestamps(handle.get(), nullptr)));
    EXPECT_EQ(refused + "timestamps is NULL",
              outcome(akvo_lipsync_set_video_timestamps(handle.get(), nullptr)));
    // The default socket is not there on a test machine.
    EXPECT_EQ(AKVO_LIPSYNC_CANNOT_CONNECT, akvo_lipsync_connect(handle.get(), nullptr));
}

TEST(CInterface, ResultTextIsCutAsSnprintfCutsIt)
{
    const Handle handle = newHandle();
    char small[4] = "xyz";
    ASSERT_EQ(AKVO_LIPSYNC_SUCCESS, akvo_lipsync_set_deadline(handle.get(), 10));
    EXPECT_EQ(7u, akvo_lipsync_result_text(small, sizeof(small)));
    EXPECT_STREQ("Suc", small);
    EXPECT_EQ(7u, akvo_lipsync_result_text(small, 0));
    EXPECT_STREQ("Suc", small);
    EXPECT_EQ(7u, akvo_lipsync_result_text(nullptr, 0));
}

TEST(CInterfaceDeadline, HangCutShortLeavesItDisconnectedAndTheMarginAsAccepted)
{
    SimulatorProcess simulator({"--fixed", "--fault", "2:delay:5000", "--fault", "4:delay:5000"});
    const Handle handle = newHandle();
    akvo_lipsync_service* service = handle.get();
    const std::string socket = simulator.socketPath();
    akvo_lipsync_timestamps timestamps = {1, 2, 3, 4};
    uint64_t margin = 0;
    EXPECT_EQ(succeeded, outcome(akvo_lipsync_set_deadline(service, 200)));
    EXPECT_EQ(succeeded, outcome(akvo_lipsync_connect(service, socket.c_str())));
    // Request 1 is answered in time, with a deadline armed all the same.
    EXPECT_EQ(succeeded, outcome(akvo_lipsync_set_audio_delay_margin(service, 40)));

    EXPECT_EQ(cutShort, outcome(akvo_lipsync_get_audio_timestamps(service, &timestamps)));
    EXPECT_TRUE(timestamps == (akvo_lipsync_timestamps{1, 2, 3, 4}));
    EXPECT_EQ(0, akvo_lipsync_is_connected(service));
    EXPECT_EQ(notConnected, outcome(akvo_lipsync_get_audio_delay_margin(service, &margin)));
    EXPECT_EQ(succeeded, outcome(akvo_lipsync_connect(service, socket.c_str())));
    EXPECT_EQ(succeeded, outcome(akvo_lipsync_get_audio_timestamps(service, &timestamps)));
    EXPECT_TRUE(timestamps == fixedTimestamps);

    // A margin whose answer came too late is not taken as accepted.
    EXPECT_EQ(cutShort, outcome(akvo_lipsync_set_audio_delay_margin(service, 60)));
    EXPECT_EQ(succeeded, outcome(akvo_lipsync_connect(service, socket.c_str())));
    EXPECT_EQ(succeeded, outcome(akvo_lipsync_get_audio_delay_margin(service, &margin)));
    EXPECT_EQ(40u, margin);
    EXPECT_EQ(succeeded, outcome(akvo_lipsync_set_deadline(service, 0)));
    EXPECT_EQ(succeeded, outcome(akvo_lipsync_get_audio_timestamps(service, &timestamps)));
}

// While one call waits for a slow engine without a deadline, calls under a
// deadline that need its turn give up and touch nothing.
TEST(CInterfaceDeadline, CallsStillWaitingForTheirTurnGiveUp)
{
    SimulatorProcess simulator({"--verbose", "--fault", "1:delay:1000"});
    const Handle slow = connectedHandle(simulator.socketPath());
    const Handle other = connectedHandle(simulator.socketPath());
    int32_t slowCode = 0;
    std::thread slowCall([&] {
        akvo_lipsync_timestamps timestamps = {0, 0, 0, 0};
        slowCode = akvo_lipsync_get_audio_timestamps(slow.get(), &timestamps);
    });
    ASSERT_TRUE(akvo::test::simulatorSaid(simulator, "request 1: GetAudioTs_Request"));

    akvo_lipsync_timestamps timestamps = {0, 0, 0, 0};
    uint64_t granularity = 0;
    uint64_t maximum = 0;
    ASSERT_EQ(AKVO_LIPSYNC_SUCCESS, akvo_lipsync_set_deadline(other.get(), 100));
    EXPECT_EQ(waitedTooLong, outcome(akvo_lipsync_get_audio_timestamps(other.get(), &timestamps)));
    ASSERT_EQ(AKVO_LIPSYNC_SUCCESS, akvo_lipsync_set_deadline(slow.get(), 100));
    EXPECT_EQ(waitedTooLong, outcome(akvo_lipsync_get_capabilities(slow.get(), &granularity, &maximum)));
    EXPECT_TRUE(granularity == 0 && maximum == 0);

    slowCall.join();
    EXPECT_EQ(AKVO_LIPSYNC_SUCCESS, slowCode);
    EXPECT_EQ(succeeded, outcome(akvo_lipsync_get_audio_timestamps(other.get(), &timestamps)));
}

// The process's threads that the library named.
int watchdogThreads()
{
    int count = 0;
    for (const std::filesystem::directory_entry& task :
         std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream comm(task.path() / "comm");
        std::string name;
        count += std::getline(comm, name) && name == "akvo-watchdog" ? 1 : 0;
    }
    return count;
}

// A thread that was joined may stay listed a little longer.
bool watchdogThreadsBecome(int count)
{
    for (int waited = 0; waited < 10000 && watchdogThreads() != count; waited += 5) {
        usleep(5000);
    }
    return watchdogThreads() == count;
}

TEST(CInterfaceDeadline, OneWatchdogThreadServesEveryHandleAndEndsWithTheLast)
{
    SimulatorProcess simulator({"--fixed"});
    ASSERT_TRUE(watchdogThreadsBecome(0));
    std::vector<Handle> handles;
    for (int i = 0; i < 20; ++i) {
        akvo_lipsync_timestamps timestamps = {0, 0, 0, 0};
        handles.push_back(connectedHandle(simulator.socketPath()));
        akvo_lipsync_set_deadline(handles.back().get(), 60000);
        EXPECT_EQ(succeeded, outcome(akvo_lipsync_get_audio_timestamps(handles.back().get(), &timestamps)));
    }
    EXPECT_EQ(1, watchdogThreads());
    handles.clear();
    EXPECT_TRUE(watchdogThreadsBecome(0));
}

// Each thread reads its own result text, whatever the others do meanwhile.
void callForAWhile(akvo_lipsync_service* service, int index)
{
    for (int call = 0; call < 40; ++call) {
        akvo_lipsync_timestamps timestamps = {0, 0, 0, 0};
        uint64_t margin = 0;
        const uint64_t refused = 10 + 20 * static_cast<uint64_t>((index + call) % 5);
        EXPECT_EQ(succeeded, outcome(akvo_lipsync_get_audio_timestamps(service, &timestamps)));
        EXPECT_TRUE(timestamps == fixedTimestamps);
        EXPECT_EQ(succeeded,
                  outcome(akvo_lipsync_set_audio_delay_margin(service, 20 * ((index + call) % 6))));
        EXPECT_EQ(succeeded, outcome(akvo_lipsync_get_audio_delay_margin(service, &margin)));
        EXPECT_LE(margin, 100u);
        EXPECT_EQ("1002 " + akvo::test::marginNotAStepText(refused),
                  outcome(akvo_lipsync_set_audio_delay_margin(service, refused)));
    }
}

void runThreads(const std::vector<Handle>& handles, size_t first, size_t count)
{
    std::vector<std::thread> threads;
    for (int index = 0; index < 8; ++index) {
        threads.emplace_back(callForAWhile, handles[first + static_cast<size_t>(index) % count].get(), index);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(CInterfaceThreads, EightThreadsOnOneHandleOnOneWithADeadlineAndOnFour)
{
    SimulatorProcess simulator({"--fixed"});
    std::vector<Handle> handles;
    for (int i = 0; i < 4; ++i) {
        handles.push_back(connectedHandle(simulator.socketPath()));
    }
    // Watched by a deadline that is never reached.
    ASSERT_EQ(AKVO_LIPSYNC_SUCCESS, akvo_lipsync_set_deadline(handles[1].get(), 60000));
    ASSERT_EQ(AKVO_LIPSYNC_SUCCESS, akvo_lipsync_set_deadline(handles[3].get(), 60000));
    runThreads(handles, 0, 1);
    runThreads(handles, 1, 1);
    runThreads(handles, 0, 4);
}

} // namespace
