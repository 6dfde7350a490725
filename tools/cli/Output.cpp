#include "Output.h"

#include "JsonObject.h"

#include <cstdio>

namespace velmo {
namespace kvo {
namespace cli {

Field numberField(const std::string& name, unsigned long long value)
{
    return Field{name, std::to_string(value), Field::Kind::Number};
}

Field timestampField(const std::string& name, uint64_t value)
{
    return Field{name, std::to_string(value), Field::Kind::Timestamp};
}

Field decimalField(const std::string& name, double value)
{
    char text[64];
    std::snprintf(text, sizeof(text), "%.3f", value);
    return Field{name, text, Field::Kind::Number};
}

Field textField(const std::string& name, const std::string& value)
{
    return Field{name, value, Field::Kind::Text};
}

void Output::print(const std::string& command, const lipsyncapi::Service::ServiceResult& result,
                   const std::vector<Field>& fields) const
{
    if (_json) {
        printJson(command, static_cast<long long>(result.getErrorCode()), result.format(), fields);
        return;
    }
    std::string line = command + ": " + result.format();
    // A failure's values would read as part of its message.
    for (const Field& field : result.isSuccess() ? fields : std::vector<Field>()) {
        line += " " + field.name + "=" + field.text;
    }
    std::fprintf(_stream, "%s\n", line.c_str());
    std::fflush(_stream);
}

void Output::report(const std::string& command, int code, const std::string& message) const
{
    if (_json) {
        printJson(command, code, message, {});
        return;
    }
    std::fprintf(_stream, "%s: %s\n", command.c_str(), message.c_str());
    std::fflush(_stream);
}

void Output::printJson(const std::string& command, long long code, const std::string& result,
                       const std::vector<Field>& fields) const
{
    tools::JsonObject object;
    object.text("command", command).number("code", code).text("result", result);
    for (const Field& field : fields) {
        switch (field.kind) {
        case Field::Kind::Number:
            object.raw(field.name, field.text);
            break;
        case Field::Kind::Timestamp:
        case Field::Kind::Text:
            object.text(field.name, field.text);
            break;
        }
    }
    std::fprintf(_stream, "%s\n", object.line().c_str());
    std::fflush(_stream);
}

} // namespace cli
} // namespace kvo
} // namespace velmo
