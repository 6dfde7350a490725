#ifndef VELMO_KVO_LOG_APILOG_H
#define VELMO_KVO_LOG_APILOG_H

#include "velmo/utilities/Decimal.h"
#include "velmo/utilities/log/GenericLog.h"

#include <cstring>
#include <string>

namespace velmo {
namespace kvo {
namespace log {

// Collects one API call's parameters and result after the call has done its
// work, and writes them as a single log line. `Logger` names the log and tag.
// The line is composed in one buffer, reserved once, and numbers are written
// with plain digits whatever the process's locale: a call costs one
// allocation here, not the handful of string streams it would take.
// Input parameters are added before output parameters.
template <class Logger>
class ApiLog
{
public:
    ApiLog() { _line.reserve(expectedLength); }

    ApiLog& addInputParam(const char* name, const std::string& value)
    {
        beginSection(_inputs, " with input params: ");
        return addText(name, value.data(), value.size());
    }

    ApiLog& addInputParam(const char* name, unsigned long long value)
    {
        beginSection(_inputs, " with input params: ");
        return addNumber(name, value);
    }

    ApiLog& addOutputParam(const char* name, unsigned long long value)
    {
        beginSection(_outputs, " with output params: ");
        return addNumber(name, value);
    }

    template <class R>
    ApiLog& setResult(const R& result)
    {
        const std::string text = result.format();
        if (!text.empty()) {
            _line.append(" with result: ").append(text);
        }
        return *this;
    }

    // The event name leads the line, although it comes last.
    void event(const char* name)
    {
        _line.insert(0, name);
        if (!_line.empty()) {
            Logger::Log::template log<velmo::utilities::details::Level::Info>(Logger::tag, "%s",
                                                                              _line.c_str());
        }
    }

private:
    // A getAudioTimestamps line with its four numbers and a short result.
    static constexpr std::string::size_type expectedLength = 256;

    void beginSection(bool& begun, const char* heading)
    {
        if (!begun) {
            begun = true;
            _line.append(heading);
        }
    }

    // A value spanning lines gets a block of its own so the line stays
    // readable; every other value is followed by one blank.
    ApiLog& addText(const char* name, const char* value, std::string::size_type size)
    {
        _line.append(name);
        if (std::memchr(value, '\n', size) != nullptr) {
            _line.append("={\n").append(value, size).append("}\n");
        } else {
            _line.append("=").append(value, size).append(" ");
        }
        return *this;
    }

    ApiLog& addNumber(const char* name, unsigned long long value)
    {
        char digits[velmo::utilities::maxDecimalDigits];
        const char* end = velmo::utilities::writeDecimal(digits, value);
        return addText(name, digits, static_cast<std::string::size_type>(end - digits));
    }

    std::string _line;
    bool _inputs = false;
    bool _outputs = false;
};

} // namespace log
} // namespace kvo
} // namespace velmo

#endif
