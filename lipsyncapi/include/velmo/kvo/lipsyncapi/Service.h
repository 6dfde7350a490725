#ifndef VELMO_KVO_LIPSYNCAPI_SERVICE_H
#define VELMO_KVO_LIPSYNCAPI_SERVICE_H

/**
 * @file
 * The application's entry point: `velmo::kvo::lipsyncapi::Service`. Including
 * this header is enough to use the library.
 */

#include "velmo/kvo/common/LipSyncNtpTimestamps.h"
#include "velmo/utilities/Export.h"
#include "velmo/utilities/result/Result.h"

#include <cstdint>
#include <string>

/// Everything this library declares lives under this namespace.
namespace velmo {
/// The audio engine's client side (the engine is called the audio KVO).
namespace kvo {
namespace cmdfrmwrk {
class Client;
} // namespace cmdfrmwrk

/// The lip-sync client API: the `Service` class.
namespace lipsyncapi {

/**
 * The application's handle on the audio engine's lip-sync service.
 *
 * Connect it with connect(), call the operations, and disconnect it (or let
 * the destructor do so). No call throws: every one returns a ServiceResult.
 * Out-parameters are written only when the call succeeds; after a failure
 * they hold what they held before.
 *
 * Every call runs on the calling thread and blocks until it is done. A call
 * that talks to the engine (setAudioDelayMargin(), getAudioTimestamps())
 * waits for the answer with no time-out: if the engine never answers, the
 * call never returns. One Service must be used by one thread at a time, and
 * no two calls that wait for the engine may run at the same time anywhere in
 * the process, even on different Service objects, because received bytes go
 * through one process-wide buffer.
 *
 * The library never changes signal dispositions: writing a request to a
 * connection the engine has closed raises SIGPIPE, which ends the process
 * unless the application ignores it; when it is ignored the call returns
 * #TransportError.
 *
 * connect(), disconnect(), setAudioDelayMargin() and getAudioTimestamps()
 * each write one line at info level with the tag "AKVOLIPSYNCAPI" to the
 * Android log and to standard error, after the work is done; the other calls
 * write nothing.
 *
 * A failed allocation inside an exchange with the engine (an answer too
 * large for the memory left) returns #TransportError with "Unknown error
 * (Code 5901): Not enough memory for the exchange" nested; anywhere else it
 * returns a bare #UnknownError, without text and without a log line.
 */
class VELMO_EXPORT Service
{
public:
    /**
     * The codes of a ServiceResult. The numbers are stable and each has a
     * fixed text, printed by ServiceResult::format().
     */
    enum ResultCode : int32_t
    {
        /// "Success".
        Success = 1000,
        /// "Unknown error": memory ran out outside an exchange.
        UnknownError = 1001,
        /// "Invalid Param": the delay margin was refused before anything was sent.
        InvalidParam = 1002,
        /// "Bad state": not connected, or connect() while connected.
        BadState = 1003,
        /// "Cannot connect to Audio KVO": the socket could not be reached; the
        /// transport's result, with the system error, is nested.
        CannotConnect = 1004,
        /// "An error has occured in the transport layer": the exchange with the
        /// engine failed; the failure of the layer below is nested. The Service
        /// stays connected.
        TransportError = 1005,
        /// "The lipsync server returned an error": the engine answered with a
        /// failure other than "Bad state"; its code and message are nested.
        ServerError = 1006,
        /// "The AKVO is not performing a call": the engine answered "Bad state"
        /// (its code 1003); its result is nested.
        NotInCall = 1007
    };

    /// The code family of ServiceResult, as velmo::utilities::result::Result expects it.
    struct ResultTrait
    {
        /// The family's codes.
        using ResultCode = Service::ResultCode;
        /// The code that ServiceResult::isSuccess() tests for.
        static constexpr ResultCode successCode = Success;
        /**
         * The fixed text of @p code; "Invalid error (Unreachable)" for a
         * value outside ResultCode.
         */
        static const char* toString(ResultCode code);
    };

    /**
     * What every call returns: a code, and on failure the text that explains
     * it, with the failures of the layers below nested. See
     * velmo::utilities::result::Result for reading it.
     */
    using ServiceResult = velmo::utilities::result::Result<ResultTrait>;

    /**
     * "/dev/socket/akvo_lipsync", where the engine listens on a device. It is
     * the default argument of connect(); the library never substitutes it for
     * a name it is given.
     */
    static const std::string defaultLipsyncSocketName;
    /// The largest delay margin, in milliseconds, that setAudioDelayMargin() accepts.
    static const uint32_t capabilityMaxAudioDelayMargin = 100;
    /// The step, in milliseconds, of the delay margins that setAudioDelayMargin() accepts.
    static const uint32_t capabilityGranularityMs = 20;

    /// A disconnected Service, with a stored delay margin of 0. Sends nothing and logs nothing.
    Service();

    /**
     * Disconnects, as disconnect() does, and so writes its log line even when
     * the Service was not connected:
     * @verbatim
       Client is disconnected with result: Bad state (Code 1003): Not connected to the audio KVO
       @endverbatim
     */
    ~Service();

    /**
     * Connects to the engine's Unix stream socket at @p socketName, with one
     * blocking attempt. Sends nothing.
     *
     * @param socketName the socket's path; a path of 108 bytes or more is cut
     *        to its first 108 bytes.
     * @return #Success; #BadState "Already connected to the audio KVO" when
     *         connected (the connection stays as it was); #CannotConnect with
     *         the system's reason nested when no server accepts the
     *         connection (the Service stays disconnected and may try again at
     *         once).
     *
     * Log line:
     * @verbatim
       Client is connecting with input params: lipsyncSocketName=<socketName>  with result: <result>
       @endverbatim
     *
     * The socket is not close-on-exec: a child started with exec while the
     * Service is connected inherits it.
     */
    ServiceResult connect(const std::string& socketName = defaultLipsyncSocketName);

    /**
     * Closes the connection. Sends nothing; the engine sees the socket close.
     * The stored delay margin is kept.
     *
     * @return #Success; #BadState "Not connected to the audio KVO" when not
     *         connected.
     *
     * Log line:
     * @verbatim
       Client is disconnected with result: <result>
       @endverbatim
     */
    ServiceResult disconnect();

    /**
     * The delay margins the engine supports: every multiple of
     * @p granularityMs from 0 up to @p maxAudioDelayMargin. Answered from the
     * library's constants; nothing is sent and nothing is logged.
     *
     * @param[out] granularityMs set to #capabilityGranularityMs (20) on success.
     * @param[out] maxAudioDelayMargin set to #capabilityMaxAudioDelayMargin
     *        (100) on success.
     * @return #Success; #BadState "Not connected to the audio KVO" when not
     *         connected.
     */
    ServiceResult getCapabilities(unsigned long long& granularityMs,
                                  unsigned long long& maxAudioDelayMargin) const;

    /**
     * Asks the engine to let the audio path take on up to @p delayMs
     * milliseconds of delay: sends a SetAudioDelay request and blocks, with no
     * time-out, until the answer has arrived or the connection has failed.
     * Once the engine accepts, the value is stored for getAudioDelayMargin().
     *
     * @param delayMs 0, 20, 40, 60, 80 or 100; other values are refused
     *        without sending anything.
     * @return
     * - #Success;
     * - #BadState "Not connected to the audio KVO";
     * - #InvalidParam above 100 or off the step, with one of these main
     *   messages, each beginning with a blank:
     *   @verbatim
        audio delay margin <delayMs> is not in range [0..100]
        audio delay margin <delayMs> doesn't match  granularity of 20ms.
       @endverbatim
     * - #TransportError when the exchange failed (the engine hung up, an
     *   answer that is not a well-formed SetAudioDelay answer, memory ran
     *   out), with the cause nested;
     * - #NotInCall when the engine answered "Bad state";
     * - #ServerError when it answered any other failure, or no code.
     *
     * Log line:
     * @verbatim
       Client is setting the audio delay margin with input params: delayMs=<delayMs>  with result: <result>
       @endverbatim
     */
    ServiceResult setAudioDelayMargin(unsigned long long delayMs);

    /**
     * The last delay margin the engine accepted through this Service, kept
     * across disconnect() and connect(); 0 until one is accepted. The engine
     * is not asked and nothing is logged.
     *
     * @param[out] delayMs the stored margin in milliseconds, set on success.
     * @return #Success; #BadState "Not connected to the audio KVO" when not
     *         connected.
     */
    ServiceResult getAudioDelayMargin(unsigned long long& delayMs) const;

    /**
     * Reads the audio path's timestamps from the engine: sends a GetAudioTs
     * request and blocks, with no time-out, until the answer has arrived or
     * the connection has failed.
     *
     * @param[out] timestamps all four fields, as the engine sent them, set on
     *        success only.
     * @return
     * - #Success;
     * - #BadState "Not connected to the audio KVO";
     * - #TransportError when the exchange failed (the engine hung up, an
     *   answer that is not a well-formed GetAudioTs answer, memory ran out),
     *   with the cause nested. An answer holding more than 256 "<" bytes is
     *   not parsed at all and fails so, with "No 'AKVO' root element found in
     *   xml data." nested: every element needs a "<", so what is parsed nests
     *   at most 256 deep, and a thread stack of 256 KiB is enough for any
     *   answer;
     * - #NotInCall when the engine answered "Bad state";
     * - #ServerError when it answered any other failure, or no code.
     *
     * Log line (one line, cut here to fit), with the values of @p timestamps
     * after the call, so that a failed call logs what the record held before:
     * @verbatim
       Client is requesting the NTP timestamp with output params:
       audioCaptureTimestamp=<tCap> audioRenderingTimestamp=<tRdr> audioReceivingTimestamp=<tRcv>
       jbmCurrentDepth=<jbmDepth>  with result: <result>
       @endverbatim
     */
    ServiceResult getAudioTimestamps(velmo::kvo::common::LipSyncNtpTimestamps& timestamps) const;

    /**
     * Where the video side reports its timestamps. This version neither sends
     * nor keeps them: the call only checks the connection. Nothing is logged.
     *
     * @param timestamps the video path's timestamps.
     * @return #Success; #BadState "Not connected to the audio KVO" when not
     *         connected.
     */
    ServiceResult setVideoTimestamps(const velmo::kvo::common::LipSyncNtpTimestamps& timestamps);

    /// Not copyable: a Service owns its connection.
    Service(const Service&) = delete;
    /// Not assignable: a Service owns its connection.
    Service& operator=(const Service&) = delete;

private:
    friend struct ServiceTestAccess;
    // The C interface's way in: it opens the engine's socket itself, so that
    // a deadline bounds the attempt, and hands the link over. Not exported.
    friend struct ServiceLink;

    ServiceResult connectInternal(const std::string& socketName);
    ServiceResult disconnectInternal();
    ServiceResult setAudioDelayMarginInternal(unsigned long long delayMs);
    ServiceResult getAudioTimestampsInternal(velmo::kvo::common::LipSyncNtpTimestamps& timestamps) const;

    velmo::kvo::cmdfrmwrk::Client* _commandClient;
    int32_t _connected;
    unsigned long long _audioDelayMargin;
};

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo

#endif
