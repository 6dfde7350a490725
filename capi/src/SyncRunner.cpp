#include "CopiedText.h"
#include "SyncValues.h"

#include <string>

using velmo::kvo::common::LipSyncNtpTimestamps;
using velmo::kvo::lipsyncapi::codeOf;
using velmo::kvo::lipsyncapi::toC;
using velmo::kvo::sync::Engine;
using velmo::kvo::sync::PollLoop;
using velmo::kvo::sync::PollReport;
using velmo::kvo::sync::VideoTimestamps;

namespace {

// The engine through the calls of a runner; the text of a failure is the
// calling thread's result text, which the call left.
class CallsEngine final : public Engine
{
public:
    explicit CallsEngine(const akvo_lipsync_sync_calls& calls) : _calls(calls) {}

    bool isConnected() override { return _calls.is_connected(_calls.context) != 0; }

    int32_t connect(std::string& failure) override { return noted(_calls.connect(_calls.context), failure); }

    void disconnect() override { _calls.disconnect(_calls.context); }

    int32_t getAudioTimestamps(LipSyncNtpTimestamps& audio, std::string& failure) override
    {
        akvo_lipsync_timestamps timestamps = {0, 0, 0, 0};
        const int32_t code = noted(_calls.get_audio_timestamps(_calls.context, &timestamps), failure);
        if (code == AKVO_LIPSYNC_SUCCESS) {
            audio = {timestamps.capture, timestamps.rendering, timestamps.receiving,
                     timestamps.jitter_buffer_depth};
        }
        return code;
    }

    int32_t setAudioDelayMargin(unsigned marginMs, std::string& failure) override
    {
        return noted(_calls.set_audio_delay_margin(_calls.context, marginMs), failure);
    }

private:
    static int32_t noted(int32_t code, std::string& failure)
    {
        if (code != AKVO_LIPSYNC_SUCCESS) {
            failure.resize(akvo_lipsync_result_text(nullptr, 0));
            akvo_lipsync_result_text(&failure[0], failure.size() + 1);
        }
        return code;
    }

    akvo_lipsync_sync_calls _calls;
};

// A runner's own service handle and the socket it connects to.
struct HandleTarget
{
    akvo_lipsync_service* service;
    bool defaultSocket;
    std::string socketName;
};

HandleTarget& targetOf(void* context)
{
    return *static_cast<HandleTarget*>(context);
}

akvo_lipsync_sync_calls callsOn(HandleTarget& target)
{
    return {&target,
            [](void* context) { return akvo_lipsync_is_connected(targetOf(context).service); },
            [](void* context) {
                const HandleTarget& target = targetOf(context);
                return akvo_lipsync_connect(target.service,
                                            target.defaultSocket ? nullptr : target.socketName.c_str());
            },
            [](void* context) { return akvo_lipsync_disconnect(targetOf(context).service); },
            [](void* context, akvo_lipsync_timestamps* timestamps) {
                return akvo_lipsync_get_audio_timestamps(targetOf(context).service, timestamps);
            },
            [](void* context, uint64_t delayMs) {
                return akvo_lipsync_set_audio_delay_margin(targetOf(context).service, delayMs);
            }};
}

bool complete(const akvo_lipsync_sync_calls* calls)
{
    return calls != nullptr && calls->is_connected != nullptr && calls->connect != nullptr &&
           calls->disconnect != nullptr && calls->get_audio_timestamps != nullptr &&
           calls->set_audio_delay_margin != nullptr;
}

} // namespace

struct akvo_lipsync_sync_runner
{
    akvo_lipsync_sync_runner(const akvo_lipsync_sync_calls& calls, uint32_t pollIntervalMs)
        : target{nullptr, true, ""}, engine(calls), loop(engine, pollIntervalMs)
    {
    }

    akvo_lipsync_sync_runner(akvo_lipsync_service* service, const char* socketName, uint32_t pollIntervalMs)
        : target{service, socketName == nullptr, socketName == nullptr ? "" : socketName},
          engine(callsOn(target)), loop(engine, pollIntervalMs)
    {
    }

    // A runner over a handle only; before the engine, whose calls reach it.
    HandleTarget target;
    CallsEngine engine;
    PollLoop loop;
};

extern "C" {

akvo_lipsync_sync_runner* akvo_lipsync_sync_runner_create(akvo_lipsync_service* service,
                                                          const char* socket_name, uint32_t poll_interval_ms)
{
    try {
        return service == nullptr ? nullptr
                                  : new akvo_lipsync_sync_runner(service, socket_name, poll_interval_ms);
    } catch (const std::exception&) {
        return nullptr;
    }
}

akvo_lipsync_sync_runner* akvo_lipsync_sync_runner_create_over(const akvo_lipsync_sync_calls* calls,
                                                               uint32_t poll_interval_ms)
{
    try {
        return complete(calls) ? new akvo_lipsync_sync_runner(*calls, poll_interval_ms) : nullptr;
    } catch (const std::exception&) {
        return nullptr;
    }
}

void akvo_lipsync_sync_runner_destroy(akvo_lipsync_sync_runner* runner)
{
    delete runner;
}

int32_t akvo_lipsync_sync_runner_poll(akvo_lipsync_sync_runner* runner, int64_t now_ms,
                                      const akvo_lipsync_sync_video* video, akvo_lipsync_sync_report* report)
{
    return codeOf(runner != nullptr && report != nullptr, [&] {
        const VideoTimestamps frame =
            video != nullptr ? VideoTimestamps{video->capture, video->rendering} : VideoTimestamps{0, 0};
        *report = toC(runner->loop.poll(now_ms, video != nullptr ? &frame : nullptr));
    });
}

int32_t akvo_lipsync_sync_runner_run(akvo_lipsync_sync_runner* runner, akvo_lipsync_sync_frame_fn frame,
                                     akvo_lipsync_sync_report_fn report, void* context)
{
    return codeOf(runner != nullptr && frame != nullptr && report != nullptr, [&] {
        runner->loop.run(
            [&](VideoTimestamps& video) {
                akvo_lipsync_sync_video shown = {0, 0};
                const bool onScreen = frame(context, &shown) != 0;
                video = {shown.capture, shown.rendering};
                return onScreen;
            },
            [&](const PollReport& polled) {
                const akvo_lipsync_sync_report copy = toC(polled);
                return report(context, &copy) != 0;
            });
    });
}

size_t akvo_lipsync_sync_runner_last_failure(const akvo_lipsync_sync_runner* runner, char* buffer,
                                             size_t size)
{
    const std::string none;
    return velmo::kvo::lipsyncapi::copyText(runner != nullptr ? runner->loop.lastFailure() : none, buffer,
                                            size);
}

int32_t akvo_lipsync_sync_runner_margin_response(const akvo_lipsync_sync_runner* runner,
                                                 akvo_lipsync_sync_margin_response* response)
{
    return codeOf(runner != nullptr && response != nullptr,
                  [&] { *response = toC(runner->loop.controller().marginResponse()); });
}

} // extern "C"
