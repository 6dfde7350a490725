#ifndef VELMO_KVO_SYNC_CONTROLLER_H
#define VELMO_KVO_SYNC_CONTROLLER_H

/**
 * @file
 * `velmo::kvo::sync::Controller`: turns the audio path's timestamps and the
 * video side's into the audio delay margin and an extra video delay that keep
 * the call in lip sync.
 */

#include "velmo/kvo/common/LipSyncNtpTimestamps.h"
#include "velmo/utilities/Export.h"

#include <memory>

namespace velmo {
namespace kvo {
/// Lip sync itself: the controller and the runner that drives it over a Service.
namespace sync {

/**
 * The numbers the controller works by. Skew is the audio's end-to-end delay
 * minus the video's, in milliseconds: positive when the audio is heard late.
 */
namespace tuning {
/// @name Windows and target
/// @{
constexpr double windowLowMs = -15;      ///< ATSC IS-191, kept: audio at most 15 ms early...
constexpr double windowHighMs = 45;      ///< ...and at most 45 ms late.
constexpr double detectableLowMs = -45;  ///< ITU-R BT.1359's detectability window, reported alongside...
constexpr double detectableHighMs = 125; ///< ...up to 125 ms late.
/// The middle of the IS-191 window, where the controller aims: aiming at 0
/// would leave 15 ms on the early side and 45 ms on the late side.
constexpr double targetSkewMs = 15;
/// @}

/// @name Actuators
/// @{
constexpr unsigned marginStepMs = 20; ///< The engine takes margins in steps of 20 ms...
constexpr unsigned maxMarginMs = 100; ///< ...up to 100 ms.
/// The extra video delay never moves faster than this (a frame shown twice or
/// skipped now and then, not a visible jump)...
constexpr double videoRateMsPerS = 150;
/// ...nor by more than this in one poll, however long the time since the last one.
constexpr double maxVideoStepMs = 40;
/// The extra video delay asked for stays at or below this; a skew that would
/// need more counts as beyond reach.
constexpr double maxVideoDelayMs = 500;
/// @}

/// @name Filter
/// Each side's delay is the mean of the middle half of its last readings since
/// its last step. Steps are found by a two-sided cumulative sum of each
/// reading's distance from that level beyond a slack (stepSlackNoise times the
/// noise, plus the uncertainty of the level itself), each reading adding at
/// most 1/minStepReadings of the alarm level; a sum that reaches
/// stepAlarmNoise times the noise (and at least minStepMs) is a step, and the
/// window restarts from the readings that made it. The next minStepReadings
/// readings confirm the step, or take it back when they lie nearer the level
/// before it. A large step is thus followed in a few readings, and noise alone
/// does not make one.
/// @{
constexpr unsigned filterWindow = 50;   ///< At most this many readings per side in the filter.
constexpr double stepSlackNoise = 1;    ///< Slack of the step sums, in noises.
constexpr double stepAlarmNoise = 5;    ///< Alarm level of the step sums, in noises...
constexpr double minStepMs = 12;        ///< ...and at least this.
constexpr unsigned minStepReadings = 3; ///< Readings a step needs at least, and readings that confirm it.
constexpr unsigned settledReadings =
    3; ///< The margin is decided only from windows of at least this many readings.
/// A side's reading noise (standard deviation) is estimated from the median
/// difference between consecutive readings, over the last this many...
constexpr unsigned noiseReadings = 40;
constexpr unsigned minNoiseReadings = 4; ///< ...once this many have come...
constexpr double initialNoiseMs = 5;     ///< ...and is taken as this until then.
/// @}

/// @name Dead band and hysteresis
/// @{

/// The video delay goal moves only when the skew it would give strays from
/// the target by more than the larger of this and deadBandNoiseFactor times
/// the noise of the skew estimate.
constexpr double minDeadBandMs = 8;
constexpr double deadBandNoiseFactor = 3; ///< See minDeadBandMs.
/// The margin stays where it is while the video delay can bring the skew to
/// within this much of the target (the larger of this and
/// hysteresisNoiseFactor times the noise of the skew estimate), so a skew
/// that sits near the point between two margins does not make them alternate.
constexpr double minHysteresisMs = 10;
constexpr double hysteresisNoiseFactor = 3; ///< See minHysteresisMs.
/// The margin is lowered no sooner than this after its last change: a lower
/// margin only saves latency while the video delay holds the skew, so it
/// waits until the filter has settled. A higher one never waits: without it
/// the audio would be early.
constexpr long long marginLowerHoldMs = 10000;
/// @}

/// @name Learning what a margin change does
/// Each accepted change is watched in the raw audio delay until two readings
/// in a row show half of it; the time since acceptance is a lag measurement,
/// and the median of the first gainReadings readings from then a gain
/// measurement. The gain is a least-squares fit over the changes seen, each
/// weighed by its precision and earlier ones by gainMemory per newer change,
/// with initialGain as a prior of standard deviation gainPriorSpread; the lag
/// is smoothed with lagSmoothing as the weight of the newest measurement.
/// @{
constexpr double initialGain = 1;    ///< Audio delay per ms of margin assumed before a change is seen.
constexpr double initialLagMs = 300; ///< Lag assumed before a change is seen.
constexpr double maxLagMs = 4000;    ///< A change not seen within this is taken as in effect, unlearnt.
constexpr double minGain = 0.5;      ///< Learnt gains stay in this range, and a measurement...
constexpr double maxGain = 1.5;      ///< ...outside it is dropped as one disturbed by something else.
constexpr unsigned learnReadings =
    12;                              ///< A change teaches only from a level before it of this many readings.
constexpr unsigned gainReadings = 4; ///< Readings whose median measures the gain.
constexpr double gainPriorSpread = 0.2; ///< Standard deviation of the initial gain as a prior.
constexpr double gainMemory = 0.7;      ///< Weight of an earlier change per newer one.
constexpr double lagSmoothing = 0.5;    ///< Weight of the newest lag measurement.
/// @}

/// @name Readings that make no sense
/// @{

/// A delay (rendering - capture) below zero or above this...
constexpr double maxPlausibleDelayMs = 10000;
/// ...or a capture time that moved, since the side's last good reading, by
/// more than this away from the time the application says has passed.
constexpr double maxClockJumpMs = 2000;
/// A poll later than this many poll intervals after the previous one is reported as a gap.
constexpr double pollGapIntervals = 3;
/// @}
} // namespace tuning

/// The video frame on screen: when it was captured and when it was rendered,
/// 64-bit NTP timestamps (seconds in the high 32 bits, fraction in the low 32),
/// on the same clock as each other. Its end-to-end delay is rendering - capture.
struct VideoTimestamps
{
    unsigned long long capture;   ///< When the frame was captured.
    unsigned long long rendering; ///< When it was rendered.
};

/// One poll's input.
struct Poll
{
    /// The application's monotonic clock, in milliseconds; never goes back.
    long long nowMs;
    /// True when the audio timestamps call succeeded; `audio` is read only then.
    bool audioValid;
    /// As Service::getAudioTimestamps() filled them (only capture and rendering are used).
    common::LipSyncNtpTimestamps audio;
    /// True when a frame is on screen; `video` is read only then.
    bool videoValid;
    /// The frame on screen, rendered with the video delay of the previous decision.
    VideoTimestamps video;
};

/// What the controller is doing.
enum class State
{
    /// Not yet a delay estimate from both sides.
    Starting,
    /// The skew is where it should be, or on its way there.
    Tracking,
    /// A margin change is on its way to the engine or not yet seen at work.
    MarginPending,
    /// The audio readings are held off after a reconnection, until the margin
    /// is back in effect.
    Recovering
};

/// What one poll showed, as bits of Decision::events.
enum Event : unsigned
{
    /// The audio timestamps call failed.
    AudioFailed = 1u << 0,
    /// Audio rendering time before its capture time.
    AudioRenderingBeforeCapture = 1u << 1,
    /// Audio delay above tuning::maxPlausibleDelayMs (a timestamp with a wrong or wrapped seconds field).
    AudioDelayImplausible = 1u << 2,
    /// Audio capture time jumped against the application's clock.
    AudioClockJump = 1u << 3,
    /// No video frame in this poll.
    VideoMissing = 1u << 4,
    /// Video rendering time before its capture time.
    VideoRenderingBeforeCapture = 1u << 5,
    /// Video delay above tuning::maxPlausibleDelayMs.
    VideoDelayImplausible = 1u << 6,
    /// Video capture time jumped against the application's clock.
    VideoClockJump = 1u << 7,
    /// The poll came later than tuning::pollGapIntervals intervals after the previous one.
    PollGap = 1u << 8,
    /// The poll's time was before the previous poll's: the poll was ignored.
    TimeWentBack = 1u << 9,
    /// The audio delay stepped, and the readings after the step confirmed it.
    AudioStep = 1u << 10,
    /// The video delay stepped, and the readings after the step confirmed it.
    VideoStep = 1u << 11,
    /// reconnected() was called since the previous poll.
    Reconnected = 1u << 12,
    /// After a reconnection the audio delay fell by about the margin: the
    /// engine had restarted and forgotten it (it is being re-applied).
    MarginForgotten = 1u << 13,
    /// The engine refused the margin, or the call failed; it is asked again.
    MarginRefused = 1u << 14,
    /// A margin change was seen at work, and the gain and lag were measured.
    MarginLearnt = 1u << 15
};

/// The controller's answer to one poll.
struct Decision
{
    /// The audio delay margin the engine should hold (0 to 100, a multiple of 20).
    unsigned marginMs;
    /// True when `marginMs` must be sent to the engine now: it changed, or it
    /// must be re-applied after a reconnection or a refusal. Report the
    /// outcome with Controller::marginApplied().
    bool applyMargin;
    /// The extra delay to give the video frames from now on, in milliseconds (0 or more).
    double videoDelayMs;
    /// What the controller is doing.
    State state;
    /// True when the skew is beyond what the margin and the video delay can
    /// bring into the window: the video later than the audio by more than the
    /// largest margin plus the window (or the audio later than the largest
    /// video delay plus the window). The decision is then the closest reachable.
    bool infeasible;
    /// The bits of Event that this poll showed.
    unsigned events;
    /// The skew estimate with the margin the engine accepted last and the
    /// video delay of this decision: what an observer sees once the margin
    /// works, filtered.
    double skewMs;
    /// The skew estimate without margin and video delay: what the controller corrects.
    double uncorrectedSkewMs;
};

/// What the controller has learnt of the engine's response to margin changes.
struct MarginResponse
{
    /// Audio delay change per millisecond of margin.
    double gain;
    /// Time from the engine's acceptance of a margin to its effect, in milliseconds.
    double lagMs;
    /// How many margin changes these numbers come from (0: the initial assumptions).
    unsigned changesSeen;
};

/**
 * The lip-sync controller. Deterministic, with no I/O, no thread and no clock
 * of its own: time and readings come in as arguments.
 *
 * Each poll, call update() with the audio timestamps as read (or the failure)
 * and the video frame on screen. It keeps a filtered estimate of each side's
 * end-to-end delay and decides the audio delay margin and the extra video
 * delay that bring the skew to tuning::targetSkewMs:
 *
 * - audio later than the target: the video is delayed (margin 0);
 * - audio earlier: the margin goes to the smallest step that brings the audio
 *   to or past the target, and the video delay takes up the rest (under one
 *   step); while the current margin can still do that within the hysteresis,
 *   the margin stays;
 *   A lower margin waits tuning::marginLowerHoldMs after the last change;
 * - the video delay follows its goal at most tuning::videoRateMsPerS; the goal
 *   moves only when the skew strays beyond the dead band;
 * - a step in either delay counts once the readings after it confirm it; the
 *   video delay already heads where the margin planned for it will need;
 * - a margin change is followed until it is seen in the audio delay, which
 *   measures its gain and lag; meanwhile the audio readings do not move the
 *   estimate and no other margin change is made;
 * - readings that make no sense are held off and reported in Decision::events;
 * - when even the largest margin leaves the audio early beyond the window, the
 *   decision says Decision::infeasible and holds margin 100 with no video
 *   delay, the closest it can get.
 *
 * One Controller per call; one thread at a time.
 */
class VELMO_EXPORT Controller
{
public:
    /// @param pollIntervalMs the interval the application polls at, to tell gaps from polls.
    explicit Controller(unsigned pollIntervalMs);
    ~Controller();
    Controller(const Controller&) = delete;
    Controller& operator=(const Controller&) = delete;

    /// Takes one poll and returns the decision.
    Decision update(const Poll& poll);

    /**
     * Reports the outcome of sending a margin to the engine: @p accepted when
     * Service::setAudioDelayMargin() succeeded, at time @p nowMs.
     */
    void marginApplied(long long nowMs, unsigned marginMs, bool accepted);

    /**
     * Reports a new connection to the engine. The engine may have restarted and
     * forgotten the margin: the next decision re-applies it, and the audio
     * readings are held off until it is back in effect.
     */
    void reconnected();

    /// The engine's response to margin changes as learnt so far.
    MarginResponse marginResponse() const;

private:
    struct Impl;
    std::unique_ptr<Impl> _impl;
};

} // namespace sync
} // namespace kvo
} // namespace velmo

#endif
