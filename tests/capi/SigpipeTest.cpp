#include "CInterface.h"
#include "ChildProcess.h"
#include "ResultTexts.h"
#include "Simulator.h"

#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <thread>
#include <utility>
#include <vector>

using akvo::test::Handle;
using akvo::test::outcome;
using akvo::test::SimulatorProcess;

namespace {

// In a child with SIGPIPE at its default disposition, which a SIGPIPE that
// reached the process would end.
void withDefaultSigpipe(const std::function<void()>& body)
{
    akvo::test::expectPassesInChild([&] {
        std::signal(SIGPIPE, SIG_DFL);
        body();
    });
}

// Whether SIGPIPE is in the calling thread's mask and whether it is pending.
std::pair<bool, bool> sigpipeState()
{
    sigset_t blocked;
    sigset_t pending;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    sigpending(&pending);
    return {sigismember(&blocked, SIGPIPE) == 1, sigismember(&pending, SIGPIPE) == 1};
}

TEST(CInterfaceSigpipe, ACallAfterTheEngineDiedFailsAndLeavesTheSignalMaskAsItWas)
{
    withDefaultSigpipe([] {
        SimulatorProcess simulator({"--fixed"});
        const Handle handle = akvo::test::connectedHandle(simulator.socketPath());
        simulator.stop(SIGKILL);
        akvo_lipsync_timestamps timestamps = {0, 0, 0, 0};
        const std::string closed = std::string("1005 ") + akvo::test::closedByDistantText;
        EXPECT_EQ(closed, outcome(akvo_lipsync_get_audio_timestamps(handle.get(), &timestamps)));
        EXPECT_EQ(std::make_pair(false, false), sigpipeState());

        // The application's own pending SIGPIPE is not taken.
        sigset_t sigpipe;
        sigemptyset(&sigpipe);
        sigaddset(&sigpipe, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &sigpipe, nullptr);
        raise(SIGPIPE);
        EXPECT_EQ(closed, outcome(akvo_lipsync_get_audio_timestamps(handle.get(), &timestamps)));
        EXPECT_EQ(std::make_pair(true, true), sigpipeState());
    });
}

// The watchdog shuts a connection down while its thread may not have
// written the request yet.
TEST(CInterfaceSigpipe, DeadlinesThatCutWritesShortNeverKillTheProcess)
{
    SimulatorProcess simulator({"--fixed", "--fault", "*:delay:2"});
    withDefaultSigpipe([&] {
        std::vector<std::thread> threads;
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back([&] {
                const Handle handle = akvo::test::newHandle();
                akvo_lipsync_set_deadline(handle.get(), 2);
                for (int call = 0; call < 1000; ++call) {
                    akvo_lipsync_timestamps timestamps = {0, 0, 0, 0};
                    const int32_t connected =
                        akvo_lipsync_connect(handle.get(), simulator.socketPath().c_str());
                    EXPECT_TRUE(connected == AKVO_LIPSYNC_SUCCESS || connected == AKVO_LIPSYNC_BAD_STATE);
                    const int32_t code = akvo_lipsync_get_audio_timestamps(handle.get(), &timestamps);
                    EXPECT_TRUE(code == AKVO_LIPSYNC_SUCCESS || code == AKVO_LIPSYNC_DEADLINE_EXCEEDED);
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    });
}

} // namespace
