#ifndef AKVO_BENCH_SUMMARYREPORTER_H
#define AKVO_BENCH_SUMMARYREPORTER_H

#include <benchmark/benchmark.h>

#include <map>
#include <string>

namespace akvo {
namespace bench {

// Prints the framework's usual lines, then a summary: each Service round trip
// beside the raw one of the same command (ratios of throughput and of median
// latency), getAudioTimestamps beside the floor client in each log regime,
// the pieces, and whether the targets were met. With repetitions, the
// medians over the repetitions are used.
class SummaryReporter : public benchmark::ConsoleReporter
{
public:
    SummaryReporter();

    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

    // A benchmark failed, or the heap grew over the million calls.
    bool hasFailures() const { return _failed; }

private:
    struct Figures
    {
        double meanUs = 0.0;
        double iterations = 0.0;
        std::map<std::string, double> counters;
        std::string error;
    };

    const Figures* find(const std::string& name) const;
    double counter(const Figures& figures, const char* name) const;
    void printRoundTrips(std::ostream& out) const;
    void printFloorComparisons(std::ostream& out) const;
    void printPieces(std::ostream& out) const;
    void printTargets(std::ostream& out);

    std::map<std::string, Figures> _figures;
    bool _failed;
};

} // namespace bench
} // namespace akvo

#endif
