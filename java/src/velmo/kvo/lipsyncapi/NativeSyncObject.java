package velmo.kvo.lipsyncapi;

/**
 * What {@link SyncController} and {@link SyncRunner} share: a native object that holds nothing but memory,
 * its handle, closing it, and the margin response its controller has learnt. Each subclass keeps its own
 * native methods, whose names the JNI library knows.
 */
abstract class NativeSyncObject implements AutoCloseable
{
    static { System.loadLibrary("akvolipsyncapi_jni"); }

    private final String what;
    private long handle;

    /**
     * @param handle the native object, 0 when it could not be made
     * @param what "controller" or "runner", for the texts of the errors
     */
    NativeSyncObject(long handle, String what)
    {
        if (handle == 0) {
            throw new OutOfMemoryError("No memory for a lip-sync " + what);
        }
        this.handle = handle;
        this.what = what;
    }

    /**
     * @return what the controller has learnt of the engine's response to margin changes
     * @throws IllegalStateException after {@link #close()}
     */
    public synchronized MarginResponse getMarginResponse()
    {
        final double[] values = new double[3];
        marginResponse(open(), values);
        return new MarginResponse(values[0], values[1], (long)values[2]);
    }

    /** Frees the native object; closing again does nothing. */
    @Override public synchronized void close()
    {
        destroy(handle);
        handle = 0;
    }

    // Before API level 33 there is no Cleaner, and the releaser thread of the services frees services only:
    // the object holds nothing but memory, which the finalizer frees at once.
    @Override protected void finalize() throws Throwable
    {
        try {
            close();
        } finally {
            super.finalize();
        }
    }

    /** @return the handle, for a native call on the subclass's lock */
    final long open()
    {
        if (handle == 0) {
            throw new IllegalStateException("The lip-sync " + what + " is closed");
        }
        return handle;
    }

    /** Frees {@code handle}; 0 is ignored. */
    abstract void destroy(long handle);

    /** Writes the gain, the lag and the changes seen of the controller behind {@code handle}. */
    abstract void marginResponse(long handle, double[] values);
}
