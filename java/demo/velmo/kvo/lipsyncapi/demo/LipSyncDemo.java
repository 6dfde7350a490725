package velmo.kvo.lipsyncapi.demo;

import java.util.concurrent.TimeUnit;
import velmo.kvo.lipsyncapi.LipSyncException;
import velmo.kvo.lipsyncapi.LipSyncService;
import velmo.kvo.lipsyncapi.NtpTimestamps;

/**
 * Walks through the service once and, given a number of calls, times that many timestamps requests after as
 * many for warming up, without a deadline and then with one, whose watchdog costs a thread wake-up per call.
 *
 * <p>Usage: LipSyncDemo [SOCKET [CALLS]]
 */
public final class LipSyncDemo
{
    private LipSyncDemo() {}

    public static void main(String[] arguments) throws LipSyncException
    {
        final String socket = arguments.length > 0 ? arguments[0] : LipSyncService.DEFAULT_SOCKET_NAME;
        final int calls = arguments.length > 1 ? Integer.parseInt(arguments[1]) : 0;
        try (LipSyncService service = new LipSyncService()) {
            service.setDeadline(2, TimeUnit.SECONDS);
            service.connect(socket);
            System.out.println("capabilities: " + service.getCapabilities());
            service.setAudioDelayMargin(40);
            System.out.println("audio delay margin: " + service.getAudioDelayMargin() + " ms");
            System.out.println("timestamps: " + service.getAudioTimestamps());
            try {
                service.setAudioDelayMargin(30);
            } catch (LipSyncException refused) {
                System.out.println("refused with code " + refused.getCode() + ": " + refused.getText());
            }
            if (calls > 0) {
                service.setDeadline(0, TimeUnit.SECONDS);
                timeCalls(service, calls, "without a deadline");
                service.setDeadline(2, TimeUnit.SECONDS);
                timeCalls(service, calls, "with a deadline");
            }
        }
    }

    private static void timeCalls(LipSyncService service, int calls, String how) throws LipSyncException
    {
        NtpTimestamps last = null;
        for (int call = 0; call < calls; ++call) {
            last = service.getAudioTimestamps();
        }
        final long start = System.nanoTime();
        for (int call = 0; call < calls; ++call) {
            last = service.getAudioTimestamps();
        }
        final long elapsed = System.nanoTime() - start;
        System.out.printf("%d timestamps calls %s: %.1f us per call (last %s)%n", calls, how,
                          elapsed / 1000.0 / calls, last);
    }
}
