package velmo.kvo.lipsyncapi;

import static org.junit.Assert.assertEquals;

import java.io.BufferedReader;
import java.io.IOException;
import java.io.InputStreamReader;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;

/**
 * The engine simulator (system property {@code akvo.simulator}) as a child process, serving on a socket in a
 * fresh temporary folder; its standard error goes to a file there. close() stops it and removes the folder.
 */
final class Simulator implements AutoCloseable
{
    private final Path folder;
    private final Path socket;
    private final Path log;
    private final Process process;

    Simulator(String... options) throws IOException
    {
        folder = Files.createTempDirectory("akvo-java-");
        socket = folder.resolve("lipsync.sock");
        log = folder.resolve("log");
        final List<String> command = new ArrayList<>();
        command.add(System.getProperty("akvo.simulator"));
        command.add("--socket");
        command.add(socket.toString());
        command.addAll(Arrays.asList(options));
        process = new ProcessBuilder(command).redirectError(log.toFile()).start();
        final BufferedReader output =
            new BufferedReader(new InputStreamReader(process.getInputStream(), StandardCharsets.UTF_8));
        assertEquals("akvo-lipsync-sim: listening on " + socket, output.readLine());
    }

    String socketName() { return socket.toString(); }

    /** Whether the simulator's standard error holds {@code text} by now. */
    boolean logHas(String text) throws IOException { return Files.readString(log).contains(text); }

    /** Whether the simulator's standard error holds {@code text}, waiting up to 10 s for it. */
    boolean logShows(String text) throws IOException, InterruptedException
    {
        for (int waited = 0; waited < 10_000; waited += 10) {
            if (logHas(text)) {
                return true;
            }
            Thread.sleep(10);
        }
        return false;
    }

    @Override public void close() throws IOException
    {
        process.destroy();
        process.onExit().join();
        Files.deleteIfExists(socket);
        Files.deleteIfExists(log);
        Files.delete(folder);
    }
}
