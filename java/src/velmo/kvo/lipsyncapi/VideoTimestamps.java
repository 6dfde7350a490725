package velmo.kvo.lipsyncapi;

/**
 * The video frame on screen: when it was captured and when it was rendered, as unsigned NTP 64-bit values on
 * one clock (seconds in the high 32 bits). Its end-to-end delay is rendering - capture, and it includes the
 * video delay of the previous decision: give the times of a frame that was shown with it.
 */
public final class VideoTimestamps
{
    private final long capture;
    private final long rendering;

    /**
     * @param capture when the frame was captured, an unsigned NTP 64-bit value
     * @param rendering when it was rendered, an unsigned NTP 64-bit value
     */
    public VideoTimestamps(long capture, long rendering)
    {
        this.capture = capture;
        this.rendering = rendering;
    }

    /** @return when the frame was captured, an unsigned NTP 64-bit value */
    public long getCapture() { return capture; }

    /** @return when the frame was rendered, an unsigned NTP 64-bit value */
    public long getRendering() { return rendering; }

    @Override public boolean equals(Object other)
    {
        if (!(other instanceof VideoTimestamps)) {
            return false;
        }
        final VideoTimestamps that = (VideoTimestamps)other;
        return capture == that.capture && rendering == that.rendering;
    }

    @Override public int hashCode() { return Longs.hashCode(capture) * 31 + Longs.hashCode(rendering); }

    @Override public String toString()
    {
        return "VideoTimestamps{capture=" + Longs.toUnsignedString(capture) +
            ", rendering=" + Longs.toUnsignedString(rendering) + "}";
    }
}
