package velmo.kvo.lipsyncapi;

/**
 * The lip-sync controller: from one poll's audio and video timestamps at a time, it decides the audio delay
 * margin and an extra delay for the video frames that keep the skew in ATSC IS-191 (audio at most 15 ms early
 * and 45 ms late). It has no I/O, no thread and no clock of its own: time and readings come in as arguments.
 * For an application that owns its service and its poll timer; {@link SyncRunner} does the polling itself.
 *
 * <p>Each poll, call {@link #update} with the audio timestamps as read (or null when the call failed) and the
 * frame on screen; send the margin when the decision says so and report the outcome with {@link
 * #marginApplied}; call {@link #reconnected} after connecting again; delay the frames you show by the
 * decision's video delay. Calls on one controller run one after another. {@link #close()} frees the native
 * controller; one that is never closed is freed once it is no longer reachable.
 */
public final class SyncController extends NativeSyncObject
{
    /**
     * @param pollIntervalMs the interval the application polls at, in ms, to tell gaps from polls
     * @throws IllegalArgumentException when negative or above 2^32 - 1; 0 counts as 1
     */
    public SyncController(long pollIntervalMs)
    {
        super(nativeCreate(SyncRunner.checkedInterval(pollIntervalMs)), "controller");
    }

    /**
     * Takes one poll and returns the decision.
     *
     * @param nowMs the application's monotonic clock in ms; a time before the previous poll's is ignored
     * @param audio the audio timestamps as {@link LipSyncService#getAudioTimestamps} returned them, or null
     *        when the call failed
     * @param video the frame on screen, rendered with the video delay of the previous decision, or null
     *        when there is none
     * @return the decision
     * @throws IllegalStateException after {@link #close()}
     */
    public synchronized SyncDecision update(long nowMs, NtpTimestamps audio, VideoTimestamps video)
    {
        final long[] whole = new long[SyncDecision.WHOLE_NUMBERS];
        final double[] fraction = new double[SyncDecision.FRACTIONS];
        nativeUpdate(open(), nowMs, audio != null, audio != null ? audio.getCaptureTimestamp() : 0,
                     audio != null ? audio.getRenderingTimestamp() : 0, video != null,
                     video != null ? video.getCapture() : 0, video != null ? video.getRendering() : 0, whole,
                     fraction);
        return new SyncDecision(whole, fraction);
    }

    /**
     * Reports the outcome of sending a margin to the engine. A refusal makes the next decision ask again.
     *
     * @param nowMs when the answer came, on the clock of {@link #update}
     * @param marginMs the margin that was sent
     * @param accepted true when {@link LipSyncService#setAudioDelayMargin} succeeded
     * @throws IllegalStateException after {@link #close()}
     */
    public synchronized void marginApplied(long nowMs, int marginMs, boolean accepted)
    {
        nativeMarginApplied(open(), nowMs, marginMs, accepted);
    }

    /**
     * Reports a new connection to the engine, which may have restarted and forgotten the margin: the next
     * decision re-applies it, and the audio readings are held off until it is back in effect.
     *
     * @throws IllegalStateException after {@link #close()}
     */
    public synchronized void reconnected() { nativeReconnected(open()); }

    @Override void destroy(long handle) { nativeDestroy(handle); }

    @Override void marginResponse(long handle, double[] values) { nativeMarginResponse(handle, values); }

    private static native long nativeCreate(long pollIntervalMs);

    private static native void nativeDestroy(long controller);

    // Instance methods, so that the JNI frame keeps this controller reachable until the call returns.
    private native void nativeUpdate(long controller, long nowMs, boolean audioValid, long audioCapture,
                                     long audioRendering, boolean videoValid, long videoCapture,
                                     long videoRendering, long[] whole, double[] fraction);

    private native void nativeMarginApplied(long controller, long nowMs, int marginMs, boolean accepted);

    private native void nativeReconnected(long controller);

    private native void nativeMarginResponse(long controller, double[] values);
}
