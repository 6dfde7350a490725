#include "BrokenPipes.h"
#include "Engine.h"
#include "ExitStatus.h"
#include "ListeningSocket.h"
#include "Log.h"
#include "Options.h"
#include "RequestHandler.h"
#include "ScenarioEngine.h"
#include "Server.h"
#include "SignalPipe.h"

#include <cstdio>

using namespace velmo::kvo::sim;
using velmo::kvo::tools::OwnedSocket;
using velmo::kvo::tools::usageError;

int main(int argc, char** argv)
{
    velmo::kvo::tools::ignoreBrokenPipes();
    Options options;
    if (std::optional<int> status = parseOptions(argc, argv, options)) {
        return *status;
    }
    Log log(options.verbose);
    // Handlers first: a stop signal that arrives while the socket is set up must still remove it.
    SignalPipe signals;
    if (!signals.install()) {
        log.error("cannot set up signal handling");
        return 1;
    }
    ListeningSocket listener;
    std::string error;
    const OwnedSocket::Outcome outcome = listener.open(options.socketPath, error);
    if (outcome != OwnedSocket::Outcome::Bound) {
        log.error(error);
        return outcome == OwnedSocket::Outcome::Refused ? usageError : 1;
    }
    std::optional<ScenarioEngine> scenario;
    if (options.scenario) {
        scenario.emplace(*options.scenario);
    }
    ScenarioEngine* moving = scenario ? &*scenario : nullptr;
    Engine engine(!options.idle, options.fixed, moving);
    RequestHandler handler(engine, options.faults, log);
    Server server(listener.fd(), signals.fd(), handler, log, moving);
    std::printf("%s: listening on %s\n", programName, options.socketPath.c_str());
    std::fflush(stdout);
    return server.run() ? 0 : 1;
}
