#ifndef VELMO_KVO_LOG_APILOG_H
#define VELMO_KVO_LOG_APILOG_H

#include "velmo/utilities/log/GenericLog.h"

#include <sstream>
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

    void event(const std::string& name)
    {
        std::string line(name);
        const std::string inputs = _inputParams.str();
        if (!inputs.empty()) {
            line += " with input params: ";
            line += inputs;
        }
        const std::string outputs = _outputParams.str();
        if (!outputs.empty()) {
            line += " with output params: ";
            line += outputs;
        }
        if (!_result.empty()) {
            line += " with result: ";
            line += _result;
        }
        typename Logger::Log::template Stream<velmo::utilities::details::Level::Info> stream(Logger::tag);
        stream << line;
    }

private:
    std::stringstream _inputParams;
    std::stringstream _outputParams;
    std::string _result;
};

} // namespace log
} // namespace kvo
} // namespace velmo

#endif
