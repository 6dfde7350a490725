package velmo.kvo.lipsyncapi;

import java.util.EnumSet;
import java.util.Set;

/**
 * A {@link SyncController}'s answer to one poll. Skew is the audio's end-to-end delay minus the video's, in
 * milliseconds: positive when the sound is heard after the picture is seen.
 */
public final class SyncDecision
{
    /** What the controller is doing. */
    public enum State
    {
        /** Not yet a delay estimate from both sides; the skews are 0. */
        STARTING,
        /** The skew is where it should be, or on its way there. */
        TRACKING,
        /** A margin change is on its way to the engine or not yet seen at work. */
        MARGIN_PENDING,
        /** The audio readings are held off after a reconnection, until the margin is back in effect. */
        RECOVERING
    }

    /** What one poll showed; each is one bit of {@link #getEvents()}, in this order from bit 0. */
    public enum Event
    {
        /** The audio timestamps call failed. */
        AUDIO_FAILED,
        /** Audio rendering time before its capture time. */
        AUDIO_RENDERING_BEFORE_CAPTURE,
        /** Audio delay above 10 s (a timestamp with a wrong or wrapped seconds field). */
        AUDIO_DELAY_IMPLAUSIBLE,
        /** Audio capture time moved 2 s or more away from the time the application says has passed. */
        AUDIO_CLOCK_JUMP,
        /** No video frame in this poll. */
        VIDEO_MISSING,
        /** Video rendering time before its capture time. */
        VIDEO_RENDERING_BEFORE_CAPTURE,
        /** Video delay above 10 s. */
        VIDEO_DELAY_IMPLAUSIBLE,
        /** Video capture time jumped against the application's clock. */
        VIDEO_CLOCK_JUMP,
        /** The poll came more than 3 intervals after the previous one. */
        POLL_GAP,
        /** The poll's time was before the previous poll's: the poll was ignored. */
        TIME_WENT_BACK,
        /** The audio delay stepped, and the readings after the step confirmed it. */
        AUDIO_STEP,
        /** The video delay stepped, and the readings after the step confirmed it. */
        VIDEO_STEP,
        /** A reconnection was reported since the previous poll. */
        RECONNECTED,
        /** After a reconnection the audio delay fell by about the margin: the engine had forgotten it. */
        MARGIN_FORGOTTEN,
        /** The engine refused the margin, or the call failed; it is asked again. */
        MARGIN_REFUSED,
        /** A margin change was seen at work, and its gain and lag were measured. */
        MARGIN_LEARNT;

        /** @return this event's bit in {@link #getEvents()} */
        public int bit() { return 1 << ordinal(); }
    }

    private final int marginMs;
    private final boolean applyMargin;
    private final double videoDelayMs;
    private final State state;
    private final boolean infeasible;
    private final int events;
    private final double skewMs;
    private final double uncorrectedSkewMs;

    /** How many whole numbers the native side writes for a decision, first in its array. */
    static final int WHOLE_NUMBERS = 5;
    /** How many fractional numbers it writes. */
    static final int FRACTIONS = 3;

    // From what the native side wrote.
    SyncDecision(long[] whole, double[] fraction)
    {
        marginMs = (int)whole[0];
        applyMargin = whole[1] != 0;
        state = State.values()[(int)whole[2]];
        infeasible = whole[3] != 0;
        events = (int)whole[4];
        videoDelayMs = fraction[0];
        skewMs = fraction[1];
        uncorrectedSkewMs = fraction[2];
    }

    /** @return the audio delay margin the engine should hold: 0 to 100 ms, a multiple of 20 */
    public int getMarginMs() { return marginMs; }

    /**
     * @return true when {@link #getMarginMs()} must be sent to the engine now (it changed, or again after a
     *         reconnection or a refusal); report the outcome with {@link SyncController#marginApplied}. A
     *         {@link SyncRunner} has sent it.
     */
    public boolean isApplyMargin() { return applyMargin; }

    /**
     * @return the extra delay to give the video frames from now on, in ms (0 or more), already rate-limited:
     *         use it as it is
     */
    public double getVideoDelayMs() { return videoDelayMs; }

    /** @return what the controller is doing */
    public State getState() { return state; }

    /**
     * @return true when the skew is beyond what the margin and the video delay can bring into the window; the
     *         decision is then the closest reachable
     */
    public boolean isInfeasible() { return infeasible; }

    /** @return the bits of the {@link Event}s that this poll showed */
    public int getEvents() { return events; }

    /** @return the {@link Event}s that this poll showed */
    public Set<Event> getEventSet()
    {
        final Set<Event> set = EnumSet.noneOf(Event.class);
        for (final Event event : Event.values()) {
            if ((events & event.bit()) != 0) {
                set.add(event);
            }
        }
        return set;
    }

    /**
     * @return the skew estimate in ms with the margin the engine accepted last and this video delay: what an
     *         observer sees once the margin works
     */
    public double getSkewMs() { return skewMs; }

    /** @return the skew estimate in ms without margin and video delay: what the controller corrects */
    public double getUncorrectedSkewMs() { return uncorrectedSkewMs; }

    @Override public String toString()
    {
        return "SyncDecision{marginMs=" + marginMs + ", applyMargin=" + applyMargin +
            ", videoDelayMs=" + videoDelayMs + ", state=" + state + ", infeasible=" + infeasible +
            ", events=" + getEventSet() + ", skewMs=" + skewMs + ", uncorrectedSkewMs=" + uncorrectedSkewMs +
            "}";
    }
}
