#include "SyncCommand.h"

#include "CommandLine.h"
#include "Session.h"
#include "VideoInput.h"

#include "velmo/kvo/lipsyncapi/akvo_lipsync_sync.h"
#include "velmo/kvo/sync/Controller.h"

#include <csignal>
#include <ctime>
#include <vector>

namespace velmo {
namespace kvo {
namespace cli {

namespace {

namespace tuning = sync::tuning;

volatile std::sig_atomic_t interrupted = 0;

void onInterrupt(int)
{
    interrupted = 1;
}

const char* const stateNames[] = {"Starting", "Tracking", "MarginPending", "Recovering"};

// In the order of the event bits.
const char* const eventNames[] = {"AudioFailed",
                                  "AudioRenderingBeforeCapture",
                                  "AudioDelayImplausible",
                                  "AudioClockJump",
                                  "VideoMissing",
                                  "VideoRenderingBeforeCapture",
                                  "VideoDelayImplausible",
                                  "VideoClockJump",
                                  "PollGap",
                                  "TimeWentBack",
                                  "AudioStep",
                                  "VideoStep",
                                  "Reconnected",
                                  "MarginForgotten",
                                  "MarginRefused",
                                  "MarginLearnt"};

std::string eventList(uint32_t events)
{
    std::string list;
    for (unsigned bit = 0; bit < sizeof(eventNames) / sizeof(eventNames[0]); ++bit) {
        if ((events & (1u << bit)) != 0) {
            list += (list.empty() ? "" : ",") + std::string(eventNames[bit]);
        }
    }
    return list;
}

// Where the skew is: in the window the controller keeps, in the one where
// people notice nothing yet, or beyond both; unknown until it is estimated.
const char* windowOf(const akvo_lipsync_sync_decision& decision)
{
    if (decision.state == AKVO_LIPSYNC_SYNC_STARTING) {
        return "unknown";
    }
    if (decision.skew_ms >= tuning::windowLowMs && decision.skew_ms <= tuning::windowHighMs) {
        return "IS-191";
    }
    if (decision.skew_ms >= tuning::detectableLowMs && decision.skew_ms <= tuning::detectableHighMs) {
        return "BT.1359";
    }
    return "outside";
}

Field flagField(const std::string& name, bool value)
{
    return Field{name, value ? "true" : "false", Field::Kind::Number};
}

// The host's wall clock as an NTP time: seconds since 1900 in the high 32 bits.
uint64_t ntpNow()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const uint64_t seconds = static_cast<uint64_t>(now.tv_sec) + 2208988800ULL;
    return (seconds << 32) + (static_cast<uint64_t>(now.tv_nsec) << 32) / 1000000000ULL;
}

uint64_t ntpSpan(double ms)
{
    return static_cast<uint64_t>(ms * 4294967.296);
}

// What the run's callbacks share.
struct SyncLoop
{
    const SyncArgs& args;
    const Output& output;
    akvo_lipsync_sync_runner* runner;
    VideoInput input;
    double videoDelayMs = 0;
    bool onScreen = false;
    akvo_lipsync_sync_video shown = {0, 0};
    unsigned int polls = 0;
    int status = ExitSuccess;

    // The frame on screen: from standard input, or one just rendered by a
    // video path of the fixed delay plus the video delay asked for last.
    bool frame(akvo_lipsync_sync_video& video)
    {
        if (args.videoStdin) {
            onScreen = input.frameOnScreen(shown);
        } else {
            const uint64_t now = ntpNow();
            shown = {now - ntpSpan(*args.videoDelayMs + videoDelayMs), now};
            onScreen = true;
        }
        video = shown;
        return onScreen;
    }

    bool report(const akvo_lipsync_sync_report& report)
    {
        const akvo_lipsync_sync_decision& decision = report.decision;
        videoDelayMs = decision.video_delay_ms;
        // The margin's call comes after the timestamps', so the last failure is its text when it failed.
        Outcome outcome{report.margin_code != AKVO_LIPSYNC_SUCCESS ? report.margin_code
                                                                   : report.timestamps_code,
                        "Success"};
        if (!outcome.isSuccess()) {
            outcome.text.resize(akvo_lipsync_sync_runner_last_failure(runner, nullptr, 0));
            akvo_lipsync_sync_runner_last_failure(runner, &outcome.text[0], outcome.text.size() + 1);
        }
        std::vector<Field> fields{
            decimalField("skewMs", decision.skew_ms),
            textField("window", windowOf(decision)),
            decimalField("uncorrectedSkewMs", decision.uncorrected_skew_ms),
            textField("state", stateNames[decision.state]),
            numberField("marginMs", decision.margin_ms),
            flagField("marginSent", decision.apply_margin != 0 && report.connected != 0),
            decimalField("videoDelayMs", decision.video_delay_ms),
            flagField("infeasible", decision.infeasible != 0),
            textField("events", eventList(decision.events))};
        // Four 20-digit numbers would drown the line that people watch.
        if (output.json()) {
            fields.push_back(timestampField("audioCapture", report.audio.capture));
            fields.push_back(timestampField("audioRendering", report.audio.rendering));
            fields.push_back(timestampField("videoCapture", onScreen ? shown.capture : 0));
            fields.push_back(timestampField("videoRendering", onScreen ? shown.rendering : 0));
        }
        output.print("sync", outcome, fields);
        status = exitStatusFor(outcome);
        ++polls;
        return !interrupted && !Output::broken() && (args.count == 0 || polls < args.count);
    }
};

} // namespace

void addSyncCommand(CLI::App& app, SyncArgs& args)
{
    const CLI::Validator u32 = tools::unsignedNumber<unsigned int>();
    CLI::App* sync = app.add_subcommand(
        "sync", "Keep a video side in lip sync with the engine: poll it through the library's runner, which "
                "sets the audio delay margin, and print skew, decision and window for each poll until "
                "interrupted (Ctrl-C) or --count polls; a lost connection is made again at the next poll");
    CLI::Option* delay =
        sync->add_option("--video-delay-ms", args.videoDelayMs,
                         "Play a video side whose frames take MS milliseconds from capture to screen, plus "
                         "the video delay that the runner asks for")
            ->type_name("MS")
            ->transform(u32);
    sync->add_flag("--video-stdin", args.videoStdin,
                   "Read the video side's frames from standard input, one line each, \"CAPTURE RENDERING\" "
                   "as NTP 64-bit decimal numbers; the latest line is the frame on screen")
        ->excludes(delay);
    sync->add_option("--interval-ms", args.intervalMs, "Poll every MS milliseconds (200 by default)")
        ->type_name("MS")
        ->transform(u32);
    sync->add_option("--count", args.count, "Number of polls; 0, the default, polls until interrupted")
        ->transform(u32);
    sync->footer(
        "Exit status: the class of the last poll's failure, as akvo-lipsync --help lists them; 0 when it "
        "had none.");
    sync->callback([&args] {
        if (!args.videoDelayMs && !args.videoStdin) {
            throw CLI::ValidationError("sync: --video-delay-ms or --video-stdin is required");
        }
    });
}

int runSync(const SyncArgs& args, const std::string& socketName, unsigned int timeoutMs, const Output& output)
{
    akvo_lipsync_service* service = akvo_lipsync_create();
    akvo_lipsync_sync_runner* runner =
        service != nullptr ? akvo_lipsync_sync_runner_create(service, socketName.c_str(), args.intervalMs)
                           : nullptr;
    int status = ExitOtherFailure;
    if (runner == nullptr) {
        std::fprintf(stderr, "akvo-lipsync: not enough memory for the runner\n");
    } else {
        akvo_lipsync_set_deadline(service, timeoutMs);
        SyncLoop loop{args, output, runner, {}};
        interrupted = 0;
        void (*previous)(int) = std::signal(SIGINT, onInterrupt);
        const int32_t code = akvo_lipsync_sync_runner_run(
            runner,
            [](void* context, akvo_lipsync_sync_video* video) {
                return static_cast<SyncLoop*>(context)->frame(*video) ? 1 : 0;
            },
            [](void* context, const akvo_lipsync_sync_report* report) {
                return static_cast<SyncLoop*>(context)->report(*report) ? 1 : 0;
            },
            &loop);
        std::signal(SIGINT, previous);
        status = code == AKVO_LIPSYNC_SUCCESS ? loop.status : ExitOtherFailure;
    }
    akvo_lipsync_sync_runner_destroy(runner);
    akvo_lipsync_destroy(service);
    return status;
}

} // namespace cli
} // namespace kvo
} // namespace velmo
