package velmo.kvo.lipsyncapi;

import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertNotEquals;
import static org.junit.Assert.assertTrue;

import org.junit.Test;

public class ValuesTest
{
    @Test public void timestampsAreUnsigned()
    {
        final NtpTimestamps largest = new NtpTimestamps(-1L, Long.MIN_VALUE, 0, 40);
        assertEquals(
            "NtpTimestamps{capture=18446744073709551615, rendering=9223372036854775808, receiving=0, "
                + "jitterBufferDepth=40}",
            largest.toString());
        assertTrue(largest.compareTo(new NtpTimestamps(1, 0, 0, 0)) > 0);
        assertTrue(new NtpTimestamps(5, 1, 0, 0).compareTo(new NtpTimestamps(5, -1L, 0, 0)) < 0);
        assertEquals(0, largest.compareTo(new NtpTimestamps(-1L, Long.MIN_VALUE, 0, 40)));
    }

    @Test public void equalValuesAreEqual()
    {
        assertEquals(new NtpTimestamps(1, 2, 3, 4), new NtpTimestamps(1, 2, 3, 4));
        assertEquals(new NtpTimestamps(1, 2, 3, 4).hashCode(), new NtpTimestamps(1, 2, 3, 4).hashCode());
        assertNotEquals(new NtpTimestamps(1, 2, 3, 4), new NtpTimestamps(1, 2, 3, 5));
        assertEquals(new Capabilities(20, 100), new Capabilities(20, 100));
        assertNotEquals(new Capabilities(20, 100), new Capabilities(100, 20));
        assertEquals("Capabilities{granularityMs=20, maxAudioDelayMarginMs=100}",
                     new Capabilities(20, 100).toString());
    }

}
