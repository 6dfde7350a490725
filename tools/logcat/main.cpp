// akvo-logcat: stands in for the log daemon on a machine without one. Binds
// the log socket and prints every record the log writer sends, one per line.

#include "BrokenPipes.h"
#include "CommandLine.h"
#include "LogListener.h"
#include "PriorityFilter.h"
#include "RecordDecoder.h"
#include "RecordFormat.h"
#include "StopSignals.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <vector>

using namespace velmo::kvo::logcat;
namespace tools = velmo::kvo::tools;

namespace {

const char* const description =
    "Prints the records that the log writer sends to its datagram socket, one line each, with the\n"
    "process and the user that sent it as the kernel reports them. A program built with the library\n"
    "sends its records to the path in its environment variable AKVO_LOG_SOCKET, or else to the\n"
    "build's log socket path:\n"
    "  akvo-logcat --socket /tmp/logdw -v threadtime &\n"
    "  AKVO_LOG_SOCKET=/tmp/logdw akvo-lipsync --socket /tmp/lipsync caps";

const char* const footer =
    "Formats (-v):\n"
    "  time        MM-DD HH:MM:SS.mmm TID P/TAG: message (local time; the default)\n"
    "  threadtime  MM-DD HH:MM:SS.mmm  PID   TID P TAG     : message, as Android's logcat (TAG padded\n"
    "              to 8 characters)\n"
    "  brief       P/TAG(TID): message (the thread where Android shows the process)\n"
    "  json        one object per record: id (log id), pid, uid, tid, sec, nsec, kind (text, binary,\n"
    "              string), then for text priority (its number), level (its letter V D I W E F, ? for\n"
    "              another number), tag and message; for events event, type and payload (hex) or\n"
    "              message\n"
    "TID is the low 16 bits of the sending thread's id, which is all a record carries; P is the\n"
    "priority's letter. Events show as \"event N (type T): hex\" or \"event N (string): text\".\n"
    "Exit status: 0 after SIGINT or SIGTERM, 1 when the system refused the socket or the records\n"
    "could not be received or written (standard output closed, among others), 2 usage, also for a\n"
    "--socket path that is no socket or that a running program serves. On exit the socket file\n"
    "that akvo-logcat bound is removed.";

// False when standard output can no longer be written.
bool printRecord(const std::vector<uint8_t>& datagram, const ucred& sender, const PriorityFilter& filter,
                 std::optional<int> pid, LineFormat format)
{
    LogRecord record;
    std::string error;
    if (!decodeRecord(datagram.data(), datagram.size(), record, error)) {
        std::fprintf(stderr, "akvo-logcat: skipped malformed record: %s\n", error.c_str());
        return true;
    }
    record.pid = sender.pid;
    record.uid = sender.uid;
    if (!filter.shows(record) || (pid && record.pid != *pid)) {
        return true;
    }
    const std::string line = formatLine(record, format) + "\n";
    return std::fwrite(line.data(), 1, line.size(), stdout) == line.size() && std::fflush(stdout) == 0;
}

} // namespace

int main(int argc, char** argv)
{
    tools::ignoreBrokenPipes();
    std::string path = AKVO_LOGDW_PATH;
    bool json = false;
    std::optional<int> pid;
    std::vector<std::string> specs;
    CLI::App app{description, "akvo-logcat"};
    app.add_option("--socket", path, "Socket path to bind")->capture_default_str();
    const std::map<std::string, LineFormat> formats = {{"brief", LineFormat::Brief},
                                                       {"time", LineFormat::Time},
                                                       {"threadtime", LineFormat::ThreadTime},
                                                       {"json", LineFormat::Json}};
    std::string formatName = "time";
    CLI::Option* formatOption =
        app.add_option("-v,--format", formatName, "Line format: time, threadtime, brief or json (see below)")
            ->type_name("FORMAT")
            ->capture_default_str()
            ->check(CLI::Validator(
                [&formats](std::string& name) {
                    return formats.count(name) != 0 ? std::string()
                                                    : "expected time, threadtime, brief or json, got " + name;
                },
                ""));
    app.add_flag("--json", json, "Same as --format json")->excludes(formatOption);
    app.add_option("--pid", pid, "Show only the records that process PID sent")
        ->type_name("PID")
        ->transform(tools::unsignedNumber<int>());
    app.add_option("FILTERSPEC", specs,
                   "TAG:P shows the records of TAG at priority P (V D I W E F, S for none) and above; *:P "
                   "does so for the other tags, e.g. AKVOLIPSYNCAPI:I *:S. Events are of priority I under "
                   "their tag number");
    app.footer(footer);
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
    const LineFormat format = json ? LineFormat::Json : formats.at(formatName);

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
    ucred sender = {};
    for (;;) {
        switch (listener.receive(datagram, size, sender, error)) {
        case LogListener::Outcome::Datagram:
            if (!printRecord(datagram, sender, filter, pid, format)) {
                std::fprintf(stderr, "akvo-logcat: cannot write to standard output: %s\n",
                             std::strerror(errno));
                return 1;
            }
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
