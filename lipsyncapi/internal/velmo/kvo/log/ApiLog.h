#ifndef VELMO_KVO_LOG_APILOG_H
#define VELMO_KVO_LOG_APILOG_H

#include "velmo/utilities/Decimal.h"
#include "velmo/utilities/TextBuffer.h"
#include "velmo/utilities/log/GenericLog.h"

#include <cstring>
#include <string>

namespace velmo {
namespace kvo {
namespace log {

// Collects one API call's parameters and result after the call has done its
// work, and writes them as a single log line. `Logger` names the log and tag.
// The line is composed on the stack, where every line but one with a very
// long parameter or result fits, so a call allocates nothing here; numbers
// are written with plain digits whatever the process's locale. Input
// parameters are added before output parameters.
template <class Logger>
class ApiLog
{
public:
    template <std::size_t N>
    ApiLog& addInputParam(const char (&name)[N], const std::string& value)
    {
        beginSection(_inputs, " with input params: ");
        return addText(name, value.data(), value.size());
    }

    template <std::size_t N>
    ApiLog& addInputParam(const char (&name)[N], unsigned long long value)
    {
        beginSection(_inputs, " with input params: ");
        return addNumber(name, value);
    }

    template <std::size_t N>
    ApiLog& addOutputParam(const char (&name)[N], unsigned long long value)
    {
        beginSection(_outputs, " with output params: ");
        return addNumber(name, value);
    }

    template <class R>
    ApiLog& setResult(const R& result)
    {
        const std::string text = result.format();
        if (!text.empty()) {
            _line.append(" with result: ");
            _line.append(text);
        }
        return *this;
    }

    // The event name leads the line, although it comes last.
    template <std::size_t N>
    void event(const char (&name)[N])
    {
        _line.prepend(name, N - 1);
        if (!_line.empty()) {
            Logger::Log::template log<velmo::utilities::Level::Info>(Logger::tag, "%s", _line.c_str());
        }
    }

private:
    template <std::size_t N>
    void beginSection(bool& begun, const char (&heading)[N])
    {
        if (!begun) {
            begun = true;
            _line.append(heading);
        }
    }

    // A value spanning lines gets a block of its own so the line stays
    // readable; every other value is followed by one blank.
    template <std::size_t N>
    ApiLog& addText(const char (&name)[N], const char* value, std::size_t size)
    {
        _line.append(name);
        if (std::memchr(value, '\n', size) != nullptr) {
            _line.append("={\n");
            _line.append(value, size);
            _line.append("}\n");
        } else {
            _line.append("=");
            _line.append(value, size);
            _line.append(" ");
        }
        return *this;
    }

    // Digits never span lines.
    template <std::size_t N>
    ApiLog& addNumber(const char (&name)[N], unsigned long long value)
    {
        char text[N + velmo::utilities::maxDecimalDigits + 1];
        std::memcpy(text, name, N - 1);
        text[N - 1] = '=';
        char* end = velmo::utilities::writeDecimal(text + N, value);
        *end++ = ' ';
        _line.append(text, static_cast<std::size_t>(end - text));
        return *this;
    }

    // The Android record holds 1023 bytes of a line; standard error gets it
    // whole, from the heap when it is longer.
    velmo::utilities::TextBuffer<1024> _line;
    bool _inputs = false;
    bool _outputs = false;
};

} // namespace log
} // namespace kvo
} // namespace velmo

#endif
