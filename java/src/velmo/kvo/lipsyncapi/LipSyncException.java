package velmo.kvo.lipsyncapi;

/**
 * A failed call of {@link LipSyncService}: the service's code and the whole text of its result, which names
 * every layer's cause from the outermost inwards, e.g. {@code "The AKVO is not performing a call (Code 1007):
 * {Bad state (Code 1003): The engine is not in a call}"}. The text is also the exception's message.
 */
public class LipSyncException extends Exception
{
    private static final long serialVersionUID = 1L;

    /** Out of memory in the library; the service itself never reports it. */
    public static final int UNKNOWN_ERROR = 1001;
    /** An argument out of range or off the 20 ms steps; nothing was sent. */
    public static final int INVALID_PARAM = 1002;
    /** Not connected, or already connected. */
    public static final int BAD_STATE = 1003;
    /** No engine listens on the socket, or it may not be opened. */
    public static final int CANNOT_CONNECT = 1004;
    /** The connection failed or the answer could not be read; disconnect and connect again. */
    public static final int TRANSPORT_ERROR = 1005;
    /** The engine refused the command. */
    public static final int SERVER_ERROR = 1006;
    /** The engine is not in a call. */
    public static final int NOT_IN_CALL = 1007;
    /**
     * The deadline passed. Either the engine did not answer in time, and the service was disconnected
     * (connect again before the next call), or the call was still waiting for its turn, and nothing was done.
     */
    public static final int DEADLINE_EXCEEDED = 1100;

    /** The service's code. */
    private final int code;

    /**
     * @param code the service's code, or {@link #DEADLINE_EXCEEDED}
     * @param text the whole result text
     */
    public LipSyncException(int code, String text)
    {
        super(text);
        this.code = code;
    }

    /** @return the service's code (1001 to 1007), or {@link #DEADLINE_EXCEEDED} */
    public int getCode() { return code; }

    /** @return the whole result text, the same as {@link #getMessage()} */
    public String getText() { return getMessage(); }
}
