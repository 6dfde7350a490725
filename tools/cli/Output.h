#ifndef AKVO_TOOLS_CLI_OUTPUT_H
#define AKVO_TOOLS_CLI_OUTPUT_H

#include "velmo/kvo/lipsyncapi/Service.h"

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace akvo {
namespace cli {

// A value printed after a command's result: a number or a decimal with a
// fixed number of digits (for milliseconds).
struct Field
{
    std::string name;
    std::string text;
    bool isNumber;
};

Field numberField(const std::string& name, unsigned long long value);
Field millisecondsField(const std::string& name, double value);

// Writes one line per command, as plain text or as a JSON object.
class Output
{
public:
    explicit Output(bool json) : _json(json) {}

    void print(const std::string& command, const velmo::kvo::lipsyncapi::Service::ServiceResult& result,
               const std::vector<Field>& fields = {}) const;
    void error(const std::string& command, const std::string& message) const;
    bool json() const { return _json; }

private:
    bool _json;
};

std::string jsonQuoted(const std::string& text);

} // namespace cli
} // namespace akvo

#endif
