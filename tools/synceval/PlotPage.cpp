#include "PlotPage.h"

#include "velmo/kvo/sync/Controller.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <sstream>

namespace velmo {
namespace kvo {
namespace synceval {

namespace {

constexpr int width = 1000;
constexpr int left = 60;
constexpr int skewTop = 40;
constexpr int skewHeight = 320;
constexpr double skewRangeMs = 250;
constexpr int actTop = skewTop + skewHeight + 50;
constexpr int actHeight = 160;
constexpr double actRangeMs = 250;
constexpr int columns = width - left - 20;

struct Panel
{
    int top;
    int height;
    double low;
    double high;

    double y(double value) const
    {
        const double clipped = std::clamp(value, low, high);
        return top + (high - clipped) / (high - low) * height;
    }
};

std::string number(double value)
{
    char text[32];
    std::snprintf(text, sizeof(text), "%.1f", value);
    return text;
}

std::string escape(const std::string& text)
{
    std::string out;
    for (char c : text) {
        out += c == '<' ? "&lt;" : c == '>' ? "&gt;" : c == '&' ? "&amp;" : std::string(1, c);
    }
    return out;
}

// A polyline through the least and greatest value of each pixel column, so
// that a 10-minute run stays a few thousand points and no spike is lost.
std::string line(std::size_t count, const std::function<double(std::size_t)>& value, const Panel& panel,
                 const char* colour, const char* dash = "")
{
    std::ostringstream points;
    for (int column = 0; column < columns; ++column) {
        const std::size_t from = count * column / columns;
        const std::size_t to = std::max(from + 1, count * (column + 1) / columns);
        double low = value(from);
        double high = low;
        for (std::size_t i = from; i < to && i < count; ++i) {
            low = std::min(low, value(i));
            high = std::max(high, value(i));
        }
        points << left + column << ',' << number(panel.y(high)) << ' ' << left + column << ','
               << number(panel.y(low)) << ' ';
    }
    return "<polyline fill=\"none\" stroke=\"" + std::string(colour) +
           "\" stroke-width=\"1\" stroke-dasharray=\"" + dash + "\" points=\"" + points.str() + "\"/>\n";
}

std::string band(const Panel& panel, double low, double high, const char* colour)
{
    return "<rect x=\"" + std::to_string(left) + "\" width=\"" + std::to_string(columns) + "\" y=\"" +
           number(panel.y(high)) + "\" height=\"" + number(panel.y(low) - panel.y(high)) + "\" fill=\"" +
           colour + "\"/>\n";
}

std::string axis(const Panel& panel, double step, const char* unit)
{
    std::string out;
    for (double value = panel.low; value <= panel.high; value += step) {
        out += "<text x=\"" + std::to_string(left - 6) + "\" y=\"" + number(panel.y(value) + 4) +
               "\" text-anchor=\"end\">" + number(value).substr(0, number(value).size() - 2) + "</text>\n";
        out += "<line x1=\"" + std::to_string(left) + "\" x2=\"" + std::to_string(left + columns) +
               "\" y1=\"" + number(panel.y(value)) + "\" y2=\"" + number(panel.y(value)) +
               "\" stroke=\"#ddd\"/>\n";
    }
    return out + "<text x=\"8\" y=\"" + std::to_string(panel.top - 10) + "\">" + unit + "</text>\n";
}

// Per pixel column, the mean of each series, for the read-out under the pointer.
std::string columnData(const std::vector<const std::vector<Tick>*>& series)
{
    std::ostringstream out;
    out << '[';
    const std::size_t count = series.front()->size();
    for (int column = 0; column < columns; ++column) {
        const std::size_t at = std::min(count - 1, count * column / columns);
        out << (column > 0 ? "," : "") << '[' << number(at * tickMs / 1000);
        for (const std::vector<Tick>* ticks : series) {
            out << ',' << number((*ticks)[at].skewMs);
        }
        const Tick& controller = (*series.front())[at];
        out << ',' << number(controller.marginMs) << ',' << number(controller.videoDelayMs) << ']';
    }
    return out.str() + ']';
}

} // namespace

std::string plotPage(const scenario::Scenario& scenario, const Traces& traces, const std::string& summary)
{
    const Panel skew{skewTop, skewHeight, -skewRangeMs, skewRangeMs};
    const Panel act{actTop, actHeight, 0, actRangeMs};
    const std::size_t count = traces.controller.ticks.size();
    auto skewOf = [](const Trace& trace) {
        return [&trace](std::size_t i) { return trace.ticks[i].skewMs; };
    };
    auto marginOf = [](const Trace& trace) {
        return [&trace](std::size_t i) { return trace.ticks[i].marginMs; };
    };
    auto videoOf = [](const Trace& trace) {
        return [&trace](std::size_t i) { return trace.ticks[i].videoDelayMs; };
    };
    const int height = actTop + actHeight + 40;

    std::ostringstream svg;
    svg << "<svg id=\"plot\" xmlns=\"http://www.w3.org/2000/svg\" width=\"" << width << "\" height=\""
        << height << "\" font-family=\"sans-serif\" font-size=\"11\">\n"
        << band(skew, sync::tuning::detectableLowMs, sync::tuning::detectableHighMs, "#e8f0e0")
        << band(skew, sync::tuning::windowLowMs, sync::tuning::windowHighMs, "#bcd9a8")
        << axis(skew, 50, "skew (ms, audio late +)") << axis(act, 50, "margin and video delay (ms)")
        << line(count, skewOf(traces.none), skew, "#999")
        << line(count, skewOf(traces.baseline), skew, "#e08020")
        << line(count, skewOf(traces.controller), skew, "#2050c0")
        << line(count, marginOf(traces.baseline), act, "#e08020", "4 3")
        << line(count, videoOf(traces.baseline), act, "#a05010", "4 3")
        << line(count, marginOf(traces.controller), act, "#2050c0")
        << line(count, videoOf(traces.controller), act, "#10a0a0");
    for (int second = 0; second <= static_cast<int>(scenario.durationS);
         second += scenario.durationS > 120 ? 60 : 10) {
        const double x = left + second * 1000.0 / tickMs / static_cast<double>(count) * columns;
        svg << "<text x=\"" << number(x) << "\" y=\"" << height - 12 << "\" text-anchor=\"middle\">" << second
            << " s</text>\n";
    }
    svg << "<line id=\"cursor\" y1=\"" << skewTop << "\" y2=\"" << actTop + actHeight
        << "\" stroke=\"#000\" stroke-width=\"0.5\" visibility=\"hidden\"/>\n</svg>\n";

    const std::vector<const std::vector<Tick>*> series = {&traces.controller.ticks, &traces.baseline.ticks,
                                                          &traces.none.ticks};
    std::ostringstream page;
    page
        << "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>" << escape(scenario.name)
        << "</title>\n<style>body{font-family:sans-serif;margin:16px}pre{font-size:12px;white-space:pre-wrap}"
           ".key span{margin-right:16px}#readout{font-family:monospace;height:1.4em}</style></head>\n<body>\n"
        << "<h1>" << escape(scenario.name) << "</h1>\n<pre>" << escape(summary) << "</pre>\n"
        << "<p class=\"key\"><span style=\"color:#2050c0\">&#9632; controller skew, margin</span>"
           "<span style=\"color:#10a0a0\">&#9632; controller video delay</span>"
           "<span style=\"color:#e08020\">&#9632; baseline (dashed beneath: margin, video delay)</span>"
           "<span style=\"color:#999\">&#9632; no control</span>"
           "<span style=\"background:#bcd9a8\">IS-191</span> <span "
           "style=\"background:#e8f0e0\">BT.1359</span></p>\n"
        << "<div id=\"readout\"></div>\n"
        << svg.str() << "<script>\n(function () {\n  var data = " << columnData(series) << ";\n"
        << "  var svg = document.getElementById('plot');\n"
           "  var cursor = document.getElementById('cursor');\n"
           "  var readout = document.getElementById('readout');\n"
           "  svg.addEventListener('mousemove', function (event) {\n"
           "    var box = svg.getBoundingClientRect();\n"
           "    var column = Math.round(event.clientX - box.left) - "
        << left
        << ";\n"
           "    if (column < 0 || column >= data.length) { return; }\n"
           "    var row = data[column];\n"
           "    cursor.setAttribute('x1', column + "
        << left << ");\n    cursor.setAttribute('x2', column + " << left
        << ");\n"
           "    cursor.setAttribute('visibility', 'visible');\n"
           "    readout.textContent = 't=' + row[0] + ' s  skew: controller ' + row[1] + ', baseline ' + "
           "row[2] +\n"
           "      ', none ' + row[3] + ' ms  margin ' + row[4] + ' ms  video delay ' + row[5] + ' ms';\n"
           "  });\n"
           "  document.body.setAttribute('data-columns', String(data.length));\n"
           "})();\n</script>\n</body></html>\n";
    return page.str();
}

} // namespace synceval
} // namespace kvo
} // namespace velmo
