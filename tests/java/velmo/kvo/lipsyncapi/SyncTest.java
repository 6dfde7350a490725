package velmo.kvo.lipsyncapi;

import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;
import static org.junit.Assert.assertNull;
import static org.junit.Assert.assertThrows;
import static org.junit.Assert.assertTrue;

import java.util.EnumSet;
import org.junit.Test;

public class SyncTest
{
    private static final long MS = 4294967L; // 2^32 / 1000, one millisecond of NTP time, nearly
    private static final long NOW = 1L << 62;
    private static final NtpTimestamps FIXED =
        new NtpTimestamps(16045690984833536L, 16045690985263104L, 16045690984404992L, 40);

    @Test public void controllerTakesPollsAndReportsEvents()
    {
        final SyncController controller = new SyncController(200);
        final NtpTimestamps audio = new NtpTimestamps(NOW - 60 * MS, NOW, 0, 0);
        final VideoTimestamps video = new VideoTimestamps(NOW - 140 * MS, NOW);
        final SyncDecision first = controller.update(1000, audio, video);
        assertEquals(SyncDecision.State.TRACKING, first.getState());
        assertEquals(-80, first.getUncorrectedSkewMs(), 0.01);
        controller.update(1200, audio, video);
        final SyncDecision third = controller.update(1400, audio, video);
        assertEquals(SyncDecision.State.MARGIN_PENDING, third.getState());
        assertEquals(100, third.getMarginMs());
        assertTrue(third.isApplyMargin());
        controller.marginApplied(1400, 100, false);
        final SyncDecision back = controller.update(1300, null, null);
        assertEquals(EnumSet.of(SyncDecision.Event.MARGIN_REFUSED, SyncDecision.Event.TIME_WENT_BACK),
                     back.getEventSet());
        assertEquals(SyncDecision.Event.MARGIN_REFUSED.bit() | SyncDecision.Event.TIME_WENT_BACK.bit(),
                     back.getEvents());
        final MarginResponse response = controller.getMarginResponse();
        assertEquals(1, response.getGain(), 0);
        assertEquals(300, response.getLagMs(), 0);
        assertEquals(0, response.getChangesSeen());
        controller.close();
        assertThrows(IllegalStateException.class, controller::reconnected);
    }

    // The runner's calls are the service's: a closed service ends the poll with its exception.
    @Test public void runnerPollsOverTheService() throws Exception
    {
        final LipSyncService service = new LipSyncService();
        try (Simulator simulator = new Simulator("--fixed", "--verbose");
             SyncRunner runner = new SyncRunner(service, simulator.socketName(), 200)) {
            final VideoTimestamps frame =
                new VideoTimestamps(FIXED.getCaptureTimestamp() - 40 * MS, FIXED.getCaptureTimestamp());
            final SyncRunner.Report report = runner.poll(0, frame);
            assertTrue(report.isConnected());
            assertTrue(service.isConnected());
            assertEquals(SyncRunner.SUCCESS, report.getTimestampsCode());
            assertEquals(SyncRunner.SUCCESS, report.getMarginCode());
            assertEquals(FIXED, report.getAudio());
            assertEquals(EnumSet.of(SyncDecision.Event.RECONNECTED), report.getDecision().getEventSet());
            assertTrue(simulator.logShows("SetAudioDelay_Request 0"));
            assertEquals("", runner.getLastFailure());
            service.close();
            assertThrows(IllegalStateException.class, () -> runner.poll(200, frame));
        }
    }

    @Test public void runnerReportsWhatFailed()
    {
        try (LipSyncService service = new LipSyncService();
             SyncRunner runner = new SyncRunner(service, "/tmp/akvo-java-sync-nobody-listens", 200)) {
            final SyncRunner.Report report = runner.poll(0, null);
            assertFalse(report.isConnected());
            assertEquals(LipSyncException.CANNOT_CONNECT, report.getTimestampsCode());
            assertNull(report.getAudio());
            assertTrue(runner.getLastFailure(),
                       runner.getLastFailure().startsWith(
                           "Cannot connect to Audio KVO (Code 1004): {Connection has failed (Code 20002)"));
        }
    }
}
