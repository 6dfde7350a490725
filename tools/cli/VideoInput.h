#ifndef VELMO_KVO_CLI_VIDEOINPUT_H
#define VELMO_KVO_CLI_VIDEOINPUT_H

#include "velmo/kvo/lipsyncapi/akvo_lipsync_sync.h"

#include <string>

namespace velmo {
namespace kvo {
namespace cli {

// The video side's frames as `sync --video-stdin` reads them: one line per
// frame on standard input, "CAPTURE RENDERING" as NTP 64-bit decimal numbers;
// the latest line is the frame on screen. Lines are read as they arrive,
// without waiting, so that a slow video side never holds a poll; at the end
// of the input the last frame stays on screen. A line that is no frame is
// reported on standard error and skipped.
class VideoInput
{
public:
    // Reads what has arrived; false while no frame has been seen.
    bool frameOnScreen(akvo_lipsync_sync_video& frame);

private:
    void take(const std::string& line);

    std::string _partial;
    unsigned long long _lines = 0;
    bool _ended = false;
    bool _seen = false;
    akvo_lipsync_sync_video _frame = {0, 0};
};

} // namespace cli
} // namespace kvo
} // namespace velmo

#endif
