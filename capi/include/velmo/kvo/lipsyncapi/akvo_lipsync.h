#ifndef VELMO_KVO_LIPSYNCAPI_AKVO_LIPSYNC_H
#define VELMO_KVO_LIPSYNCAPI_AKVO_LIPSYNC_H

/**
 * @file
 * The lip-sync service for C and for any language with a C foreign function
 * interface. No C++ type crosses this interface, so it is also the library's
 * stable ABI. The header compiles as C99 and as C++.
 *
 * Every operation but akvo_lipsync_is_connected() and
 * akvo_lipsync_result_text() returns the service's code (#AKVO_LIPSYNC_SUCCESS and the
 * failures up to #AKVO_LIPSYNC_NOT_IN_CALL) or
 * #AKVO_LIPSYNC_DEADLINE_EXCEEDED, and leaves the whole text of its result
 * for the calling thread to read with akvo_lipsync_result_text(). A handle or
 * output pointer that is NULL makes an operation return
 * #AKVO_LIPSYNC_INVALID_PARAM.
 *
 * Threads: any thread may call any operation on any handle. Calls on one
 * handle run one after another; calls that wait for the engine
 * (akvo_lipsync_set_audio_delay_margin(), akvo_lipsync_get_audio_timestamps())
 * run one after another in the whole process, whichever handle they use.
 * The interface keeps one thread of its own, the watchdog of the deadlines
 * (see akvo_lipsync_set_deadline()): it starts with the first call that waits
 * for the engine under a deadline, serves every handle, blocks every signal,
 * and ends when the last handle is destroyed.
 *
 * Signals: no operation lets SIGPIPE reach the process, whatever its
 * disposition, and none changes the disposition. A write to a connection that
 * the engine or a deadline closed returns a failure instead; the calling
 * thread's signal mask is the same after the call as before, and a SIGPIPE
 * that was pending before the call is still pending after it (one that
 * another program sends while a call takes back its own may go with it).
 *
 * fork(): a child starts with every handle it inherits disconnected (see
 * akvo_lipsync_is_connected()), whatever the parent was doing with it, and
 * never disturbs the parent's connections: the inherited socket is let go of
 * without a word to the engine, and akvo_lipsync_destroy() returns. The child
 * may connect a handle again; a deadline there is enforced by a watchdog of
 * the child's own. The inherited descriptor names a socket that connects
 * nowhere from the fork on, so a program that the child runs with exec does
 * not hold the connection either. posix_spawn() and vfork() run no fork
 * handlers: a program they start inherits the connection's socket, which is
 * not close-on-exec, as the Service's is not.
 */

#include <stddef.h>
#include <stdint.h>

/** Marks the functions that the library exports. */
#if defined(__GNUC__)
#define AKVO_LIPSYNC_API __attribute__((visibility("default")))
#else
#define AKVO_LIPSYNC_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** What an operation returns; the result text names the same code. */
enum akvo_lipsync_code
{
    /** "Success". */
    AKVO_LIPSYNC_SUCCESS = 1000,
    /** "Unknown error": memory ran out; the service itself never reports it. */
    AKVO_LIPSYNC_UNKNOWN_ERROR = 1001,
    /** "Invalid Param": a margin out of range or off the 20 ms steps, or a
        NULL pointer; nothing was sent. */
    AKVO_LIPSYNC_INVALID_PARAM = 1002,
    /** "Bad state": not connected, or already connected. */
    AKVO_LIPSYNC_BAD_STATE = 1003,
    /** "Cannot connect to Audio KVO": the socket could not be reached. */
    AKVO_LIPSYNC_CANNOT_CONNECT = 1004,
    /** "An error has occured in the transport layer": the exchange failed;
        disconnect and connect again before the next command. */
    AKVO_LIPSYNC_TRANSPORT_ERROR = 1005,
    /** "The lipsync server returned an error": the engine refused. */
    AKVO_LIPSYNC_SERVER_ERROR = 1006,
    /** "The AKVO is not performing a call": the engine is not in a call. */
    AKVO_LIPSYNC_NOT_IN_CALL = 1007,
    /**
     * The handle's deadline passed. Three cases, told apart by the text:
     * - during the exchange with the engine: the connection was closed to end
     *   the wait, the handle is now disconnected (connect it again before the
     *   next call), and the text nests the service's own result, e.g.
     *   "Deadline exceeded (Code 1100): No answer within 50 ms, disconnected
     *   {An error has occured in the transport layer (Code 1005): {...}}"
     *   (the disconnection leaves its log line, as any does);
     * - while connecting: the engine did not accept the connection in time
     *   (its queue of connections is full, because it stopped accepting); the
     *   handle stays disconnected, nothing is left open, and the text nests
     *   the service's result, which is also in the log line, e.g.
     *   "Deadline exceeded (Code 1100): Not accepted within 50 ms {Cannot
     *   connect to Audio KVO (Code 1004): {Connection has failed (Code 20002):
     *   Unable to connect to /dev/socket/akvo_lipsync {Resource temporarily
     *   unavailable (Code 11)}}}";
     * - while waiting for another call on the same handle or for another
     *   exchange in the process: nothing was done and the handle is as it
     *   was; the text reads "Deadline exceeded (Code 1100): Still waiting for
     *   another call after 50 ms, nothing done".
     */
    AKVO_LIPSYNC_DEADLINE_EXCEEDED = 1100
};

/** The audio path's timestamps. */
typedef struct akvo_lipsync_timestamps
{
    uint64_t capture;             /**< Capture time, an NTP 64-bit value. */
    uint64_t rendering;           /**< Rendering time, an NTP 64-bit value. */
    uint64_t receiving;           /**< Receiving time, an NTP 64-bit value. */
    uint64_t jitter_buffer_depth; /**< The jitter buffer's depth, in the engine's own unit. */
} akvo_lipsync_timestamps;

/** A service handle; opaque. */
typedef struct akvo_lipsync_service akvo_lipsync_service;

/** A new, disconnected handle without a deadline; NULL when out of memory. */
AKVO_LIPSYNC_API akvo_lipsync_service* akvo_lipsync_create(void);

/**
 * Disconnects (this leaves a log line like any disconnect) and frees the
 * handle. NULL is ignored. No other call may be running on the handle or be
 * made on it afterwards. Destroying the last handle ends the watchdog's
 * thread, if it runs. In a forked child it lets go of a connection inherited
 * from the parent without touching it.
 */
AKVO_LIPSYNC_API void akvo_lipsync_destroy(akvo_lipsync_service* service);

/**
 * Bounds every later call on the handle to about `milliseconds`, waiting for
 * its turn included; 0 (the default) waits as long as the engine takes. Takes
 * effect at once, even while another thread is in a call on the handle, for
 * the calls that start afterwards. Bounded are the wait for the turn, the
 * wait for the engine to accept a connection, and the wait for the engine's
 * answer, which the watchdog thread ends by closing the connection.
 */
AKVO_LIPSYNC_API int32_t akvo_lipsync_set_deadline(akvo_lipsync_service* service, uint32_t milliseconds);

/**
 * Connects to the engine's Unix socket `socket_name`, or to the default
 * "/dev/socket/akvo_lipsync" when it is NULL, with the results and the log
 * line of the service's connect. A name that is empty, or longer than the
 * 107 bytes that a Unix socket address holds, is refused with
 * #AKVO_LIPSYNC_INVALID_PARAM before anything is done (no log line), e.g.
 * "Invalid Param (Code 1002): socket_name is 123 bytes long, more than the
 * 107 that a Unix socket address holds". Under a deadline, an engine that
 * does not accept the connection in time ends the call with
 * #AKVO_LIPSYNC_DEADLINE_EXCEEDED.
 */
AKVO_LIPSYNC_API int32_t akvo_lipsync_connect(akvo_lipsync_service* service, const char* socket_name);

/** Closes the connection. */
AKVO_LIPSYNC_API int32_t akvo_lipsync_disconnect(akvo_lipsync_service* service);

/**
 * 1 while the handle holds a connection made in this process, else 0 (also
 * for NULL): from a successful akvo_lipsync_connect() until
 * akvo_lipsync_disconnect() or a deadline that closed the connection. A
 * failed exchange (#AKVO_LIPSYNC_TRANSPORT_ERROR) leaves the handle
 * connected. Does not wait for the handle's turn and leaves the result text
 * as it is; a call in progress on another thread may change the answer.
 */
AKVO_LIPSYNC_API int akvo_lipsync_is_connected(const akvo_lipsync_service* service);

/**
 * The margins that akvo_lipsync_set_audio_delay_margin() accepts: multiples
 * of `granularity_ms` (20) up to `max_audio_delay_margin_ms` (100); the
 * engine is not asked. The outputs are written only on success.
 */
AKVO_LIPSYNC_API int32_t akvo_lipsync_get_capabilities(akvo_lipsync_service* service,
                                                       uint64_t* granularity_ms,
                                                       uint64_t* max_audio_delay_margin_ms);

/** Asks the engine to take on an audio delay margin of `delay_ms`. */
AKVO_LIPSYNC_API int32_t akvo_lipsync_set_audio_delay_margin(akvo_lipsync_service* service,
                                                             uint64_t delay_ms);

/**
 * The last margin that the engine accepted, 0 before any; the engine is not
 * asked. The output is written only on success.
 */
AKVO_LIPSYNC_API int32_t akvo_lipsync_get_audio_delay_margin(akvo_lipsync_service* service,
                                                             uint64_t* delay_ms);

/** Asks the engine for the audio path's timestamps, written only on success. */
AKVO_LIPSYNC_API int32_t akvo_lipsync_get_audio_timestamps(akvo_lipsync_service* service,
                                                           akvo_lipsync_timestamps* timestamps);

/**
 * Hands over the video side's timestamps; the engine is not told, the call
 * only checks the connection.
 */
AKVO_LIPSYNC_API int32_t akvo_lipsync_set_video_timestamps(akvo_lipsync_service* service,
                                                           const akvo_lipsync_timestamps* timestamps);

/**
 * Copies the text of the calling thread's latest operation (on any handle)
 * into `buffer`, cut to `size` - 1 bytes and always terminated when `size` is
 * not 0, and returns the text's whole length without the terminator, as
 * snprintf does: a return value of `size` or more means that the text was cut
 * and needs a buffer of the returned length + 1. The text stays until the
 * thread's next operation; "" before the first.
 */
AKVO_LIPSYNC_API size_t akvo_lipsync_result_text(char* buffer, size_t size);

#ifdef __cplusplus
}
#endif

#endif
