#ifndef VELMO_KVO_CLI_SYNCCOMMAND_H
#define VELMO_KVO_CLI_SYNCCOMMAND_H

#include "Output.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <string>

namespace velmo {
namespace kvo {
namespace cli {

struct SyncArgs
{
    unsigned int intervalMs = 200;
    unsigned int count = 0;
    std::optional<unsigned int> videoDelayMs;
    bool videoStdin = false;
};

// Adds sync, which keeps a simulated or piped video side in lip sync with the
// engine through the C interface's runner, to `app`.
void addSyncCommand(CLI::App& app, SyncArgs& args);

// Polls until --count polls or Ctrl-C, one line per poll; the exit status is
// the class of the last poll's failure, 0 when it had none.
int runSync(const SyncArgs& args, const std::string& socketName, unsigned int timeoutMs,
            const Output& output);

} // namespace cli
} // namespace kvo
} // namespace velmo

#endif
