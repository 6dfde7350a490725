package velmo.kvo.lipsyncapi;

/** The audio delay margins that the engine accepts: multiples of the granularity up to the maximum. */
public final class Capabilities
{
    private final long granularityMs;
    private final long maxAudioDelayMarginMs;

    /**
     * @param granularityMs the step between accepted margins, in milliseconds
     * @param maxAudioDelayMarginMs the largest accepted margin, in milliseconds
     */
    public Capabilities(long granularityMs, long maxAudioDelayMarginMs)
    {
        this.granularityMs = granularityMs;
        this.maxAudioDelayMarginMs = maxAudioDelayMarginMs;
    }

    /** @return the step between accepted margins, in milliseconds (20) */
    public long getGranularityMs() { return granularityMs; }

    /** @return the largest accepted margin, in milliseconds (100) */
    public long getMaxAudioDelayMarginMs() { return maxAudioDelayMarginMs; }

    @Override public boolean equals(Object other)
    {
        if (!(other instanceof Capabilities)) {
            return false;
        }
        final Capabilities that = (Capabilities)other;
        return granularityMs == that.granularityMs && maxAudioDelayMarginMs == that.maxAudioDelayMarginMs;
    }

    @Override public int hashCode()
    {
        return Longs.hashCode(granularityMs) * 31 + Longs.hashCode(maxAudioDelayMarginMs);
    }

    @Override public String toString()
    {
        return "Capabilities{granularityMs=" + granularityMs +
            ", maxAudioDelayMarginMs=" + maxAudioDelayMarginMs + "}";
    }
}
