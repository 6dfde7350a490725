package velmo.kvo.lipsyncapi;

/** What a {@link SyncController} has learnt of the engine's response to margin changes. */
public final class MarginResponse
{
    private final double gain;
    private final double lagMs;
    private final long changesSeen;

    MarginResponse(double gain, double lagMs, long changesSeen)
    {
        this.gain = gain;
        this.lagMs = lagMs;
        this.changesSeen = changesSeen;
    }

    /** @return the audio delay change per millisecond of margin; 1 until a change is seen */
    public double getGain() { return gain; }

    /**
     * @return the time from the engine's acceptance of a margin to its effect, in ms; 300 until a change is
     *     seen
     */
    public double getLagMs() { return lagMs; }

    /** @return how many margin changes these numbers come from; 0 for the initial assumptions */
    public long getChangesSeen() { return changesSeen; }

    @Override public String toString()
    {
        return "MarginResponse{gain=" + gain + ", lagMs=" + lagMs + ", changesSeen=" + changesSeen + "}";
    }
}
