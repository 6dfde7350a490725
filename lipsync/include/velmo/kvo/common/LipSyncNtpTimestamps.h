#ifndef VELMO_KVO_COMMON_LIPSYNCNTPTIMESTAMPS_H
#define VELMO_KVO_COMMON_LIPSYNCNTPTIMESTAMPS_H

/**
 * @file
 * `velmo::kvo::common::LipSyncNtpTimestamps`, the audio path's timestamps.
 */

namespace velmo {
namespace kvo {
/// Records shared by the audio and the video side.
namespace common {

/**
 * The audio path's timestamps as the engine reports them, filled by
 * Service::getAudioTimestamps(). Plain data, copied by value; the library
 * neither converts nor checks any field, so each holds exactly the number
 * the engine sent (in decimal, or in hexadecimal after "0x", on the wire).
 * Initialise it yourself (`= {0, 0, 0, 0}`): a failed call leaves it as it was.
 */
struct LipSyncNtpTimestamps
{
    /// When the audio was captured: a 64-bit NTP timestamp (the engine's
    /// element "capture_timestamp").
    unsigned long long tCap;
    /// When the audio is rendered: a 64-bit NTP timestamp
    /// ("rendering_timestamp").
    unsigned long long tRdr;
    /// When the audio was received: a 64-bit NTP timestamp
    /// ("receiving_timestamp").
    unsigned long long tRcv;
    /// The jitter buffer's current depth, in the engine's own unit
    /// ("jitter_buffer_depth").
    unsigned long long jbmDepth;
};

} // namespace common
} // namespace kvo
} // namespace velmo

#endif
