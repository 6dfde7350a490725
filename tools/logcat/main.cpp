// akvo-logcat: stands in for the log daemon on a machine without one. Binds
// the log socket and prints every record the log writer sends, one per line.

#include "CommandLine.h"
#include "LogListener.h"
#include "PriorityFilter.h"
#include "RecordDecoder.h"
#include "RecordFormat.h"
#include "StopSignals.h"

#include <cstdio>
#include <map>
#include <optional>
#include <string>
#include <vector>

using namespace velmo::kvo::logcat;
namespace tools = velmo::kvo::tools;

namespace {

void printRecord(const std::vector<uint8_t>& datagram, const PriorityFilter& filter, LineFormat format)
{
    LogRecord record;
    std::string error;
    if (!decodeRecord(datagram.data(), datagram.size(), record, error)) {
        std::fprintf(stderr, "akvo-logcat: skipped malformed record: %s\n", error.c_str());
        return;
    }
    if (!filter.shows(record)) {
        return;
    }
    const std::string line = formatLine(record, format);
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    std::string path = AKVO_LOGDW_PATH;
    bool json = false;
    LineFormat format = LineFormat::Time;
    std::vector<std::string> specs;
    CLI::App app{"Prints the records that the log writer sends to its datagram socket.", "akvo-logcat"};
    app.add_option("--socket", path, "Socket path to bind")->capture_default_str();
    CLI::Option* formatOption =
        app.add_option("-v,--format", format,
                       "brief: P/TAG(TID): message; time: MM-DD HH:MM:SS.mmm TID P/TAG: message (local "
                       "time); json: one JSON object per record")
            ->transform(CLI::CheckedTransformer(
                std::map<std::string, LineFormat>{
                    {"brief", LineFormat::Brief}, {"time", LineFormat::Time}, {"json", LineFormat::Json}},
                CLI::ignore_case))
            ->default_str("time");
    app.add_flag("--json", json, "Same as --format json")->excludes(formatOption);
    app.add_option("FILTERSPEC", specs,
                   "TAG:P shows the records of TAG at priority P (V D I W E F, S for none) and above; *:P "
                   "does so for the other tags, e.g. AKVOLIPSYNCAPI:I *:S. Events are of priority I under "
                   "their tag number");
    app.set_version_flag("--version", std::string("akvo-logcat ") + AKVO_VERSION);
    if (const std::optional<int> status = tools::parseCommandLine(app, argc, argv)) {
        return *status;
    }
    PriorityFilter filter;
    std::string error;
    for (const std::string& spec : specs) {
        if (!filter.add(spec, error)) {
            return tools::reportUsageError(app, error);
        }
    }
    if (json) {
        format = LineFormat::Json;
    }

    const StopSignals signals;
    LogListener listener(signals);
    const tools::OwnedSocket::Outcome bound = listener.bind(path, error);
    if (bound != tools::OwnedSocket::Outcome::Bound) {
        std::fprintf(stderr, "akvo-logcat: %s\n", error.c_str());
        return bound == tools::OwnedSocket::Outcome::Refused ? tools::usageError : 1;
    }
    std::fprintf(stderr, "akvo-logcat: listening on %s\n", path.c_str());

    std::vector<uint8_t> datagram;
    size_t size = 0;
    for (;;) {
        switch (listener.receive(datagram, size, error)) {
        case LogListener::Outcome::Datagram:
            printRecord(datagram, filter, format);
            break;
        case LogListener::Outcome::Oversized:
            std::fprintf(stderr, "akvo-logcat: skipped datagram of %zu bytes, more than a record can have\n",
                         size);
            break;
        case LogListener::Outcome::Stopped:
            return 0;
        case LogListener::Outcome::Failed:
            std::fprintf(stderr, "akvo-logcat: %s\n", error.c_str());
            return 1;
        }
    }
}
