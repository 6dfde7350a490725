#include "CInterface.h"
#include "ChildProcess.h"
#include "Simulator.h"

#include <gtest/gtest.h>

#include <csignal>
#include <thread>
#include <unistd.h>

using akvo::test::connectedHandle;
using akvo::test::Handle;
using akvo::test::notConnected;
using akvo::test::outcome;
using akvo::test::runInChild;
using akvo::test::SimulatorProcess;
using akvo::test::succeeded;

namespace {

akvo_lipsync_timestamps timestamps = {0, 0, 0, 0};

// With SIGPIPE at its default disposition in the parent too, since a child
// that shut the connection down would make the parent's next write raise it.
TEST(CInterfaceFork, DestroyInAChildReturnsAndLeavesTheParentsConnectionAlone)
{
    for (const uint32_t deadlineMs : {0u, 10000u}) {
        SimulatorProcess simulator({"--fixed"});
        akvo::test::expectPassesInChild([&] {
            std::signal(SIGPIPE, SIG_DFL);
            Handle handle = connectedHandle(simulator.socketPath());
            akvo_lipsync_set_deadline(handle.get(), deadlineMs);
            EXPECT_EQ(succeeded, outcome(akvo_lipsync_get_audio_timestamps(handle.get(), &timestamps)));
            const akvo::test::ProgramOutput child = runInChild([&] {
                akvo_lipsync_destroy(handle.release());
                return 0;
            });
            EXPECT_EQ(0, child.exitStatus) << child.standardError;
            EXPECT_EQ(succeeded, outcome(akvo_lipsync_get_audio_timestamps(handle.get(), &timestamps)));
        });
    }
}

// The parent's watchdog thread is not in the child, which starts its own.
TEST(CInterfaceFork, AChildFindsTheHandleDisconnectedAndItsDeadlineEnforced)
{
    SimulatorProcess simulator({"--fixed", "--fault", "2:delay:5000"});
    const Handle handle = connectedHandle(simulator.socketPath());
    akvo_lipsync_set_deadline(handle.get(), 200);
    EXPECT_EQ(succeeded, outcome(akvo_lipsync_get_audio_timestamps(handle.get(), &timestamps)));
    akvo::test::expectPassesInChild([&] {
        EXPECT_EQ(0, akvo_lipsync_is_connected(handle.get()));
        EXPECT_EQ(notConnected, outcome(akvo_lipsync_get_audio_timestamps(handle.get(), &timestamps)));
        EXPECT_EQ(succeeded, outcome(akvo_lipsync_connect(handle.get(), simulator.socketPath().c_str())));
        EXPECT_EQ(AKVO_LIPSYNC_DEADLINE_EXCEEDED,
                  akvo_lipsync_get_audio_timestamps(handle.get(), &timestamps));
    });
    EXPECT_EQ(1, akvo_lipsync_is_connected(handle.get()));
    EXPECT_EQ(succeeded, outcome(akvo_lipsync_get_audio_timestamps(handle.get(), &timestamps)));
}

// The thread in the call holds the handle's turn and the engine's, and is
// not in the child.
TEST(CInterfaceFork, AChildForkedDuringACallCanUseAndDestroyTheHandle)
{
    SimulatorProcess simulator({"--fixed", "--verbose", "--fault", "1:delay:1000"});
    Handle handle = connectedHandle(simulator.socketPath());
    int32_t slowCode = 0;
    std::thread slowCall([&] {
        akvo_lipsync_timestamps slow = {0, 0, 0, 0};
        slowCode = akvo_lipsync_get_audio_timestamps(handle.get(), &slow);
    });
    ASSERT_TRUE(akvo::test::simulatorSaid(simulator, "request 1: GetAudioTs_Request"));
    const akvo::test::ProgramOutput child = runInChild([&]() -> int {
        const bool inherited =
            outcome(akvo_lipsync_get_audio_timestamps(handle.get(), &timestamps)) == notConnected;
        akvo_lipsync_destroy(handle.release());
        // Ends here: LeakSanitizer would count what the thread in the call
        // keeps in its thread-local storage, which this process cannot reach.
        _exit(inherited ? 0 : 1);
    });
    EXPECT_EQ(0, child.exitStatus);
    slowCall.join();
    EXPECT_EQ(AKVO_LIPSYNC_SUCCESS, slowCode);
}

} // namespace
