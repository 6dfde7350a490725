#ifndef AKVO_BENCH_FRAMES_H
#define AKVO_BENCH_FRAMES_H

// The frames that travel in the round-trip benchmarks, whole and with their
// end-of-message marker. The requests are the library's own bytes (checked by
// the benchmarks before they run); the answers are what the canned server
// sends back for every request of the kind.

namespace akvo {
namespace bench {

inline constexpr char getAudioTsRequestFrame[] =
    "<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\"><GetAudioTs_Request /></AKVO>\n\n";

inline constexpr char setAudioDelayRequestFrame[] =
    "<?xml version=\"1.0\" ?><AKVO "
    "version=\"0.1.0\"><SetAudioDelay_Request>60</SetAudioDelay_Request></AKVO>\n\n";

inline constexpr unsigned long long setAudioDelayRequestMs = 60;

inline constexpr char getAudioTsAnswerFrame[] =
    "<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\"><GetAudioTs_Answer><Result><ErrorCode>1000</ErrorCode>"
    "<Message></Message></Result><LipSyncNtpTimestamps><capture_timestamp>16045690984833536</"
    "capture_timestamp>"
    "<rendering_timestamp>16045690985263104</rendering_timestamp><receiving_timestamp>16045690984404992"
    "</receiving_timestamp><jitter_buffer_depth>40</jitter_buffer_depth></LipSyncNtpTimestamps>"
    "</GetAudioTs_Answer></AKVO>\n\n";

inline constexpr char setAudioDelayAnswerFrame[] =
    "<?xml version=\"1.0\" ?><AKVO "
    "version=\"0.1.0\"><SetAudioDelay_Answer><Result><ErrorCode>1000</ErrorCode>"
    "<Message/></Result></SetAudioDelay_Answer></AKVO>\n\n";

// The server tells the two commands apart by this element name alone.
inline constexpr char setAudioDelayRequestTag[] = "SetAudioDelay_Request";

inline constexpr unsigned long long cannedCaptureTimestamp = 16045690984833536ULL;

} // namespace bench
} // namespace akvo

#endif
