#include "velmo/kvo/lipsyncapi/akvo_lipsync.h"

#include "CopiedText.h"
#include "Deadline.h"
#include "Handle.h"
#include "Process.h"
#include "SigpipeGuard.h"
#include "velmo/kvo/lipsyncapi/Service.h"

#include <exception>
#include <new>
#include <string>
#include <sys/un.h>

using velmo::kvo::common::LipSyncNtpTimestamps;
using velmo::kvo::lipsyncapi::Deadline;
using velmo::kvo::lipsyncapi::HeldTurn;
using velmo::kvo::lipsyncapi::Process;
using velmo::kvo::lipsyncapi::Service;
using velmo::kvo::lipsyncapi::SigpipeGuard;

namespace {

// Per thread, so that no other thread's call can replace a text before its
// caller has read it.
thread_local std::string resultText;

int32_t report(int32_t code, std::string text)
{
    resultText = std::move(text);
    return code;
}

int32_t report(const Service::ServiceResult& result)
{
    return report(result.getErrorCode(), result.format());
}

int32_t invalid(const char* what)
{
    return report(AKVO_LIPSYNC_INVALID_PARAM, std::string("Invalid Param (Code 1002): ") + what + " is NULL");
}

// No exception leaves the interface.
template <class Body>
int32_t withoutExceptions(Body body) noexcept
{
    try {
        return body();
    } catch (const std::exception&) {
        try {
            resultText = "Unknown error (Code 1001): Not enough memory for the call";
        } catch (const std::exception&) {
            resultText.clear();
        }
        return AKVO_LIPSYNC_UNKNOWN_ERROR;
    }
}

enum class Waits
{
    OnlyForItsTurn,
    ForTheEngine
};

// Runs one call in its turn; the call reports its own result. A call that
// waits for the engine under a deadline is watched; if the watchdog had to
// close the link, the Service is disconnected, so that the answer still on
// its way can only reach a closed socket and never a later request.
template <class Call>
int32_t run(akvo_lipsync_service* handle, Waits waits, Call call) noexcept
{
    return withoutExceptions([&] {
        if (handle == nullptr) {
            return invalid("service");
        }
        const SigpipeGuard sigpipeGuard;
        const Deadline deadline(handle->deadlineMs.load());
        Process& process = Process::get();
        HeldTurn handleTurn;
        HeldTurn engineTurn;
        // Always the handle's turn first: a caller holding several handles
        // cannot build a cycle.
        if (!deadline.take(handle->turn, handleTurn) ||
            (waits == Waits::ForTheEngine && !deadline.take(process.exchangeTurn(), engineTurn))) {
            return report(AKVO_LIPSYNC_DEADLINE_EXCEEDED, deadline.waitedTooLong());
        }
        handle->connection.settleInChild(handle->service);
        velmo::kvo::comms::Link* watched =
            waits == Waits::ForTheEngine && deadline.isSet() ? handle->connection.link() : nullptr;
        if (watched != nullptr && !process.watchdog().arm(*watched, deadline.at())) {
            return report(AKVO_LIPSYNC_UNKNOWN_ERROR,
                          "Unknown error (Code 1001): No thread could be started to watch the deadline");
        }
        int32_t code = AKVO_LIPSYNC_UNKNOWN_ERROR;
        try {
            code = call(*handle, deadline);
        } catch (const std::exception&) {
            // Out of memory for the result text: the watchdog must not keep a
            // link that a later disconnect frees.
            if (watched != nullptr) {
                process.watchdog().disarm();
            }
            throw;
        }
        if (watched != nullptr && process.watchdog().disarm()) {
            std::string cut = deadline.cutShort(resultText);
            handle->connection.disconnect(handle->service);
            return report(AKVO_LIPSYNC_DEADLINE_EXCEEDED, std::move(cut));
        }
        return code;
    });
}

} // namespace

extern "C" {

akvo_lipsync_service* akvo_lipsync_create(void)
{
    akvo_lipsync_service* handle = new (std::nothrow) akvo_lipsync_service;
    try {
        if (handle != nullptr) {
            Process::get().add(*handle);
        }
        return handle;
    } catch (const std::exception&) {
        delete handle;
        return nullptr;
    }
}

// Out of the process's list first: a child forked from now on does not
// count it among its handles.
void akvo_lipsync_destroy(akvo_lipsync_service* service)
{
    if (service == nullptr) {
        return;
    }
    const SigpipeGuard sigpipeGuard;
    Process::get().remove(*service);
    service->connection.settleInChild(service->service);
    delete service;
}

// Not in turn with the calls: a new deadline must not wait behind the call
// that made it necessary.
int32_t akvo_lipsync_set_deadline(akvo_lipsync_service* service, uint32_t milliseconds)
{
    return withoutExceptions([&] {
        if (service == nullptr) {
            return invalid("service");
        }
        service->deadlineMs = milliseconds;
        return report(Service::ServiceResult::success());
    });
}

// The name is checked before anything is done: a Unix address holds at most
// sizeof(sun_path) - 1 bytes and a terminator, and the Service would connect
// a longer name to the socket at its first bytes.
int32_t akvo_lipsync_connect(akvo_lipsync_service* service, const char* socket_name)
{
    return withoutExceptions([&] {
        if (service == nullptr) {
            return invalid("service");
        }
        const std::string name = socket_name == nullptr ? Service::defaultLipsyncSocketName : socket_name;
        constexpr size_t longest = sizeof(sockaddr_un::sun_path) - 1;
        if (name.empty()) {
            return report(AKVO_LIPSYNC_INVALID_PARAM, "Invalid Param (Code 1002): socket_name is empty");
        }
        if (name.size() > longest) {
            return report(AKVO_LIPSYNC_INVALID_PARAM,
                          "Invalid Param (Code 1002): socket_name is " + std::to_string(name.size()) +
                              " bytes long, more than the " + std::to_string(longest) +
                              " that a Unix socket address holds");
        }
        return run(
            service, Waits::OnlyForItsTurn, [&](akvo_lipsync_service& handle, const Deadline& deadline) {
                bool outOfTime = false;
                const Service::ServiceResult result =
                    handle.connection.connect(handle.service, name, deadline, outOfTime);
                return outOfTime
                           ? report(AKVO_LIPSYNC_DEADLINE_EXCEEDED, deadline.notAccepted(result.format()))
                           : report(result);
            });
    });
}

int32_t akvo_lipsync_disconnect(akvo_lipsync_service* service)
{
    return run(service, Waits::OnlyForItsTurn, [](akvo_lipsync_service& handle, const Deadline&) {
        return report(handle.connection.disconnect(handle.service));
    });
}

int akvo_lipsync_is_connected(const akvo_lipsync_service* service)
{
    return service != nullptr && service->connection.isConnected() ? 1 : 0;
}

int32_t akvo_lipsync_get_capabilities(akvo_lipsync_service* service, uint64_t* granularity_ms,
                                      uint64_t* max_audio_delay_margin_ms)
{
    if (granularity_ms == nullptr || max_audio_delay_margin_ms == nullptr) {
        return withoutExceptions([&] {
            return invalid(granularity_ms == nullptr ? "granularity_ms" : "max_audio_delay_margin_ms");
        });
    }
    unsigned long long granularity = 0;
    unsigned long long maximum = 0;
    const int32_t code =
        run(service, Waits::OnlyForItsTurn, [&](akvo_lipsync_service& handle, const Deadline&) {
            return report(handle.service.getCapabilities(granularity, maximum));
        });
    if (code == AKVO_LIPSYNC_SUCCESS) {
        *granularity_ms = granularity;
        *max_audio_delay_margin_ms = maximum;
    }
    return code;
}

int32_t akvo_lipsync_set_audio_delay_margin(akvo_lipsync_service* service, uint64_t delay_ms)
{
    return run(service, Waits::ForTheEngine, [&](akvo_lipsync_service& handle, const Deadline&) {
        return report(handle.service.setAudioDelayMargin(delay_ms));
    });
}

int32_t akvo_lipsync_get_audio_delay_margin(akvo_lipsync_service* service, uint64_t* delay_ms)
{
    if (delay_ms == nullptr) {
        return withoutExceptions([] { return invalid("delay_ms"); });
    }
    unsigned long long margin = 0;
    const int32_t code =
        run(service, Waits::OnlyForItsTurn, [&](akvo_lipsync_service& handle, const Deadline&) {
            return report(handle.service.getAudioDelayMargin(margin));
        });
    if (code == AKVO_LIPSYNC_SUCCESS) {
        *delay_ms = margin;
    }
    return code;
}

// The Service logs the record it was given even when the call fails, so it
// starts from the caller's values; they are handed back only on success,
// which a call cut by its deadline is not.
int32_t akvo_lipsync_get_audio_timestamps(akvo_lipsync_service* service, akvo_lipsync_timestamps* timestamps)
{
    if (timestamps == nullptr) {
        return withoutExceptions([] { return invalid("timestamps"); });
    }
    LipSyncNtpTimestamps values = {timestamps->capture, timestamps->rendering, timestamps->receiving,
                                   timestamps->jitter_buffer_depth};
    const int32_t code =
        run(service, Waits::ForTheEngine, [&](akvo_lipsync_service& handle, const Deadline&) {
            return report(handle.service.getAudioTimestamps(values));
        });
    if (code == AKVO_LIPSYNC_SUCCESS) {
        *timestamps = {values.tCap, values.tRdr, values.tRcv, values.jbmDepth};
    }
    return code;
}

int32_t akvo_lipsync_set_video_timestamps(akvo_lipsync_service* service,
                                          const akvo_lipsync_timestamps* timestamps)
{
    if (timestamps == nullptr) {
        return withoutExceptions([] { return invalid("timestamps"); });
    }
    const LipSyncNtpTimestamps values = {timestamps->capture, timestamps->rendering, timestamps->receiving,
                                         timestamps->jitter_buffer_depth};
    return run(service, Waits::OnlyForItsTurn, [&](akvo_lipsync_service& handle, const Deadline&) {
        return report(handle.service.setVideoTimestamps(values));
    });
}

size_t akvo_lipsync_result_text(char* buffer, size_t size)
{
    return velmo::kvo::lipsyncapi::copyText(resultText, buffer, size);
}

} // extern "C"
