package velmo.kvo.lipsyncapi;

import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertThrows;

import java.util.Arrays;
import java.util.Collection;
import org.junit.Test;
import org.junit.runner.RunWith;
import org.junit.runners.Parameterized;
import org.junit.runners.Parameterized.Parameters;

/** What the engine's answer to a timestamps request turns into, one simulator per case. */
@RunWith(Parameterized.class) public class ServerFailureTest
{
    @Parameters(name = "{0}") public static Collection<Object[]> cases()
    {
        return Arrays.asList(new Object[][] {
            {"--idle", LipSyncException.NOT_IN_CALL,
             "The AKVO is not performing a call (Code 1007): {Bad state (Code 1003): The engine is not in a call}"},
            {"--fault=1:error:1002:refused", LipSyncException.SERVER_ERROR,
             "The lipsync server returned an error (Code 1006): {Invalid parameter (Code 1002): refused}"},
            {"--fault=1:close", LipSyncException.TRANSPORT_ERROR,
             "An error has occured in the transport layer (Code 1005): {Connection closed by distant (Code 5905): "
                 + "{Protocol has been closed by distant (Code 40005): {Closed by distant (Code 10003)}}}"},
            {"--fault=1:garbage", LipSyncException.TRANSPORT_ERROR,
             "An error has occured in the transport layer (Code 1005): {Serializer error (Code 5903): "
                 + "{Conversion failed (Code 71): No 'AKVO' root element found in xml data.}}"},
        });
    }

    private final String option;
    private final int code;
    private final String text;

    public ServerFailureTest(String option, int code, String text)
    {
        this.option = option;
        this.code = code;
        this.text = text;
    }

    @Test public void timestampsRequestFails() throws Exception
    {
        try (Simulator simulator = new Simulator(option); LipSyncService service = new LipSyncService()) {
            service.connect(simulator.socketName());
            final LipSyncException failure =
                assertThrows(LipSyncException.class, service::getAudioTimestamps);
            assertEquals(code, failure.getCode());
            assertEquals(text, failure.getText());
            assertEquals(text, failure.getMessage());
        }
    }
}
