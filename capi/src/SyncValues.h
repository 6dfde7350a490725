#ifndef VELMO_KVO_LIPSYNCAPI_SYNCVALUES_H
#define VELMO_KVO_LIPSYNCAPI_SYNCVALUES_H

#include "velmo/kvo/lipsyncapi/akvo_lipsync_sync.h"
#include "velmo/kvo/sync/PollLoop.h"

#include <exception>

namespace velmo {
namespace kvo {
namespace lipsyncapi {

// The C structs and enumerations are the C++ ones spelled for C.
static_assert(AKVO_LIPSYNC_SYNC_STARTING == static_cast<int>(sync::State::Starting) &&
                  AKVO_LIPSYNC_SYNC_TRACKING == static_cast<int>(sync::State::Tracking) &&
                  AKVO_LIPSYNC_SYNC_MARGIN_PENDING == static_cast<int>(sync::State::MarginPending) &&
                  AKVO_LIPSYNC_SYNC_RECOVERING == static_cast<int>(sync::State::Recovering),
              "the C states are the C++ ones");
constexpr unsigned cEvents[] = {
    AKVO_LIPSYNC_SYNC_AUDIO_FAILED,
    AKVO_LIPSYNC_SYNC_AUDIO_RENDERING_BEFORE_CAPTURE,
    AKVO_LIPSYNC_SYNC_AUDIO_DELAY_IMPLAUSIBLE,
    AKVO_LIPSYNC_SYNC_AUDIO_CLOCK_JUMP,
    AKVO_LIPSYNC_SYNC_VIDEO_MISSING,
    AKVO_LIPSYNC_SYNC_VIDEO_RENDERING_BEFORE_CAPTURE,
    AKVO_LIPSYNC_SYNC_VIDEO_DELAY_IMPLAUSIBLE,
    AKVO_LIPSYNC_SYNC_VIDEO_CLOCK_JUMP,
    AKVO_LIPSYNC_SYNC_POLL_GAP,
    AKVO_LIPSYNC_SYNC_TIME_WENT_BACK,
    AKVO_LIPSYNC_SYNC_AUDIO_STEP,
    AKVO_LIPSYNC_SYNC_VIDEO_STEP,
    AKVO_LIPSYNC_SYNC_RECONNECTED,
    AKVO_LIPSYNC_SYNC_MARGIN_FORGOTTEN,
    AKVO_LIPSYNC_SYNC_MARGIN_REFUSED,
    AKVO_LIPSYNC_SYNC_MARGIN_LEARNT,
};
constexpr unsigned cxxEvents[] = {
    sync::AudioFailed,
    sync::AudioRenderingBeforeCapture,
    sync::AudioDelayImplausible,
    sync::AudioClockJump,
    sync::VideoMissing,
    sync::VideoRenderingBeforeCapture,
    sync::VideoDelayImplausible,
    sync::VideoClockJump,
    sync::PollGap,
    sync::TimeWentBack,
    sync::AudioStep,
    sync::VideoStep,
    sync::Reconnected,
    sync::MarginForgotten,
    sync::MarginRefused,
    sync::MarginLearnt,
};
constexpr bool sameEvents(unsigned at = 0)
{
    return at == sizeof(cEvents) / sizeof(cEvents[0]) || (cEvents[at] == cxxEvents[at] && sameEvents(at + 1));
}
static_assert(sameEvents(), "the C events are the C++ bits");

inline akvo_lipsync_timestamps toC(const common::LipSyncNtpTimestamps& audio)
{
    return {audio.tCap, audio.tRdr, audio.tRcv, audio.jbmDepth};
}

inline akvo_lipsync_sync_decision toC(const sync::Decision& decision)
{
    return {decision.marginMs,
            decision.applyMargin ? 1 : 0,
            decision.videoDelayMs,
            static_cast<int32_t>(decision.state),
            decision.infeasible ? 1 : 0,
            decision.events,
            decision.skewMs,
            decision.uncorrectedSkewMs};
}

inline akvo_lipsync_sync_report toC(const sync::PollReport& report)
{
    return {toC(report.decision), report.connected ? 1 : 0, report.timestampsCode, report.marginCode,
            toC(report.audio)};
}

inline akvo_lipsync_sync_margin_response toC(const sync::MarginResponse& response)
{
    return {response.gain, response.lagMs, response.changesSeen};
}

// A sync call with its NULL checks done: memory that runs out is a code, and
// no exception leaves the interface.
template <class Body>
int32_t codeOf(bool argumentsGiven, Body body) noexcept
{
    if (!argumentsGiven) {
        return AKVO_LIPSYNC_INVALID_PARAM;
    }
    try {
        body();
        return AKVO_LIPSYNC_SUCCESS;
    } catch (const std::exception&) {
        return AKVO_LIPSYNC_UNKNOWN_ERROR;
    }
}

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo

#endif
