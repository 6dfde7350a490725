#include "SyncValues.h"

using velmo::kvo::lipsyncapi::codeOf;
using velmo::kvo::lipsyncapi::toC;
using velmo::kvo::sync::Controller;
using velmo::kvo::sync::Poll;

struct akvo_lipsync_sync_controller
{
    explicit akvo_lipsync_sync_controller(uint32_t pollIntervalMs) : controller(pollIntervalMs) {}

    Controller controller;
};

extern "C" {

akvo_lipsync_sync_controller* akvo_lipsync_sync_controller_create(uint32_t poll_interval_ms)
{
    try {
        return new akvo_lipsync_sync_controller(poll_interval_ms);
    } catch (const std::exception&) {
        return nullptr;
    }
}

void akvo_lipsync_sync_controller_destroy(akvo_lipsync_sync_controller* controller)
{
    delete controller;
}

int32_t akvo_lipsync_sync_controller_update(akvo_lipsync_sync_controller* controller,
                                            const akvo_lipsync_sync_poll* poll,
                                            akvo_lipsync_sync_decision* decision)
{
    return codeOf(controller != nullptr && poll != nullptr && decision != nullptr, [&] {
        const akvo_lipsync_timestamps& audio = poll->audio;
        const Poll input{poll->now_ms,
                         poll->audio_valid != 0,
                         {audio.capture, audio.rendering, audio.receiving, audio.jitter_buffer_depth},
                         poll->video_valid != 0,
                         {poll->video.capture, poll->video.rendering}};
        *decision = toC(controller->controller.update(input));
    });
}

int32_t akvo_lipsync_sync_controller_margin_applied(akvo_lipsync_sync_controller* controller, int64_t now_ms,
                                                    uint32_t margin_ms, int accepted)
{
    return codeOf(controller != nullptr,
                  [&] { controller->controller.marginApplied(now_ms, margin_ms, accepted != 0); });
}

int32_t akvo_lipsync_sync_controller_reconnected(akvo_lipsync_sync_controller* controller)
{
    return codeOf(controller != nullptr, [&] { controller->controller.reconnected(); });
}

int32_t akvo_lipsync_sync_controller_margin_response(const akvo_lipsync_sync_controller* controller,
                                                     akvo_lipsync_sync_margin_response* response)
{
    return codeOf(controller != nullptr && response != nullptr,
                  [&] { *response = toC(controller->controller.marginResponse()); });
}

} // extern "C"
