#ifndef VELMO_KVO_LIPSYNCAPI_PROCESS_H
#define VELMO_KVO_LIPSYNCAPI_PROCESS_H

#include "Handle.h"
#include "Turn.h"
#include "Watchdog.h"

#include <mutex>

namespace velmo {
namespace kvo {
namespace lipsyncapi {

// What the C interface keeps for the whole process: the live handles, the
// turn of the calls that wait for the engine (the text protocol receives
// through one buffer for the whole process), and the one watchdog. A child
// of fork() starts from it in a known state: no call in progress, no
// watchdog thread, and no handle connected (their connections are the
// parent's). Never destroyed, so that a handle may outlive the library's
// static objects at exit.
class Process
{
public:
    static Process& get();

    void add(akvo_lipsync_service& handle);
    // With the last handle goes the watchdog's thread, so that a process
    // that is done with the library keeps no thread of it.
    void remove(akvo_lipsync_service& handle);

    Turn& exchangeTurn() { return _exchangeTurn; }
    Watchdog& watchdog() { return _watchdog; }

    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

private:
    Process();

    static void prepareFork();
    static void afterForkInParent();
    static void afterForkInChild();

    std::mutex _mutex;
    akvo_lipsync_service* _first = nullptr;
    Turn _exchangeTurn;
    Watchdog _watchdog;
};

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo

#endif
