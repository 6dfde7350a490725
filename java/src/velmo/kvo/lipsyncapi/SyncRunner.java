package velmo.kvo.lipsyncapi;

import java.nio.charset.StandardCharsets;
import java.util.Objects;

/**
 * Keeps a call in lip sync over a {@link LipSyncService}: each {@link #poll} connects the service if it is
 * not connected, reads the audio timestamps, hands them with the frame on screen to a controller of its own
 * (see
 * {@link SyncController}), and sends the margin the controller asks for. A transport failure ({@link
 * LipSyncException#TRANSPORT_ERROR}) disconnects the service, and so does a deadline that ended an exchange;
 * the next poll connects anew and re-applies the margin, since the engine may have restarted. The application
 * applies the video delay of each report to the frames it shows from then on.
 *
 * <p>Poll at a steady interval, from a thread that may block for as long as the service's calls (its
 * deadline,
 * {@link LipSyncService#setDeadline}, bounds each). The service stays the application's: only the runner
 * connects and disconnects it while the runner is in use. Calls on one runner run one after another. {@link
 * #close()} frees the native runner (the service stays as it is); one that is never closed is freed once it
 * is no longer reachable.
 */
public final class SyncRunner extends NativeSyncObject
{
    /** The code of a call that succeeded, in {@link Report}. */
    public static final int SUCCESS = 1000;

    private static final long LONGEST_INTERVAL_MS = 0xFFFFFFFFL;

    /** What one poll did and decided. */
    public static final class Report
    {
        private final SyncDecision decision;
        private final boolean connected;
        private final int timestampsCode;
        private final int marginCode;
        private final NtpTimestamps audio;

        Report(long[] whole, double[] fraction)
        {
            decision = new SyncDecision(whole, fraction);
            int at = SyncDecision.WHOLE_NUMBERS;
            connected = whole[at] != 0;
            timestampsCode = (int)whole[at + 1];
            marginCode = (int)whole[at + 2];
            audio = timestampsCode == SUCCESS
                        ? new NtpTimestamps(whole[at + 3], whole[at + 4], whole[at + 5], whole[at + 6])
                        : null;
        }

        /**
         * @return the controller's decision; its margin has been sent when it says so and the service was
         *     connected
         */
        public SyncDecision getDecision() { return decision; }

        /** @return true when the service is connected after this poll */
        public boolean isConnected() { return connected; }

        /**
         * @return {@link #SUCCESS}, or the {@link LipSyncException} code of this poll's timestamps call or of
         *         the connection attempt that failed before it, e.g. {@link LipSyncException#CANNOT_CONNECT}
         * or
         *         {@link LipSyncException#DEADLINE_EXCEEDED}; {@link #getLastFailure()} has its text
         */
        public int getTimestampsCode() { return timestampsCode; }

        /**
         * @return {@link #SUCCESS} or the code of the margin sent in this poll; {@link #SUCCESS} when none
         *     was sent
         */
        public int getMarginCode() { return marginCode; }

        /** @return the audio timestamps this poll read, or null when the call failed */
        public NtpTimestamps getAudio() { return audio; }

        @Override public String toString()
        {
            return "Report{decision=" + decision + ", connected=" + connected +
                ", timestampsCode=" + timestampsCode + ", marginCode=" + marginCode + ", audio=" + audio +
                "}";
        }
    }

    private static final int REPORT_WHOLE_NUMBERS = SyncDecision.WHOLE_NUMBERS + 7;

    private final LipSyncService service;
    private final String socketName;

    /**
     * A runner over {@code service}, connecting to {@link LipSyncService#DEFAULT_SOCKET_NAME}.
     *
     * @param service the service it polls
     * @param pollIntervalMs as {@link #SyncRunner(LipSyncService, String, long)}
     */
    public SyncRunner(LipSyncService service, long pollIntervalMs)
    {
        this(service, LipSyncService.DEFAULT_SOCKET_NAME, pollIntervalMs);
    }

    /**
     * A runner over {@code service}, connecting it to {@code socketName}.
     *
     * @param service the service it polls; it connects and disconnects it
     * @param socketName the engine's socket, as for {@link LipSyncService#connect(String)}
     * @param pollIntervalMs the interval the application polls at, in ms, to tell gaps from polls
     * @throws IllegalArgumentException when the interval is negative or above 2^32 - 1; 0 counts as 1
     */
    public SyncRunner(LipSyncService service, String socketName, long pollIntervalMs)
    {
        super(nativeCreate(checkedInterval(pollIntervalMs)), "runner");
        this.service = Objects.requireNonNull(service, "service");
        this.socketName = Objects.requireNonNull(socketName, "socketName");
    }

    /**
     * One poll. Failures of the service's calls are in the report, not thrown: the runner goes on with the
     * next poll.
     *
     * @param nowMs the application's monotonic clock, in ms
     * @param video the frame on screen, rendered with the video delay of the previous report, or null when
     *        there is none
     * @return what the poll did and decided
     * @throws IllegalStateException after {@link #close()}, or after the service's {@link
     *         LipSyncService#close()}
     */
    public synchronized Report poll(long nowMs, VideoTimestamps video)
    {
        final long[] whole = new long[REPORT_WHOLE_NUMBERS];
        final double[] fraction = new double[SyncDecision.FRACTIONS];
        nativePoll(open(), nowMs, video != null, video != null ? video.getCapture() : 0,
                   video != null ? video.getRendering() : 0, whole, fraction);
        return new Report(whole, fraction);
    }

    /**
     * @return the whole result text of the last call to the engine that failed, or "" when none has
     * @throws IllegalStateException after {@link #close()}
     */
    public synchronized String getLastFailure()
    {
        return new String(nativeLastFailure(open()), StandardCharsets.UTF_8);
    }

    static long checkedInterval(long pollIntervalMs)
    {
        if (pollIntervalMs < 0 || pollIntervalMs > LONGEST_INTERVAL_MS) {
            throw new IllegalArgumentException("A poll interval runs from 0 to 4294967295 ms, not " +
                                               pollIntervalMs);
        }
        return pollIntervalMs;
    }

    @Override void destroy(long handle) { nativeDestroy(handle); }

    @Override void marginResponse(long handle, double[] values) { nativeMarginResponse(handle, values); }

    // The native runner's calls to the engine, made during nativePoll on its thread. A failure's text is the
    // thread's result text, which the service's native call left; an exception other than LipSyncException
    // ends the poll and leaves it.
    private boolean engineIsConnected() { return service.isConnected(); }

    private int engineConnect()
    {
        try {
            service.connect(socketName);
            return SUCCESS;
        } catch (LipSyncException failure) {
            return failure.getCode();
        }
    }

    private int engineDisconnect()
    {
        try {
            service.disconnect();
            return SUCCESS;
        } catch (LipSyncException failure) {
            return failure.getCode();
        }
    }

    private int engineGetAudioTimestamps(long[] values)
    {
        try {
            final NtpTimestamps audio = service.getAudioTimestamps();
            values[0] = audio.getCaptureTimestamp();
            values[1] = audio.getRenderingTimestamp();
            values[2] = audio.getReceivingTimestamp();
            values[3] = audio.getJitterBufferDepth();
            return SUCCESS;
        } catch (LipSyncException failure) {
            return failure.getCode();
        }
    }

    private int engineSetAudioDelayMargin(long delayMs)
    {
        try {
            service.setAudioDelayMargin(delayMs);
            return SUCCESS;
        } catch (LipSyncException failure) {
            return failure.getCode();
        }
    }

    private static native long nativeCreate(long pollIntervalMs);

    private static native void nativeDestroy(long runner);

    // Instance methods, so that the JNI frame keeps this runner reachable until the call returns.
    private native void nativePoll(long runner, long nowMs, boolean videoValid, long videoCapture,
                                   long videoRendering, long[] whole, double[] fraction);

    private native byte[] nativeLastFailure(long runner);

    private native void nativeMarginResponse(long runner, double[] values);
}
