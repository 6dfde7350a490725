package velmo.kvo.lipsyncapi;

import java.lang.ref.PhantomReference;
import java.lang.ref.ReferenceQueue;
import java.util.Collections;
import java.util.HashSet;
import java.util.Set;

/**
 * Frees the native service of a {@link LipSyncService} that became unreachable without being closed, as
 * {@code java.lang.ref.Cleaner} would from API level 33: a phantom reference per service, and one daemon
 * thread for the process, "akvo-releaser", started with the first service.
 */
final class NativeReleaser
{
    private static final ReferenceQueue<Object> QUEUE = new ReferenceQueue<Object>();
    // A phantom reference that is itself unreachable is never enqueued, so each is kept here until it is run.
    private static final Set<Release> PENDING = Collections.synchronizedSet(new HashSet<Release>());
    private static Thread thread;

    private NativeReleaser() {}

    /** Frees {@code service} once {@code owner} is unreachable, unless {@link Release#run()} came first. */
    static synchronized Release register(Object owner, long service)
    {
        final Release release = new Release(owner, service);
        PENDING.add(release);
        if (thread == null) {
            thread = new Thread(new Runnable() {
                @Override public void run() { releaseForEver(); }
            }, "akvo-releaser");
            thread.setDaemon(true);
            thread.start();
        }
        return release;
    }

    private static void releaseForEver()
    {
        for (;;) {
            try {
                ((Release)QUEUE.remove()).run();
            } catch (InterruptedException ignored) {
                // Nobody but the runtime may end this thread.
            }
        }
    }

    /** Frees one native service, once, whoever runs it first: close() or the releaser thread. */
    static final class Release extends PhantomReference<Object> implements Runnable
    {
        private final long service;
        private boolean done;

        private Release(Object owner, long service)
        {
            super(owner, QUEUE);
            this.service = service;
        }

        @Override public void run()
        {
            synchronized (this) {
                if (done) {
                    return;
                }
                done = true;
            }
            PENDING.remove(this);
            clear();
            LipSyncService.nativeDestroy(service);
        }
    }
}
