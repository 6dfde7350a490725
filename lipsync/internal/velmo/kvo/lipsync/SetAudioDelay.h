#ifndef VELMO_KVO_LIPSYNC_SETAUDIODELAY_H
#define VELMO_KVO_LIPSYNC_SETAUDIODELAY_H

#include "velmo/kvo/cmdfrmwrk/Command.h"

namespace velmo {
namespace kvo {
namespace lipsync {

// Sets the delay margin that the audio path may take on.
struct SetAudioDelay
{
    struct Request
    {
        unsigned long long delayMs;
    };

    struct Answer : cmdfrmwrk::Command::Answer
    {
    };
};

} // namespace lipsync
} // namespace kvo
} // namespace velmo

#endif
