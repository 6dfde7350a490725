#include "Fault.h"

#include <climits>

namespace velmo {
namespace kvo {
namespace sim {

namespace {

// An hour is far beyond any client's patience; larger values are typing mistakes.
constexpr std::uint64_t maxMilliseconds = 3600000;

bool parseUnsigned(const std::string& text, std::uint64_t max, std::uint64_t& value)
{
    if (text.empty() || text.size() > 19) {
        return false;
    }
    value = 0;
    for (char c : text) {
        if (c < '0' || c > '9') {
            return false;
        }
        value = value * 10 + static_cast<std::uint64_t>(c - '0');
    }
    return value <= max;
}

bool parseInt(const std::string& text, int& value)
{
    bool negative = !text.empty() && text[0] == '-';
    std::uint64_t magnitude = 0;
    std::uint64_t limit = negative ? static_cast<std::uint64_t>(INT_MAX) + 1 : INT_MAX;
    if (!parseUnsigned(negative ? text.substr(1) : text, limit, magnitude)) {
        return false;
    }
    value = negative ? static_cast<int>(-static_cast<long long>(magnitude)) : static_cast<int>(magnitude);
    return true;
}

// Splits "a:b" at the first colon; `rest` is empty and `hasRest` false when there is none.
void splitFirst(const std::string& text, std::string& first, std::string& rest, bool& hasRest)
{
    std::size_t colon = text.find(':');
    hasRest = colon != std::string::npos;
    first = text.substr(0, colon);
    rest = hasRest ? text.substr(colon + 1) : std::string();
}

bool parseAction(const std::string& action, const std::string& args, bool hasArgs, Fault& fault,
                 std::string& error)
{
    std::uint64_t number = 0;
    if (action == "close" || action == "double" || action == "garbage") {
        if (hasArgs) {
            error = action + " takes no arguments";
            return false;
        }
        fault.action = action == "close"    ? Fault::Action::Close
                       : action == "double" ? Fault::Action::Double
                                            : Fault::Action::Garbage;
        return true;
    }
    if (action == "close-after") {
        if (!parseUnsigned(args, UINT32_MAX, number)) {
            error = "close-after needs a byte count";
            return false;
        }
        fault.action = Fault::Action::CloseAfter;
        fault.bytes = number;
        return true;
    }
    if (action == "split") {
        std::string size;
        std::string pause;
        bool hasPause = false;
        splitFirst(args, size, pause, hasPause);
        std::uint64_t pauseMs = 0;
        if (!parseUnsigned(size, UINT32_MAX, number) || number == 0 || !hasPause ||
            !parseUnsigned(pause, maxMilliseconds, pauseMs)) {
            error = "split needs SIZE:PAUSE_MS with SIZE at least 1 and PAUSE_MS at most 3600000";
            return false;
        }
        fault.action = Fault::Action::Split;
        fault.bytes = number;
        fault.wait = std::chrono::milliseconds(pauseMs);
        return true;
    }
    if (action == "version") {
        if (!hasArgs) {
            error = "version needs the envelope version to answer with";
            return false;
        }
        fault.action = Fault::Action::Version;
        fault.text = args;
        return true;
    }
    if (action == "error") {
        std::string code;
        std::string message;
        bool hasMessage = false;
        splitFirst(args, code, message, hasMessage);
        if (!parseInt(code, fault.code)) {
            error = "error needs CODE:MESSAGE with a decimal CODE";
            return false;
        }
        fault.action = Fault::Action::Error;
        fault.text = message;
        return true;
    }
    if (action == "delay") {
        if (!parseUnsigned(args, maxMilliseconds, number)) {
            error = "delay needs a time in milliseconds, at most 3600000";
            return false;
        }
        fault.action = Fault::Action::Delay;
        fault.wait = std::chrono::milliseconds(number);
        return true;
    }
    error = "unknown action '" + action + "'";
    return false;
}

} // namespace

bool parseFault(const std::string& rule, std::uint64_t& which, Fault& fault, std::string& error)
{
    std::string whichText;
    std::string rest;
    bool hasAction = false;
    splitFirst(rule, whichText, rest, hasAction);
    if (whichText == "*") {
        which = everyRequest;
    } else if (!parseUnsigned(whichText, UINT64_MAX, which) || which == 0) {
        error = "bad fault '" + rule + "': the request must be a number from 1 or *";
        return false;
    }
    std::string action;
    std::string args;
    bool hasArgs = false;
    splitFirst(rest, action, args, hasArgs);
    if (!hasAction || !parseAction(action, args, hasArgs, fault, error)) {
        error = "bad fault '" + rule + "': " + (hasAction ? error : "no action");
        return false;
    }
    fault.rule = rule;
    return true;
}

} // namespace sim
} // namespace kvo
} // namespace velmo
