#ifndef VELMO_KVO_CLI_OUTPUT_H
#define VELMO_KVO_CLI_OUTPUT_H

#include "Outcome.h"

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
// members "command", "code" and "result", then the fields. Everything goes to
// standard output, except the failures of an output whose `failures` stream
// is another (standard error, where standard output holds a table).
class Output
{
public:
    explicit Output(bool json, std::FILE* failures = stdout) : _json(json), _failures(failures) {}

    void print(const std::string& command, const Outcome& outcome,
               const std::vector<Field>& fields = {}) const;
    // What the tool itself answers, not the library; `code` is the exit status it implies.
    void report(const std::string& command, int code, const std::string& message) const;
    // `text` as it stands, no newline added.
    void write(const std::string& text) const;
    bool json() const { return _json; }
    // The same output with its failures on `failures`.
    Output withFailuresOn(std::FILE* failures) const { return Output(_json, failures); }

    // Standard output can no longer be written (its reader went away): what
    // is still to be printed would be lost, so the program stops.
    static bool broken();
    // Why, for standard error.
    static std::string whyBroken();

private:
    bool _json;
    std::FILE* _failures;
};

} // namespace cli
} // namespace kvo
} // namespace velmo

#endif
