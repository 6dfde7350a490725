#ifndef VELMO_KVO_LOG_APILOG_H
#define VELMO_KVO_LOG_APILOG_H

#include "velmo/utilities/log/GenericLog.h"

#include <sstream>
#include <streambuf>
#include <string>

namespace velmo {
namespace kvo {
namespace log {

// Collects one API call's parameters and result after the call has done its
// work, and writes them as a single log line. `Logger` names the log and tag.
template <class Logger>
class ApiLog
{
public:
    template <class T>
    ApiLog& addParam(const std::string& name, const T& value, std::stringstream& target)
    {
        std::stringstream scratch;
        scratch << value;
        const std::string text = scratch.str();
        // A value spanning lines gets a block of its own so the line stays readable.
        if (text.find('\n') != std::string::npos) {
            target << name << "={\n" << text << "}\n";
        } else {
            target << name << "=" << text << " ";
        }
        return *this;
    }

    // A number's text never spans lines, so it goes straight into the target
    // stream, printed just as the scratch stream would print it.
    ApiLog& addParam(const std::string& name, const unsigned long long& value, std::stringstream& target)
    {
        target << name << "=" << value << " ";
        return *this;
    }

    template <class T>
    ApiLog& addInputParam(const std::string& name, const T& value)
    {
        return addParam(name, value, _inputParams);
    }

    template <class T>
    ApiLog& addOutputParam(const std::string& name, const T& value)
    {
        return addParam(name, value, _outputParams);
    }

    template <class R>
    ApiLog& setResult(const R& result)
    {
        _result = result.format();
        return *this;
    }

    // The line is composed in the log stream itself, each collected text
    // copied straight from its own stream, so that no piece is copied twice.
    void event(const std::string& name)
    {
        typename Logger::Log::template Stream<velmo::utilities::details::Level::Info> stream(Logger::tag);
        stream << name;
        if (holdsText(_inputParams)) {
            stream << " with input params: " << static_cast<std::streambuf*>(_inputParams.rdbuf());
        }
        if (holdsText(_outputParams)) {
            stream << " with output params: " << static_cast<std::streambuf*>(_outputParams.rdbuf());
        }
        if (!_result.empty()) {
            stream << " with result: " << _result;
        }
    }

private:
    static bool holdsText(std::stringstream& params) { return params.tellp() > 0; }

    std::stringstream _inputParams;
    std::stringstream _outputParams;
    std::string _result;
};

} // namespace log
} // namespace kvo
} // namespace velmo

#endif
