package velmo.kvo.lipsyncapi;

/**
 * A failed call of {@link LipSyncService}: the service's code, as an int and as a {@link Code}, and the whole
 * text of its result, which names every layer's cause from the outermost inwards, e.g. {@code "The AKVO is
 * not performing a call (Code 1007): {Bad state (Code 1003): The engine is not in a call}"}. The text is also
 * the exception's message.
 */
public class LipSyncException extends Exception
{
    private static final long serialVersionUID = 1L;

    /** Out of memory in the library; the service itself never reports it. */
    public static final int UNKNOWN_ERROR = 1001;
    /** An argument out of range or off the 20 ms steps, or a socket name that is empty or too long. */
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
     * The deadline passed: the engine did not answer in time, and the service was disconnected (connect again
     * before the next call); or it did not accept the connection in time, and the service stays disconnected;
     * or the call was still waiting for its turn, and nothing was done. The text tells which.
     */
    public static final int DEADLINE_EXCEEDED = 1100;

    /** The codes by name; each constant's {@link #value()} is the int of the same name above. */
    public enum Code {
        /** {@link LipSyncException#UNKNOWN_ERROR}. */
        UNKNOWN_ERROR(LipSyncException.UNKNOWN_ERROR),
        /** {@link LipSyncException#INVALID_PARAM}. */
        INVALID_PARAM(LipSyncException.INVALID_PARAM),
        /** {@link LipSyncException#BAD_STATE}. */
        BAD_STATE(LipSyncException.BAD_STATE),
        /** {@link LipSyncException#CANNOT_CONNECT}. */
        CANNOT_CONNECT(LipSyncException.CANNOT_CONNECT),
        /** {@link LipSyncException#TRANSPORT_ERROR}. */
        TRANSPORT_ERROR(LipSyncException.TRANSPORT_ERROR),
        /** {@link LipSyncException#SERVER_ERROR}. */
        SERVER_ERROR(LipSyncException.SERVER_ERROR),
        /** {@link LipSyncException#NOT_IN_CALL}. */
        NOT_IN_CALL(LipSyncException.NOT_IN_CALL),
        /** {@link LipSyncException#DEADLINE_EXCEEDED}. */
        DEADLINE_EXCEEDED(LipSyncException.DEADLINE_EXCEEDED);

        private final int value;

        Code(int value) { this.value = value; }

        /** @return the code's number, e.g. 1100 */
        public int value() { return value; }

        /**
         * @param value a code's number
         * @return the constant whose value is {@code value}, or null for a number that is no code
         */
        public static Code of(int value)
        {
            for (final Code code : values()) {
                if (code.value == value) {
                    return code;
                }
            }
            return null;
        }
    }

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

    /** @return the code by name, e.g. {@link Code#DEADLINE_EXCEEDED}; null for a number that is no code */
    public Code getCodeName() { return Code.of(code); }

    /** @return the whole result text, the same as {@link #getMessage()} */
    public String getText() { return getMessage(); }
}
