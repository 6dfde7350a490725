package velmo.kvo.lipsyncapi;

import java.lang.ref.Cleaner;
import java.lang.ref.Reference;
import java.nio.charset.StandardCharsets;
import java.time.Duration;
import java.util.Objects;

/**
 * The audio engine's lip-sync service, over the native library libakvolipsyncapi.
 *
 * <p>Any thread may call any method. Calls on one service run one after another, and calls that wait for the
 * engine ({@link #setAudioDelayMargin}, {@link #getAudioTimestamps}) run one after another in the whole
 * process. Without a deadline a call waits as long as the engine takes; with one ({@link #setDeadline}) it
 * gives up with
 * {@link LipSyncException#DEADLINE_EXCEEDED}.
 *
 * <p>Failures are {@link LipSyncException}s with the service's code and whole result text. Each connect,
 * disconnect, margin and timestamps call also leaves one line in the system log.
 *
 * <p>{@link #close()} disconnects and frees the native service; a service that is never closed is freed once
 * it is no longer reachable. Calls that start after {@code close()} throw {@link IllegalStateException}.
 */
public final class LipSyncService implements AutoCloseable
{
    /** Where the engine publishes the service on the device. */
    public static final String DEFAULT_SOCKET_NAME = "/dev/socket/akvo_lipsync";

    private static final int SUCCESS = 1000;
    private static final Duration LONGEST_DEADLINE = Duration.ofMillis(0xFFFF_FFFFL);
    private static final Cleaner CLEANER = Cleaner.create();

    static { System.loadLibrary("akvolipsyncapi_jni"); }

    private final Cleaner.Cleanable cleanable;
    private final long handle;
    // Counts the calls in progress, so that close() frees the native service only after the last; and tells
    // the calls that start after close() began that they may not.
    private final Object lifetime = new Object();
    private int callsInProgress;
    private boolean closed;

    /** A disconnected service without a deadline. */
    public LipSyncService()
    {
        handle = nativeCreate();
        if (handle == 0) {
            throw new OutOfMemoryError("No memory for a lip-sync service");
        }
        cleanable = CLEANER.register(this, new Release(handle));
    }

    /**
     * Bounds each later call to about {@code deadline}, waiting for its turn included; {@link Duration#ZERO},
     * the default, waits as long as the engine takes. A part of a millisecond counts as a whole one. Takes
     * effect at once, also while another thread is in a call, for the calls that start afterwards.
     *
     * @param deadline the longest a call may take, or {@link Duration#ZERO} for no bound
     * @throws IllegalArgumentException when negative or longer than 2^32 - 1 ms (about 49 days)
     */
    public void setDeadline(Duration deadline)
    {
        Objects.requireNonNull(deadline, "deadline");
        if (deadline.isNegative() || deadline.compareTo(LONGEST_DEADLINE) > 0) {
            throw new IllegalArgumentException("A deadline runs from 0 to 4294967295 ms, not " + deadline);
        }
        final long wholeMillis = deadline.toMillis();
        final long millis = deadline.equals(Duration.ofMillis(wholeMillis)) ? wholeMillis : wholeMillis + 1;
        final long service = acquire();
        try {
            nativeSetDeadline(service, millis);
        } finally {
            release();
        }
    }

    /**
     * Connects to the engine's socket at {@link #DEFAULT_SOCKET_NAME}.
     *
     * @throws LipSyncException when the service reports a failure, with its code and text
     */
    public void connect() throws LipSyncException { connect(DEFAULT_SOCKET_NAME); }

    /**
     * Connects to the engine's Unix socket at {@code socketName}.
     *
     * @param socketName the socket's path
     * @throws LipSyncException when the service reports a failure, with its code and text
     */
    public void connect(String socketName) throws LipSyncException
    {
        Objects.requireNonNull(socketName, "socketName");
        if (socketName.indexOf('\0') >= 0) {
            throw new IllegalArgumentException("A socket name cannot hold a NUL character");
        }
        final byte[] name = socketName.getBytes(StandardCharsets.UTF_8);
        final long service = acquire();
        try {
            check(nativeConnect(service, name));
        } finally {
            release();
        }
    }

    /**
     * Closes the connection.
     *
     * @throws LipSyncException when the service reports a failure, with its code and text
     */
    public void disconnect() throws LipSyncException
    {
        final long service = acquire();
        try {
            check(nativeDisconnect(service));
        } finally {
            release();
        }
    }

    /**
     * The margins that {@link #setAudioDelayMargin} accepts; the engine is not asked.
     *
     * @return the granularity (20 ms) and the largest margin (100 ms)
     * @throws LipSyncException when the service reports a failure, with its code and text
     */
    public Capabilities getCapabilities() throws LipSyncException
    {
        final long[] values = new long[2];
        final long service = acquire();
        try {
            check(nativeGetCapabilities(service, values));
        } finally {
            release();
        }
        return new Capabilities(values[0], values[1]);
    }

    /**
     * Asks the engine to take on an audio delay margin of {@code delayMs} (an unsigned value; 0 to 100 in
     * steps of 20).
     *
     * @param delayMs the margin in milliseconds, unsigned
     * @throws LipSyncException when the service reports a failure, with its code and text
     */
    public void setAudioDelayMargin(long delayMs) throws LipSyncException
    {
        final long service = acquire();
        try {
            check(nativeSetAudioDelayMargin(service, delayMs));
        } finally {
            release();
        }
    }

    /**
     * The last margin that the engine accepted; the engine is not asked.
     *
     * @return the margin in milliseconds, 0 before any was accepted
     * @throws LipSyncException when the service reports a failure, with its code and text
     */
    public long getAudioDelayMargin() throws LipSyncException
    {
        final long[] values = new long[1];
        final long service = acquire();
        try {
            check(nativeGetAudioDelayMargin(service, values));
        } finally {
            release();
        }
        return values[0];
    }

    /**
     * Asks the engine for the audio path's timestamps.
     *
     * @return the four values
     * @throws LipSyncException when the service reports a failure, with its code and text
     */
    public NtpTimestamps getAudioTimestamps() throws LipSyncException
    {
        final long[] values = new long[4];
        final long service = acquire();
        try {
            check(nativeGetAudioTimestamps(service, values));
        } finally {
            release();
        }
        return new NtpTimestamps(values[0], values[1], values[2], values[3]);
    }

    /**
     * Hands over the video side's timestamps; the engine is not told, the call only checks the connection.
     *
     * @param timestamps the video side's timestamps
     * @throws LipSyncException when the service reports a failure, with its code and text
     */
    public void setVideoTimestamps(NtpTimestamps timestamps) throws LipSyncException
    {
        Objects.requireNonNull(timestamps, "timestamps");
        final long service = acquire();
        try {
            check(nativeSetVideoTimestamps(
                service, timestamps.getCaptureTimestamp(), timestamps.getRenderingTimestamp(),
                timestamps.getReceivingTimestamp(), timestamps.getJitterBufferDepth()));
        } finally {
            release();
        }
    }

    /**
     * Disconnects and frees the native service. Calls that start from now on throw
     * {@link IllegalStateException} at once; calls in progress on other threads run to their end first (a
     * deadline bounds them). Closing again, even while the first close waits, does nothing.
     */
    @Override public void close()
    {
        synchronized (lifetime) {
            if (closed) {
                return;
            }
            closed = true;
            boolean interrupted = false;
            while (callsInProgress > 0) {
                try {
                    lifetime.wait();
                } catch (InterruptedException e) {
                    interrupted = true;
                }
            }
            if (interrupted) {
                Thread.currentThread().interrupt();
            }
        }
        cleanable.clean();
    }

    private long acquire()
    {
        synchronized (lifetime) {
            if (closed) {
                throw new IllegalStateException("The lip-sync service is closed");
            }
            ++callsInProgress;
        }
        return handle;
    }

    // Keeps this object reachable until the native call is over, so that the cleaner cannot free the native
    // service under it.
    private void release()
    {
        synchronized (lifetime) {
            if (--callsInProgress == 0 && closed) {
                lifetime.notifyAll();
            }
        }
        Reference.reachabilityFence(this);
    }

    // The result text belongs to the calling thread, so it is read on this thread right after the call.
    private static void check(int code) throws LipSyncException
    {
        if (code != SUCCESS) {
            final byte[] text = nativeResultText();
            throw new LipSyncException(code, new String(text, StandardCharsets.UTF_8));
        }
    }

    // Holds the native handle, not the service, which would otherwise never become unreachable.
    private static final class Release implements Runnable
    {
        private final long service;

        Release(long service) { this.service = service; }

        @Override public void run() { nativeDestroy(service); }
    }

    private static native long nativeCreate();

    private static native void nativeDestroy(long service);

    private static native void nativeSetDeadline(long service, long milliseconds);

    private static native int nativeConnect(long service, byte[] socketName);

    private static native int nativeDisconnect(long service);

    private static native int nativeGetCapabilities(long service, long[] values);

    private static native int nativeSetAudioDelayMargin(long service, long delayMs);

    private static native int nativeGetAudioDelayMargin(long service, long[] values);

    private static native int nativeGetAudioTimestamps(long service, long[] values);

    private static native int nativeSetVideoTimestamps(long service, long capture, long rendering,
                                                       long receiving, long jitterBufferDepth);

    private static native byte[] nativeResultText();
}
