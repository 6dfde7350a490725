#ifndef VELMO_KVO_LIPSYNC_GETAUDIOTS_H
#define VELMO_KVO_LIPSYNC_GETAUDIOTS_H

#include "velmo/kvo/cmdfrmwrk/Command.h"
#include "velmo/kvo/common/LipSyncNtpTimestamps.h"

namespace velmo {
namespace kvo {
namespace lipsync {

// Reads the audio path's current timestamps from the engine.
struct GetAudioTs
{
    struct Request
    {
    };

    struct Answer : cmdfrmwrk::Command::Answer
    {
        common::LipSyncNtpTimestamps timestamps{};
    };
};

} // namespace lipsync
} // namespace kvo
} // namespace velmo

#endif
