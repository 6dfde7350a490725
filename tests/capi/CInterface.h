#ifndef AKVO_TESTS_CAPI_CINTERFACE_H
#define AKVO_TESTS_CAPI_CINTERFACE_H

#include "ResultTexts.h"
#include "Simulator.h"
#include "velmo/kvo/lipsyncapi/akvo_lipsync.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <unistd.h>

// Where the C struct's name is looked up.
inline bool operator==(const akvo_lipsync_timestamps& a, const akvo_lipsync_timestamps& b)
{
    return a.capture == b.capture && a.rendering == b.rendering && a.receiving == b.receiving &&
           a.jitter_buffer_depth == b.jitter_buffer_depth;
}

namespace akvo {
namespace test {

struct DestroyHandle
{
    void operator()(akvo_lipsync_service* service) const { akvo_lipsync_destroy(service); }
};

using Handle = std::unique_ptr<akvo_lipsync_service, DestroyHandle>;

inline Handle newHandle()
{
    return Handle(akvo_lipsync_create());
}

// A call's code and the calling thread's result text in one string, which a
// failed comparison shows whole.
inline std::string outcome(int32_t code)
{
    std::string text(akvo_lipsync_result_text(nullptr, 0), '\0');
    akvo_lipsync_result_text(&text[0], text.size() + 1);
    return std::to_string(code) + " " + text;
}

const std::string succeeded = "1000 Success";
const std::string notConnected = std::string("1003 ") + notConnectedText;
// What akvo-lipsync-sim --fixed answers.
const akvo_lipsync_timestamps fixedTimestamps = {16045690984833536ULL, 16045690985263104ULL,
                                                 16045690984404992ULL, 40};

inline Handle connectedHandle(const std::string& socketPath)
{
    Handle handle = newHandle();
    EXPECT_EQ(succeeded, outcome(akvo_lipsync_connect(handle.get(), socketPath.c_str())));
    return handle;
}

// Whether the simulator's standard error holds `text`, waiting up to 10 s.
inline bool simulatorSaid(const SimulatorProcess& simulator, const std::string& text)
{
    for (int waited = 0; waited < 10000; waited += 5) {
        if (simulator.errorOutput().find(text) != std::string::npos) {
            return true;
        }
        usleep(5000);
    }
    return false;
}

} // namespace test
} // namespace akvo

#endif
