// Any bytes as the text node of a timestamp (unsigned 64-bit) and of a server
// result code (int). Where the text is a plain number, decimal or "0x"
// hexadecimal, it must read exactly when it fits and then as strtoull/strtoll
// read it; a failure quotes the text and leaves a result code as it was.
#include "Require.h"

#include "velmo/kvo/cmdfrmwrk/Command.h"
#include "velmo/utilities/serializer/CastConvertor.h"
#include "velmo/utilities/serializer/Convertor.h"
#include "velmo/utilities/serializer/TextTrait.h"
#include "velmo/utilities/xmlserializer/XmlTraitSerializer.h"

#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <tinyxml.h>

namespace {

using akvo::fuzz::require;
using velmo::kvo::cmdfrmwrk::Command;
using velmo::utilities::serializer::CastConvertor;
using velmo::utilities::serializer::Convertor;
using velmo::utilities::serializer::TextTrait;
using velmo::utilities::xmlserializer::XmlResult;
using velmo::utilities::xmlserializer::XmlTraitSerializer;

using UnsignedText = XmlTraitSerializer<TextTrait<unsigned long long, Convertor<unsigned long long>>>;
using CodeText = XmlTraitSerializer<TextTrait<Command::ResultCode, CastConvertor<Command::ResultCode, int>>>;

// "0x" and hexadecimal digits, or decimal digits after a minus sign where `minus` allows one.
bool isPlain(const std::string& text, bool hex, bool minus)
{
    const size_t from = hex ? 2 : minus && text.compare(0, 1, "-") == 0 ? 1 : 0;
    const char* digits = hex ? "0123456789abcdefABCDEF" : "0123456789";
    return from < text.size() && text.find_first_not_of(digits, from) == std::string::npos;
}

template <typename Serializer, typename Value>
XmlResult read(const std::string& text, Value& value)
{
    const TiXmlText node(text);
    const XmlResult result = Serializer::fromXml(&node, value);
    const std::string quoted = "Conversion failed (Code 71): Unable to convert from string \"" + text + "\".";
    require(result.format() == (result.isSuccess() ? "Success" : quoted),
            "a success formats as Success and a failure quotes the text", result.format());
    return result;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    const bool hex = text.compare(0, 2, "0x") == 0;
    unsigned long long timestamp = 12345;
    const XmlResult unsignedResult = read<UnsignedText>(text, timestamp);
    if (isPlain(text, hex, false)) {
        errno = 0;
        const unsigned long long expected = std::strtoull(text.c_str(), nullptr, hex ? 16 : 10);
        require(unsignedResult.isSuccess() == (errno != ERANGE), "a plain number reads exactly when it fits",
                text);
        require(unsignedResult.isFailure() || timestamp == expected, "a plain number reads as strtoull",
                text);
    }

    Command::ResultCode code = static_cast<Command::ResultCode>(12345);
    const XmlResult codeResult = read<CodeText>(text, code);
    require(codeResult.isSuccess() || code == 12345, "a failed code leaves the target as it was", text);
    if (isPlain(text, hex, true)) {
        errno = 0;
        const long long expected = hex ? static_cast<long long>(std::strtoull(text.c_str(), nullptr, 16))
                                       : std::strtoll(text.c_str(), nullptr, 10);
        const bool fits = errno != ERANGE && expected >= (hex ? 0 : INT_MIN) && expected <= INT_MAX;
        require(codeResult.isSuccess() == fits, "a plain code reads exactly when it fits an int", text);
        require(codeResult.isFailure() || static_cast<long long>(code) == expected,
                "a plain code reads as strtoll", text);
    }
    return 0;
}
