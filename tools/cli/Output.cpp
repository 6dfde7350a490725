#include "Output.h"

#include "JsonObject.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace velmo {
namespace kvo {
namespace cli {

namespace {

// The error of the first write to standard output that failed.
int standardOutputError = 0;

void writeTo(std::FILE* stream, const std::string& text)
{
    if (std::fwrite(text.data(), 1, text.size(), stream) != text.size() || std::fflush(stream) != 0) {
        if (stream == stdout && standardOutputError == 0) {
            standardOutputError = errno;
        }
    }
}

std::string jsonLine(const std::string& command, long long code, const std::string& result,
                     const std::vector<Field>& fields)
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
    return object.line() + "\n";
}

} // namespace

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

void Output::print(const std::string& command, const Outcome& outcome, const std::vector<Field>& fields) const
{
    std::FILE* stream = outcome.isSuccess() ? stdout : _failures;
    if (_json) {
        writeTo(stream, jsonLine(command, outcome.code, outcome.text, fields));
        return;
    }
    std::string line = command + ": " + outcome.text;
    // A failure's values would read as part of its message.
    for (const Field& field : outcome.isSuccess() ? fields : std::vector<Field>()) {
        line += " " + field.name + "=" + field.text;
    }
    writeTo(stream, line + "\n");
}

void Output::report(const std::string& command, int code, const std::string& message) const
{
    if (_json) {
        writeTo(stdout, jsonLine(command, code, message, {}));
        return;
    }
    writeTo(stdout, command + ": " + message + "\n");
}

void Output::write(const std::string& text) const
{
    writeTo(stdout, text);
}

bool Output::broken()
{
    return standardOutputError != 0;
}

std::string Output::whyBroken()
{
    return std::string("cannot write to standard output: ") + std::strerror(standardOutputError);
}

} // namespace cli
} // namespace kvo
} // namespace velmo
