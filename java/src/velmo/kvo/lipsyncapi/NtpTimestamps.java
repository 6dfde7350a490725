package velmo.kvo.lipsyncapi;

/**
 * The audio path's timestamps: capture, rendering and receiving as NTP 64-bit values, and the jitter buffer's
 * depth in the engine's own unit. All four are unsigned 64-bit numbers held in {@code long}s: values from
 * 2^63 on read as negative, so print them unsigned (as {@link #toString()} does, or with
 * {@code Long.toUnsignedString(long)} from API level 24 on) and compare them unsigned (as {@link #compareTo}
 * does).
 */
public final class NtpTimestamps implements Comparable<NtpTimestamps>
{
    private final long captureTimestamp;
    private final long renderingTimestamp;
    private final long receivingTimestamp;
    private final long jitterBufferDepth;

    /**
     * @param captureTimestamp the capture time, an unsigned NTP 64-bit value
     * @param renderingTimestamp the rendering time, an unsigned NTP 64-bit value
     * @param receivingTimestamp the receiving time, an unsigned NTP 64-bit value
     * @param jitterBufferDepth the jitter buffer's depth, unsigned, in the engine's own unit
     */
    public NtpTimestamps(long captureTimestamp, long renderingTimestamp, long receivingTimestamp,
                         long jitterBufferDepth)
    {
        this.captureTimestamp = captureTimestamp;
        this.renderingTimestamp = renderingTimestamp;
        this.receivingTimestamp = receivingTimestamp;
        this.jitterBufferDepth = jitterBufferDepth;
    }

    /** @return the capture time, an unsigned NTP 64-bit value */
    public long getCaptureTimestamp() { return captureTimestamp; }

    /** @return the rendering time, an unsigned NTP 64-bit value */
    public long getRenderingTimestamp() { return renderingTimestamp; }

    /** @return the receiving time, an unsigned NTP 64-bit value */
    public long getReceivingTimestamp() { return receivingTimestamp; }

    /** @return the jitter buffer's depth, unsigned, in the engine's own unit */
    public long getJitterBufferDepth() { return jitterBufferDepth; }

    /**
     * Unsigned order of the capture timestamps, then of the rendering and receiving ones and of the depth.
     */
    @Override public int compareTo(NtpTimestamps other)
    {
        int order = Longs.compareUnsigned(captureTimestamp, other.captureTimestamp);
        if (order == 0) {
            order = Longs.compareUnsigned(renderingTimestamp, other.renderingTimestamp);
        }
        if (order == 0) {
            order = Longs.compareUnsigned(receivingTimestamp, other.receivingTimestamp);
        }
        if (order == 0) {
            order = Longs.compareUnsigned(jitterBufferDepth, other.jitterBufferDepth);
        }
        return order;
    }

    @Override public boolean equals(Object other)
    {
        return other instanceof NtpTimestamps && compareTo((NtpTimestamps)other) == 0;
    }

    @Override public int hashCode()
    {
        return ((Longs.hashCode(captureTimestamp) * 31 + Longs.hashCode(renderingTimestamp)) * 31 +
                Longs.hashCode(receivingTimestamp)) *
            31 +
            Longs.hashCode(jitterBufferDepth);
    }

    @Override public String toString()
    {
        return "NtpTimestamps{capture=" + Longs.toUnsignedString(captureTimestamp) +
            ", rendering=" + Longs.toUnsignedString(renderingTimestamp) +
            ", receiving=" + Longs.toUnsignedString(receivingTimestamp) +
            ", jitterBufferDepth=" + Longs.toUnsignedString(jitterBufferDepth) + "}";
    }
}
