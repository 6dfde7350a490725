#ifndef VELMO_KVO_CLI_OUTPUT_H
#define VELMO_KVO_CLI_OUTPUT_H

#include "velmo/kvo/lipsyncapi/Service.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace velmo {
namespace kvo {
namespace cli {

// A value printed after a command's result. In JSON a timestamp is a string
// of decimal digits, as a double would round its 64 bits.
struct Field
{
    enum class Kind
    {
        Number,
        Timestamp,
        Text
    };

    std::string name;
    std::string text;
    Kind kind;
};

Field numberField(const std::string& name, unsigned long long value);
Field timestampField(const std::string& name, uint64_t value);
// Three digits after the point.
Field decimalField(const std::string& name, double value);
Field textField(const std::string& name, const std::string& value);

// Writes one line per outcome, as plain text or as a JSON object with the
// members "command", "code" and "result", then the fields.
class Output
{
public:
    explicit Output(bool json, std::FILE* stream = stdout) : _json(json), _stream(stream) {}

    void print(const std::string& command, const lipsyncapi::Service::ServiceResult& result,
               const std::vector<Field>& fields = {}) const;
    // What the tool itself answers, not the library; `code` is the exit status it implies.
    void report(const std::string& command, int code, const std::string& message) const;
    bool json() const { return _json; }

private:
    void printJson(const std::string& command, long long code, const std::string& result,
                   const std::vector<Field>& fields) const;

    bool _json;
    std::FILE* _stream;
};

} // namespace cli
} // namespace kvo
} // namespace velmo

#endif
