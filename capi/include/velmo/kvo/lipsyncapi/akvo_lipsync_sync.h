#ifndef VELMO_KVO_LIPSYNCAPI_AKVO_LIPSYNC_SYNC_H
#define VELMO_KVO_LIPSYNCAPI_AKVO_LIPSYNC_SYNC_H

/**
 * @file
 * Lip sync for C: the controller that decides the audio delay margin and the
 * extra video delay from each poll's timestamps, and the runner that drives
 * it over a service handle of akvo_lipsync.h. They are
 * velmo::kvo::sync::Controller and velmo::kvo::sync::Runner one to one
 * (docs/sync.md tells how they decide). The header compiles as C99 and as C++.
 *
 * Codes: every function that returns an int32_t returns #AKVO_LIPSYNC_SUCCESS,
 * #AKVO_LIPSYNC_INVALID_PARAM for a NULL handle or pointer (nothing done), or
 * #AKVO_LIPSYNC_UNKNOWN_ERROR when memory ran out (the poll or update may
 * then be half done). None of them changes akvo_lipsync_result_text(): after
 * a runner's poll it holds the text of the last service call that the poll
 * made on the calling thread. What the engine answered is in the runner's
 * report: the codes of its calls, and the text of the last one that failed
 * in akvo_lipsync_sync_runner_last_failure().
 *
 * Threads: a controller or a runner is used by one thread at a time; calls
 * on two of them may run at once. A runner's calls to its service handle
 * follow the handle's rules (akvo_lipsync.h), and its deadline bounds them.
 */

#include "velmo/kvo/lipsyncapi/akvo_lipsync.h"

#ifdef __cplusplus
extern "C" {
#endif

/** What the controller is doing (akvo_lipsync_sync_decision::state). */
enum akvo_lipsync_sync_state
{
    /** Not yet a delay estimate from both sides; the skews are 0. */
    AKVO_LIPSYNC_SYNC_STARTING = 0,
    /** The skew is where it should be, or on its way there. */
    AKVO_LIPSYNC_SYNC_TRACKING = 1,
    /** A margin change is on its way to the engine or not yet seen at work. */
    AKVO_LIPSYNC_SYNC_MARGIN_PENDING = 2,
    /** The audio readings are held off after a reconnection, until the margin is back in effect. */
    AKVO_LIPSYNC_SYNC_RECOVERING = 3
};

/** What one poll showed: the bits of akvo_lipsync_sync_decision::events. */
enum akvo_lipsync_sync_event
{
    /** The audio timestamps call failed. */
    AKVO_LIPSYNC_SYNC_AUDIO_FAILED = 0x0001,
    /** Audio rendering time before its capture time. */
    AKVO_LIPSYNC_SYNC_AUDIO_RENDERING_BEFORE_CAPTURE = 0x0002,
    /** Audio delay above 10 s (a timestamp with a wrong or wrapped seconds field). */
    AKVO_LIPSYNC_SYNC_AUDIO_DELAY_IMPLAUSIBLE = 0x0004,
    /** Audio capture time moved 2 s or more away from the time the application says has passed. */
    AKVO_LIPSYNC_SYNC_AUDIO_CLOCK_JUMP = 0x0008,
    /** No video frame in this poll. */
    AKVO_LIPSYNC_SYNC_VIDEO_MISSING = 0x0010,
    /** Video rendering time before its capture time. */
    AKVO_LIPSYNC_SYNC_VIDEO_RENDERING_BEFORE_CAPTURE = 0x0020,
    /** Video delay above 10 s. */
    AKVO_LIPSYNC_SYNC_VIDEO_DELAY_IMPLAUSIBLE = 0x0040,
    /** Video capture time jumped against the application's clock. */
    AKVO_LIPSYNC_SYNC_VIDEO_CLOCK_JUMP = 0x0080,
    /** The poll came more than 3 intervals after the previous one. */
    AKVO_LIPSYNC_SYNC_POLL_GAP = 0x0100,
    /** The poll's time was before the previous poll's: the poll was ignored. */
    AKVO_LIPSYNC_SYNC_TIME_WENT_BACK = 0x0200,
    /** The audio delay stepped, and the readings after the step confirmed it. */
    AKVO_LIPSYNC_SYNC_AUDIO_STEP = 0x0400,
    /** The video delay stepped, and the readings after the step confirmed it. */
    AKVO_LIPSYNC_SYNC_VIDEO_STEP = 0x0800,
    /** A reconnection was reported since the previous poll. */
    AKVO_LIPSYNC_SYNC_RECONNECTED = 0x1000,
    /** After a reconnection the audio delay fell by about the margin: the
        engine had forgotten it (it is being re-applied). */
    AKVO_LIPSYNC_SYNC_MARGIN_FORGOTTEN = 0x2000,
    /** The engine refused the margin, or the call failed; it is asked again. */
    AKVO_LIPSYNC_SYNC_MARGIN_REFUSED = 0x4000,
    /** A margin change was seen at work, and its gain and lag were measured. */
    AKVO_LIPSYNC_SYNC_MARGIN_LEARNT = 0x8000
};

/** The video frame on screen: NTP 64-bit times on one clock; its delay is rendering - capture. */
typedef struct akvo_lipsync_sync_video
{
    uint64_t capture;   /**< When the frame was captured. */
    uint64_t rendering; /**< When it was rendered, with the video delay of the previous decision. */
} akvo_lipsync_sync_video;

/** One poll's input to a controller. */
typedef struct akvo_lipsync_sync_poll
{
    /** The application's monotonic clock in milliseconds; an earlier time than the previous poll's is
     * ignored. */
    int64_t now_ms;
    /** Non-zero when the audio timestamps call succeeded; `audio` is read only then. */
    int audio_valid;
    /** As akvo_lipsync_get_audio_timestamps() filled them (capture and rendering are used). */
    akvo_lipsync_timestamps audio;
    /** Non-zero when a frame is on screen; `video` is read only then. */
    int video_valid;
    /** The frame on screen. */
    akvo_lipsync_sync_video video;
} akvo_lipsync_sync_poll;

/** The controller's answer to one poll. */
typedef struct akvo_lipsync_sync_decision
{
    /** The audio delay margin the engine should hold: 0 to 100, a multiple of 20. */
    uint32_t margin_ms;
    /** Non-zero when `margin_ms` must be sent now (changed, or again after a
        reconnection or a refusal); report the outcome with
        akvo_lipsync_sync_controller_margin_applied(). A runner has sent it. */
    int apply_margin;
    /** The extra delay to give the video frames from now on, in milliseconds
        (0 or more, already rate-limited: use it as it is). */
    double video_delay_ms;
    /** An #akvo_lipsync_sync_state. */
    int32_t state;
    /** Non-zero when the skew is beyond what margin and video delay can bring
        into the window; the decision is then the closest reachable. */
    int infeasible;
    /** The #akvo_lipsync_sync_event bits that this poll showed. */
    uint32_t events;
    /** The skew estimate (audio delay - video delay, ms) with the margin the
        engine accepted last and this video delay: what an observer sees. */
    double skew_ms;
    /** The skew estimate without margin and video delay: what the controller corrects. */
    double uncorrected_skew_ms;
} akvo_lipsync_sync_decision;

/** What a controller has learnt of the engine's response to margin changes. */
typedef struct akvo_lipsync_sync_margin_response
{
    double gain;           /**< Audio delay change per millisecond of margin (1 until a change is seen). */
    double lag_ms;         /**< From the engine's acceptance to the effect (300 until a change is seen). */
    uint32_t changes_seen; /**< How many changes these numbers come from (0: the initial assumptions). */
} akvo_lipsync_sync_margin_response;

/** A controller; opaque. */
typedef struct akvo_lipsync_sync_controller akvo_lipsync_sync_controller;

/**
 * A new controller for polls every `poll_interval_ms` (which tells gaps from
 * polls; 0 counts as 1); NULL when out of memory. It has no I/O, no thread and
 * no clock: time and readings come in with each poll.
 */
AKVO_LIPSYNC_API akvo_lipsync_sync_controller* akvo_lipsync_sync_controller_create(uint32_t poll_interval_ms);

/** Frees the controller; NULL is ignored. */
AKVO_LIPSYNC_API void akvo_lipsync_sync_controller_destroy(akvo_lipsync_sync_controller* controller);

/** Takes one poll and writes the decision. */
AKVO_LIPSYNC_API int32_t akvo_lipsync_sync_controller_update(akvo_lipsync_sync_controller* controller,
                                                             const akvo_lipsync_sync_poll* poll,
                                                             akvo_lipsync_sync_decision* decision);

/**
 * Reports the outcome of sending `margin_ms` at `now_ms`: `accepted` non-zero
 * when akvo_lipsync_set_audio_delay_margin() succeeded. A refusal makes the
 * next decision ask for the margin again.
 */
AKVO_LIPSYNC_API int32_t akvo_lipsync_sync_controller_margin_applied(akvo_lipsync_sync_controller* controller,
                                                                     int64_t now_ms, uint32_t margin_ms,
                                                                     int accepted);

/**
 * Reports a new connection to the engine, which may have restarted and
 * forgotten the margin: the next decision re-applies it, and the audio
 * readings are held off until it is back in effect.
 */
AKVO_LIPSYNC_API int32_t akvo_lipsync_sync_controller_reconnected(akvo_lipsync_sync_controller* controller);

/** Writes what the controller has learnt of the engine's response to margin changes. */
AKVO_LIPSYNC_API int32_t akvo_lipsync_sync_controller_margin_response(
    const akvo_lipsync_sync_controller* controller, akvo_lipsync_sync_margin_response* response);

/** What one poll of a runner did and decided. */
typedef struct akvo_lipsync_sync_report
{
    /** The controller's decision; its margin has been sent when `apply_margin` is set and the service
        was connected. */
    akvo_lipsync_sync_decision decision;
    /** Non-zero when the service is connected after this poll. */
    int connected;
    /** The code of this poll's timestamps call, or of the connection attempt
        that failed before it (e.g. #AKVO_LIPSYNC_CANNOT_CONNECT), or
        #AKVO_LIPSYNC_DEADLINE_EXCEEDED when the handle's deadline ended it. */
    int32_t timestamps_code;
    /** The code of the margin sent in this poll; #AKVO_LIPSYNC_SUCCESS when none was sent. */
    int32_t margin_code;
    /** The audio timestamps this poll read; all 0 unless `timestamps_code` is #AKVO_LIPSYNC_SUCCESS. */
    akvo_lipsync_timestamps audio;
} akvo_lipsync_sync_report;

/** A runner; opaque. */
typedef struct akvo_lipsync_sync_runner akvo_lipsync_sync_runner;

/**
 * A runner that keeps a call in lip sync over `service`, a handle of
 * akvo_lipsync.h, and a controller of its own for polls every
 * `poll_interval_ms`; NULL when out of memory or when `service` is NULL.
 * Each poll connects the handle to `socket_name` (NULL: the default
 * "/dev/socket/akvo_lipsync") when it is not connected, reads the audio
 * timestamps, hands them with the frame on screen to the controller, and
 * sends the margin that the controller asks for. A transport failure
 * (#AKVO_LIPSYNC_TRANSPORT_ERROR) disconnects the handle, and so does a
 * deadline that ended an exchange: the next poll connects anew and
 * re-applies the margin, since the engine may have restarted.
 *
 * The calls are the handle's: its deadline (akvo_lipsync_set_deadline())
 * bounds each, none lets SIGPIPE reach the process, and a forked child starts
 * with the handle disconnected. The handle stays the application's: it must
 * outlive the runner, and only the runner connects and disconnects it while
 * the runner is in use (a connection it did not make is used as it is, and
 * the controller is not told of it). The application applies the video delay
 * of each report to the frames it shows from then on.
 */
AKVO_LIPSYNC_API akvo_lipsync_sync_runner* akvo_lipsync_sync_runner_create(akvo_lipsync_service* service,
                                                                           const char* socket_name,
                                                                           uint32_t poll_interval_ms);

/**
 * The calls a runner makes to reach the engine, for a runner over a service
 * that a language binding wraps (the Java binding's LipSyncService); a C
 * program uses akvo_lipsync_sync_runner_create(). Each function gets
 * `context` and does what the akvo_lipsync_ function of the same name does
 * on the wrapped handle, with its codes, and leaves the text of a failure
 * for akvo_lipsync_result_text() on the calling thread: calling that
 * function on the same thread does both.
 */
typedef struct akvo_lipsync_sync_calls
{
    /** Handed to every function. */
    void* context;
    /** As akvo_lipsync_is_connected(). */
    int (*is_connected)(void* context);
    /** As akvo_lipsync_connect() to the engine's socket. */
    int32_t (*connect)(void* context);
    /** As akvo_lipsync_disconnect(). */
    int32_t (*disconnect)(void* context);
    /** As akvo_lipsync_get_audio_timestamps(). */
    int32_t (*get_audio_timestamps)(void* context, akvo_lipsync_timestamps* timestamps);
    /** As akvo_lipsync_set_audio_delay_margin(). */
    int32_t (*set_audio_delay_margin)(void* context, uint64_t delay_ms);
} akvo_lipsync_sync_calls;

/**
 * A runner as akvo_lipsync_sync_runner_create() makes, over `calls` (copied;
 * none may be NULL) instead of a handle; NULL when out of memory or when
 * `calls` or one of its functions is NULL.
 */
AKVO_LIPSYNC_API akvo_lipsync_sync_runner*
akvo_lipsync_sync_runner_create_over(const akvo_lipsync_sync_calls* calls, uint32_t poll_interval_ms);

/** Frees the runner and its controller; NULL is ignored. The service handle is left as it is. */
AKVO_LIPSYNC_API void akvo_lipsync_sync_runner_destroy(akvo_lipsync_sync_runner* runner);

/**
 * One poll at `now_ms` (the application's monotonic clock, in milliseconds)
 * with the frame on screen, or NULL when there is none; writes what it did
 * into `report`. Blocks in the calls to the engine.
 */
AKVO_LIPSYNC_API int32_t akvo_lipsync_sync_runner_poll(akvo_lipsync_sync_runner* runner, int64_t now_ms,
                                                       const akvo_lipsync_sync_video* video,
                                                       akvo_lipsync_sync_report* report);

/** Fills `*video` with the frame on screen and returns non-zero, or returns 0 when there is none. */
typedef int (*akvo_lipsync_sync_frame_fn)(void* context, akvo_lipsync_sync_video* video);
/** Takes one poll's report; returns non-zero to go on polling, 0 to stop. */
typedef int (*akvo_lipsync_sync_report_fn)(void* context, const akvo_lipsync_sync_report* report);

/**
 * Polls every poll interval on the monotonic clock, the time counted from
 * this call, until `report` returns 0: before each poll `frame` is asked for
 * the frame on screen. Both get `context`. The functions may call any
 * function of this header on the runner but its poll and run. A poll that
 * runs late is followed by the next at once, so that the polls keep their
 * rate on average.
 */
AKVO_LIPSYNC_API int32_t akvo_lipsync_sync_runner_run(akvo_lipsync_sync_runner* runner,
                                                      akvo_lipsync_sync_frame_fn frame,
                                                      akvo_lipsync_sync_report_fn report, void* context);

/**
 * Copies the text of the runner's last failed call to the engine (its whole
 * result text, as akvo_lipsync_result_text() gave it) into `buffer` as
 * akvo_lipsync_result_text() does, and returns its whole length; "" and 0
 * when no call has failed, or when `runner` is NULL.
 */
AKVO_LIPSYNC_API size_t akvo_lipsync_sync_runner_last_failure(const akvo_lipsync_sync_runner* runner,
                                                              char* buffer, size_t size);

/** Writes what the runner's controller has learnt of the engine's response to margin changes. */
AKVO_LIPSYNC_API int32_t akvo_lipsync_sync_runner_margin_response(
    const akvo_lipsync_sync_runner* runner, akvo_lipsync_sync_margin_response* response);

#ifdef __cplusplus
}
#endif

#endif
