#ifndef VELMO_KVO_SYNCEVAL_PLOTPAGE_H
#define VELMO_KVO_SYNCEVAL_PLOTPAGE_H

#include "ClosedLoop.h"
#include "Scenario.h"

#include <string>

namespace velmo {
namespace kvo {
namespace synceval {

struct Traces
{
    const Trace& controller;
    const Trace& baseline;
    const Trace& none;
};

// One self-contained HTML page (inline SVG and script, nothing fetched): the
// skew of the three strategies over time with both windows shaded, and the
// margin and the video delay of the controller and the baseline beneath.
// `summary` is the scenario's result line.
std::string plotPage(const scenario::Scenario& scenario, const Traces& traces, const std::string& summary);

} // namespace synceval
} // namespace kvo
} // namespace velmo

#endif
