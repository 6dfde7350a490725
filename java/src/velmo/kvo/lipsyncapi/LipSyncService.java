package velmo.kvo.lipsyncapi;

import java.nio.charset.StandardCharsets;
import java.util.Objects;
import java.util.concurrent.TimeUnit;

/**
 * The audio engine's lip-sync service, over the native library libakvolipsyncapi. Runs on Android from API
 * level 21.
 *
 * <p>Any thread may call any method. Calls on one service run one after another, and calls that wait for the
 * engine ({@link #setAudioDelayMargin}, {@link #getAudioTimestamps}) run one after another in the whole
 * process. Without a deadline a call waits as long as the engine takes; with one ({@link #setDeadline}) it
 * gives up with {@link LipSyncException#DEADLINE_EXCEEDED}, connecting included.
 *
 * <p>Failures are {@link LipSyncException}s with the service's code and whole result text; each method names
 * the codes it can end with. {@link LipSyncException#UNKNOWN_ERROR} means that the library ran out of memory,
 * which any call may meet. Each connect, disconnect, margin and timestamps call also leaves one line in the
 * system log. No call lets SIGPIPE reach the process.
 *
 * <p>{@link #close()} disconnects and frees the native service; a service that is never closed is freed once
 * it is no longer reachable. Calls that start after {@code close()} throw {@link IllegalStateException}.
 *
 * <p>Threads of the library: one native watchdog thread, which ends the calls that outlive their deadline,
 * from the first such call until no service is left; and one daemon thread, "akvo-releaser", which frees
 * the services that were never closed, from the first service on.
 */
public final class LipSyncService implements AutoCloseable
{
    /** Where the engine publishes the service on the device. */
    public static final String DEFAULT_SOCKET_NAME = "/dev/socket/akvo_lipsync";

    private static final int SUCCESS = 1000;
    private static final long LONGEST_DEADLINE_MS = 0xFFFFFFFFL;

    static { System.loadLibrary("akvolipsyncapi_jni"); }

    private final long handle;
    private final NativeReleaser.Release release;
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
        release = NativeReleaser.register(this, handle);
    }

    /**
     * Bounds each later call to about {@code amount} {@code unit}s, waiting for its turn and connecting
     * included; 0, the default, waits as long as the engine takes. A part of a millisecond counts as a whole
     * one. Takes effect at once, also while another thread is in a call, for the calls that start afterwards.
     *
     * @param amount the longest a call may take, in {@code unit}s, or 0 for no bound
     * @param unit the unit of {@code amount}
     * @throws IllegalArgumentException when negative or longer than 2^32 - 1 ms (about 49 days)
     * @throws IllegalStateException after {@link #close()}
     */
    public void setDeadline(long amount, TimeUnit unit)
    {
        Objects.requireNonNull(unit, "unit");
        final long wholeMillis = amount < 0 ? -1 : unit.toMillis(amount);
        final long millis =
            wholeMillis >= 0 && unit.convert(wholeMillis, TimeUnit.MILLISECONDS) < amount ? wholeMillis + 1
                                                                                            : wholeMillis;
        if (millis < 0 || millis > LONGEST_DEADLINE_MS) {
            throw new IllegalArgumentException("A deadline runs from 0 to 4294967295 ms, not " + amount + " " +
                                               unit);
        }
        enter();
        try {
            nativeSetDeadline(handle, millis);
        } finally {
            leave();
        }
    }

    /**
     * Connects to the engine's socket at {@link #DEFAULT_SOCKET_NAME}.
     *
     * @throws LipSyncException as {@link #connect(String)}
     */
    public void connect() throws LipSyncException { connect(DEFAULT_SOCKET_NAME); }

    /**
     * Connects to the engine's Unix socket at {@code socketName}.
     *
     * @param socketName the socket's path, at most 107 bytes in UTF-8
     * @throws LipSyncException {@link LipSyncException#INVALID_PARAM INVALID_PARAM} for an empty or longer
     *         name, before anything is done; {@link LipSyncException#BAD_STATE BAD_STATE} when connected;
     *         {@link LipSyncException#CANNOT_CONNECT CANNOT_CONNECT} when no engine accepts the connection;
     *         {@link LipSyncException#DEADLINE_EXCEEDED DEADLINE_EXCEEDED} when the engine did not accept it
     *         in time, or another call on this service held its turn until the deadline
     * @throws IllegalArgumentException when the name holds a NUL character
     * @throws IllegalStateException after {@link #close()}
     */
    public void connect(String socketName) throws LipSyncException
    {
        Objects.requireNonNull(socketName, "socketName");
        if (socketName.indexOf('\0') >= 0) {
            throw new IllegalArgumentException("A socket name cannot hold a NUL character");
        }
        final byte[] name = socketName.getBytes(StandardCharsets.UTF_8);
        enter();
        try {
            check(nativeConnect(handle, name));
        } finally {
            leave();
        }
    }

    /**
     * Closes the connection.
     *
     * @throws LipSyncException {@link LipSyncException#BAD_STATE BAD_STATE} when not connected;
     *         {@link LipSyncException#DEADLINE_EXCEEDED DEADLINE_EXCEEDED} when another call on this service
     *         held its turn until the deadline
     * @throws IllegalStateException after {@link #close()}
     */
    public void disconnect() throws LipSyncException
    {
        enter();
        try {
            check(nativeDisconnect(handle));
        } finally {
            leave();
        }
    }

    /**
     * Whether the service holds a connection: from a successful {@link #connect} until {@link #disconnect}, or
     * until a deadline closed the connection. A {@link LipSyncException#TRANSPORT_ERROR TRANSPORT_ERROR}
     * leaves it connected. Does not wait for a call in progress, which may change the answer.
     *
     * @return true while connected
     * @throws IllegalStateException after {@link #close()}
     */
    public boolean isConnected()
    {
        enter();
        try {
            return nativeIsConnected(handle);
        } finally {
            leave();
        }
    }

    /**
     * The margins that {@link #setAudioDelayMargin} accepts; the engine is not asked.
     *
     * @return the granularity (20 ms) and the largest margin (100 ms)
     * @throws LipSyncException {@link LipSyncException#BAD_STATE BAD_STATE} when not connected;
     *         {@link LipSyncException#DEADLINE_EXCEEDED DEADLINE_EXCEEDED} when another call on this service
     *         held its turn until the deadline
     * @throws IllegalStateException after {@link #close()}
     */
    public Capabilities getCapabilities() throws LipSyncException
    {
        final long[] values = new long[2];
        enter();
        try {
            check(nativeGetCapabilities(handle, values));
        } finally {
            leave();
        }
        return new Capabilities(values[0], values[1]);
    }

    /**
     * Asks the engine to take on an audio delay margin of {@code delayMs}.
     *
     * @param delayMs the margin in milliseconds: 0 to 100 in steps of 20
     * @throws LipSyncException {@link LipSyncException#INVALID_PARAM INVALID_PARAM} above 100 or off the
     *         steps, before anything is sent; {@link LipSyncException#BAD_STATE BAD_STATE} when not connected;
     *         {@link LipSyncException#TRANSPORT_ERROR TRANSPORT_ERROR} when the exchange failed;
     *         {@link LipSyncException#SERVER_ERROR SERVER_ERROR} or
     *         {@link LipSyncException#NOT_IN_CALL NOT_IN_CALL} when the engine refused;
     *         {@link LipSyncException#DEADLINE_EXCEEDED DEADLINE_EXCEEDED} when the answer or the turn did not
     *         come in time
     * @throws IllegalArgumentException when negative
     * @throws IllegalStateException after {@link #close()}
     */
    public void setAudioDelayMargin(long delayMs) throws LipSyncException
    {
        if (delayMs < 0) {
            throw new IllegalArgumentException("A delay margin cannot be negative: " + delayMs);
        }
        enter();
        try {
            check(nativeSetAudioDelayMargin(handle, delayMs));
        } finally {
            leave();
        }
    }

    /**
     * The last margin that the engine accepted; the engine is not asked.
     *
     * @return the margin in milliseconds, 0 before any was accepted
     * @throws LipSyncException {@link LipSyncException#BAD_STATE BAD_STATE} when not connected;
     *         {@link LipSyncException#DEADLINE_EXCEEDED DEADLINE_EXCEEDED} when another call on this service
     *         held its turn until the deadline
     * @throws IllegalStateException after {@link #close()}
     */
    public long getAudioDelayMargin() throws LipSyncException
    {
        final long[] values = new long[1];
        enter();
        try {
            check(nativeGetAudioDelayMargin(handle, values));
        } finally {
            leave();
        }
        return values[0];
    }

    /**
     * Asks the engine for the audio path's timestamps.
     *
     * @return the four values
     * @throws LipSyncException {@link LipSyncException#BAD_STATE BAD_STATE} when not connected;
     *         {@link LipSyncException#TRANSPORT_ERROR TRANSPORT_ERROR} when the exchange failed;
     *         {@link LipSyncException#SERVER_ERROR SERVER_ERROR} or
     *         {@link LipSyncException#NOT_IN_CALL NOT_IN_CALL} when the engine refused;
     *         {@link LipSyncException#DEADLINE_EXCEEDED DEADLINE_EXCEEDED} when the answer or the turn did not
     *         come in time
     * @throws IllegalStateException after {@link #close()}
     */
    public NtpTimestamps getAudioTimestamps() throws LipSyncException
    {
        final long[] values = new long[4];
        enter();
        try {
            check(nativeGetAudioTimestamps(handle, values));
        } finally {
            leave();
        }
        return new NtpTimestamps(values[0], values[1], values[2], values[3]);
    }

    /**
     * Hands over the video side's timestamps; the engine is not told, the call only checks the connection.
     *
     * @param timestamps the video side's timestamps
     * @throws LipSyncException {@link LipSyncException#BAD_STATE BAD_STATE} when not connected;
     *         {@link LipSyncException#DEADLINE_EXCEEDED DEADLINE_EXCEEDED} when another call on this service
     *         held its turn until the deadline
     * @throws IllegalStateException after {@link #close()}
     */
    public void setVideoTimestamps(NtpTimestamps timestamps) throws LipSyncException
    {
        Objects.requireNonNull(timestamps, "timestamps");
        enter();
        try {
            check(nativeSetVideoTimestamps(handle, timestamps.getCaptureTimestamp(),
                                           timestamps.getRenderingTimestamp(), timestamps.getReceivingTimestamp(),
                                           timestamps.getJitterBufferDepth()));
        } finally {
            leave();
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
        release.run();
    }

    private void enter()
    {
        synchronized (lifetime) {
            if (closed) {
                throw new IllegalStateException("The lip-sync service is closed");
            }
            ++callsInProgress;
        }
    }

    private void leave()
    {
        synchronized (lifetime) {
            if (--callsInProgress == 0 && closed) {
                lifetime.notifyAll();
            }
        }
    }

    // The result text belongs to the calling thread, so it is read on this thread right after the call.
    private static void check(int code) throws LipSyncException
    {
        if (code != SUCCESS) {
            final byte[] text = nativeResultText();
            throw new LipSyncException(code, new String(text, StandardCharsets.UTF_8));
        }
    }

    private static native long nativeCreate();

    static native void nativeDestroy(long service);

    private static native byte[] nativeResultText();

    // Instance methods, so that the JNI frame keeps this service reachable, and its native service alive,
    // until the call returns.
    private native void nativeSetDeadline(long service, long milliseconds);

    private native int nativeConnect(long service, byte[] socketName);

    private native int nativeDisconnect(long service);

    private native boolean nativeIsConnected(long service);

    private native int nativeGetCapabilities(long service, long[] values);

    private native int nativeSetAudioDelayMargin(long service, long delayMs);

    private native int nativeGetAudioDelayMargin(long service, long[] values);

    private native int nativeGetAudioTimestamps(long service, long[] values);

    private native int nativeSetVideoTimestamps(long service, long capture, long rendering, long receiving,
                                                long jitterBufferDepth);
}
