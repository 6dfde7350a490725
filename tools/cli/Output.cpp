#include "Output.h"

#include <iomanip>
#include <sstream>

namespace akvo {
namespace cli {

Field numberField(const std::string& name, unsigned long long value)
{
    return Field{name, std::to_string(value), true};
}

Field millisecondsField(const std::string& name, double value)
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(3) << value;
    return Field{name, text.str(), true};
}

std::string jsonQuoted(const std::string& text)
{
    std::ostringstream out;
    out << '"';
    for (unsigned char c : text) {
        switch (c) {
        case '"':
            out << "\\\"";
            break;
        case '\\':
            out << "\\\\";
            break;
        case '\n':
            out << "\\n";
            break;
        case '\t':
            out << "\\t";
            break;
        default:
            if (c < 0x20) {
                out << "\\u" << std::hex << std::setw(4) << std::setfill('0') << static_cast<int>(c)
                    << std::dec;
            } else {
                out << c;
            }
        }
    }
    out << '"';
    return out.str();
}

void Output::print(const std::string& command, const velmo::kvo::lipsyncapi::Service::ServiceResult& result,
                   const std::vector<Field>& fields) const
{
    std::ostringstream line;
    if (_json) {
        line << "{\"command\":" << jsonQuoted(command)
             << ",\"code\":" << static_cast<long long>(result.getErrorCode())
             << ",\"result\":" << jsonQuoted(result.format());
        for (const Field& field : fields) {
            line << "," << jsonQuoted(field.name) << ":"
                 << (field.isNumber ? field.text : jsonQuoted(field.text));
        }
        line << "}";
    } else {
        line << command << ": " << result.format();
        // A failure's values would read as part of its message.
        for (const Field& field : result.isSuccess() ? fields : std::vector<Field>()) {
            line << " " << field.name << "=" << field.text;
        }
    }
    std::printf("%s\n", line.str().c_str());
    std::fflush(stdout);
}

void Output::error(const std::string& command, const std::string& message) const
{
    if (_json) {
        std::printf("{\"command\":%s,\"error\":%s}\n", jsonQuoted(command).c_str(),
                    jsonQuoted(message).c_str());
    } else {
        std::printf("%s: %s\n", command.c_str(), message.c_str());
    }
    std::fflush(stdout);
}

} // namespace cli
} // namespace akvo
