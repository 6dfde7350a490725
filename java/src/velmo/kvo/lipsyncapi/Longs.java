package velmo.kvo.lipsyncapi;

/** The unsigned and hashing methods of {@link Long} that Android has only from API level 24. */
final class Longs
{
    private Longs() {}

    /** As {@code Long.hashCode(long)}. */
    static int hashCode(long value) { return (int)(value ^ (value >>> 32)); }

    /** As {@code Long.compareUnsigned(long, long)}. */
    static int compareUnsigned(long a, long b) { return Long.compare(a ^ Long.MIN_VALUE, b ^ Long.MIN_VALUE); }

    /** As {@code Long.toUnsignedString(long)}. */
    static String toUnsignedString(long value)
    {
        if (value >= 0) {
            return Long.toString(value);
        }
        // The unsigned value halved is a positive long; its tenth gives every digit but the last.
        final long tenth = (value >>> 1) / 5;
        return Long.toString(tenth) + (value - tenth * 10);
    }
}
