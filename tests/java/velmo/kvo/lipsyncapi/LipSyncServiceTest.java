package velmo.kvo.lipsyncapi;

import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;
import static org.junit.Assert.assertThrows;
import static org.junit.Assert.assertTrue;

import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.ExecutionException;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import java.util.concurrent.TimeUnit;
import org.junit.Test;
import org.junit.function.ThrowingRunnable;

public class LipSyncServiceTest
{
    private static final String NOT_CONNECTED = "Bad state (Code 1003): Not connected to the audio KVO";
    private static final String CUT =
        "Deadline exceeded (Code 1100): No answer within 200 ms, disconnected {An "
        +
        "error has occured in the transport layer (Code 1005): {Connection closed (Code 5904): {Protocol is "
        + "closed. (Code 40004): {Closed (Code 10002)}}}}";
    private static final NtpTimestamps FIXED =
        new NtpTimestamps(16045690984833536L, 16045690985263104L, 16045690984404992L, 40);

    private static void assertFails(int code, String text, ThrowingRunnable call)
    {
        final LipSyncException failure = assertThrows(LipSyncException.class, call);
        assertEquals(text, failure.getText());
        assertEquals(code, failure.getCode());
        assertEquals(code, failure.getCodeName().value());
    }

    @Test public void everyOperation() throws Exception
    {
        try (Simulator simulator = new Simulator("--fixed"); LipSyncService service = new LipSyncService()) {
            assertFails(LipSyncException.BAD_STATE, NOT_CONNECTED, service::getCapabilities);
            assertFails(LipSyncException.BAD_STATE, NOT_CONNECTED, () -> service.setAudioDelayMargin(40));
            assertFails(LipSyncException.BAD_STATE, NOT_CONNECTED, service::getAudioDelayMargin);
            assertFails(LipSyncException.BAD_STATE, NOT_CONNECTED, service::getAudioTimestamps);
            assertFails(LipSyncException.BAD_STATE, NOT_CONNECTED, () -> service.setVideoTimestamps(FIXED));
            assertFails(LipSyncException.BAD_STATE, NOT_CONNECTED, service::disconnect);

            final String missing = simulator.socketName() + ".missing";
            assertFails(
                LipSyncException.CANNOT_CONNECT,
                "Cannot connect to Audio KVO (Code 1004): {Connection has failed (Code 20002): Unable to connect "
                    + "to " + missing + " {No such file or directory (Code 2)}}",
                () -> service.connect(missing));
            assertFails(LipSyncException.INVALID_PARAM,
                        "Invalid Param (Code 1002): socket_name is 109 bytes long, more than the 107 that a Unix "
                            + "socket address holds",
                        () -> service.connect("/" + "\u00e9".repeat(54)));
            assertFalse(service.isConnected());
            service.connect(simulator.socketName());
            assertTrue(service.isConnected());
            assertFails(LipSyncException.BAD_STATE,
                        "Bad state (Code 1003): Already connected to the audio KVO",
                        () -> service.connect(simulator.socketName()));

            assertEquals(new Capabilities(20, 100), service.getCapabilities());
            assertEquals(0, service.getAudioDelayMargin());
            assertFails(LipSyncException.INVALID_PARAM,
                        "Invalid Param (Code 1002):  audio delay margin 150 is not in range [0..100]",
                        () -> service.setAudioDelayMargin(150));
            assertThrows(IllegalArgumentException.class, () -> service.setAudioDelayMargin(-20));
            service.setAudioDelayMargin(40);
            assertEquals(40, service.getAudioDelayMargin());
            assertEquals(FIXED, service.getAudioTimestamps());
            service.setVideoTimestamps(new NtpTimestamps(-1L, -2L, -3L, -4L));

            service.disconnect();
            assertFalse(service.isConnected());
            assertFails(LipSyncException.BAD_STATE, NOT_CONNECTED, service::disconnect);
        }
    }

    @Test public void defaultSocketIsNotThereOnTheHost()
    {
        try (LipSyncService service = new LipSyncService()) {
            assertEquals(LipSyncException.CANNOT_CONNECT,
                         assertThrows(LipSyncException.class, service::connect).getCode());
        }
    }

    @Test public void hangCutByTheDeadlineThenReconnect() throws Exception
    {
        try (Simulator simulator =
                 new Simulator("--fixed", "--fault", "2:delay:5000", "--fault", "4:delay:5000");
             LipSyncService service = new LipSyncService()) {
            service.setDeadline(200, TimeUnit.MILLISECONDS);
            service.connect(simulator.socketName());
            service.setAudioDelayMargin(40);

            assertFails(LipSyncException.DEADLINE_EXCEEDED, CUT, service::getAudioTimestamps);
            assertFalse(service.isConnected());
            assertFails(LipSyncException.BAD_STATE, NOT_CONNECTED, service::getCapabilities);
            service.connect(simulator.socketName());
            assertEquals(FIXED, service.getAudioTimestamps());

            assertFails(LipSyncException.DEADLINE_EXCEEDED, CUT, () -> service.setAudioDelayMargin(60));
            service.connect(simulator.socketName());
            assertEquals(40, service.getAudioDelayMargin());
            service.setDeadline(0, TimeUnit.SECONDS);
            assertEquals(FIXED, service.getAudioTimestamps());
        }
    }

    @Test public void deadlineWhileWaitingForAnotherCall() throws Exception
    {
        final ExecutorService executor = Executors.newSingleThreadExecutor();
        try (Simulator simulator = new Simulator("--verbose", "--fault", "1:delay:1000");
             LipSyncService slow = new LipSyncService(); LipSyncService other = new LipSyncService()) {
            slow.connect(simulator.socketName());
            other.connect(simulator.socketName());
            other.setDeadline(100, TimeUnit.MILLISECONDS);
            final Future<NtpTimestamps> slowCall = executor.submit(slow::getAudioTimestamps);
            assertTrue(simulator.logShows("request 1: GetAudioTs_Request"));

            final String waited =
                "Deadline exceeded (Code 1100): Still waiting for another call after 100 ms, nothing done";
            assertFails(LipSyncException.DEADLINE_EXCEEDED, waited, other::getAudioTimestamps);
            slow.setDeadline(100_000, TimeUnit.MICROSECONDS);
            assertFails(LipSyncException.DEADLINE_EXCEEDED, waited, slow::getCapabilities);
            slowCall.get();
            other.getAudioTimestamps();
        } finally {
            executor.shutdown();
        }
    }

    @Test public void deadlineIsCheckedAndRoundedUp()
    {
        try (LipSyncService service = new LipSyncService()) {
            service.setDeadline(1, TimeUnit.NANOSECONDS);
            service.setDeadline(0xFFFF_FFFFL, TimeUnit.MILLISECONDS);
            assertThrows(IllegalArgumentException.class, () -> service.setDeadline(-1, TimeUnit.MILLISECONDS));
            assertThrows(IllegalArgumentException.class,
                         () -> service.setDeadline(0xFFFF_FFFFL * 1_000_000 + 1, TimeUnit.NANOSECONDS));
            assertThrows(IllegalArgumentException.class, () -> service.setDeadline(Long.MAX_VALUE, TimeUnit.DAYS));
            assertThrows(NullPointerException.class, () -> service.setDeadline(1, null));
        }
    }

    // A call that waits for the engine without a deadline holds close() back, but no call that starts meanwhile.
    @Test public void callsThatStartWhileCloseWaitsFailAtOnce() throws Exception
    {
        final LipSyncService service = new LipSyncService();
        final Thread closer = new Thread(service::close);
        final ExecutorService executor = Executors.newFixedThreadPool(2);
        try (Simulator simulator = new Simulator("--verbose", "--fault", "1:delay:600000")) {
            service.connect(simulator.socketName());
            executor.submit(service::getAudioTimestamps);
            assertTrue(simulator.logShows("request 1: GetAudioTs_Request"));
            service.setDeadline(100, TimeUnit.MILLISECONDS);
            closer.start();
            while (closer.getState() != Thread.State.WAITING) {
                Thread.sleep(1);
            }
            final Future<Capabilities> later = executor.submit(service::getCapabilities);
            final ExecutionException refused =
                assertThrows(ExecutionException.class, () -> later.get(10, TimeUnit.SECONDS));
            assertEquals(IllegalStateException.class, refused.getCause().getClass());
        } finally {
            executor.shutdown();
        }
        closer.join();
    }

    @Test public void closeTwiceAndUseAfterClose() throws Exception
    {
        try (Simulator simulator = new Simulator("--fixed")) {
            final LipSyncService service = new LipSyncService();
            service.connect(simulator.socketName());
            service.close();
            service.close();
            final IllegalStateException closed =
                assertThrows(IllegalStateException.class, service::getAudioTimestamps);
            assertEquals("The lip-sync service is closed", closed.getMessage());
            assertThrows(IllegalStateException.class, () -> service.connect(simulator.socketName()));
            assertThrows(IllegalStateException.class, () -> service.setDeadline(0, TimeUnit.SECONDS));
            assertThrows(IllegalStateException.class, service::isConnected);
        }
    }

    @Test public void socketNameWithNulIsRefused()
    {
        try (LipSyncService service = new LipSyncService()) {
            assertThrows(IllegalArgumentException.class, () -> service.connect("/tmp/a\0b"));
        }
    }

    private static void connectAndForget(String socketName) throws LipSyncException
    {
        new LipSyncService().connect(socketName);
    }

    @Test public void unclosedServiceIsFreed() throws Exception
    {
        try (Simulator simulator = new Simulator("--verbose")) {
            connectAndForget(simulator.socketName());
            assertTrue(simulator.logShows("client 1 connected"));
            for (int waited = 0; waited < 10_000 && !simulator.logHas("client 1 disconnected");
                 waited += 10) {
                System.gc();
                Thread.sleep(10);
            }
            assertTrue(simulator.logHas("client 1 disconnected"));
        }
    }

    private static List<Future<Void>> startCallers(ExecutorService executor, List<LipSyncService> services,
                                                   int threads)
    {
        final List<Future<Void>> callers = new ArrayList<>();
        for (int thread = 0; thread < threads; ++thread) {
            final LipSyncService service = services.get(thread % services.size());
            final int first = thread;
            callers.add(executor.submit(() -> {
                for (int call = 0; call < 25; ++call) {
                    assertEquals(FIXED, service.getAudioTimestamps());
                    service.setAudioDelayMargin(20 * ((first + call) % 6));
                    final int refused = 10 + 20 * ((first + call) % 5);
                    assertFails(LipSyncException.INVALID_PARAM,
                                "Invalid Param (Code 1002):  audio delay margin " + refused +
                                    " doesn't match  granularity of 20ms.",
                                () -> service.setAudioDelayMargin(refused));
                    assertTrue(service.getAudioDelayMargin() <= 100);
                }
                return null;
            }));
        }
        return callers;
    }

    @Test public void eightThreadsOnOneServiceAndOnSeveral() throws Exception
    {
        final ExecutorService executor = Executors.newFixedThreadPool(8);
        final List<LipSyncService> services = new ArrayList<>();
        try (Simulator simulator = new Simulator("--fixed")) {
            for (int i = 0; i < 4; ++i) {
                services.add(new LipSyncService());
                services.get(i).connect(simulator.socketName());
            }
            services.get(1).setDeadline(60, TimeUnit.SECONDS);
            for (final Future<Void> caller : startCallers(executor, services.subList(0, 1), 8)) {
                caller.get();
            }
            for (final Future<Void> caller : startCallers(executor, services.subList(1, 2), 8)) {
                caller.get();
            }
            for (final Future<Void> caller : startCallers(executor, services, 8)) {
                caller.get();
            }
        } finally {
            executor.shutdown();
            for (final LipSyncService service : services) {
                service.close();
            }
        }
    }
}
