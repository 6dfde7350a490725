// Any bytes as the text node of a timestamp (unsigned 64-bit) and of a server
// result code (int). Where the text is a plain number, decimal or "0x"
// hexadecimal, the outcome must match strtoull/strtoll; elsewhere the texts
// that must fail do fail, and a success uses only what a number may hold.
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

typedef XmlTraitSerializer<TextTrait<unsigned long long, Convertor<unsigned long long>>> UnsignedText;
typedef XmlTraitSerializer<TextTrait<Command::ResultCode, CastConvertor<Command::ResultCode, int>>> CodeText;

const Command::ResultCode presetCode = static_cast<Command::ResultCode>(12345);

// What a plain number is and, when it is one, what the C library reads.
struct Reference
{
    bool plain = false;
    bool fits = false;
    unsigned long long unsignedValue = 0;
    long long signedValue = 0;
};

bool allOf(const std::string& text, size_t from, const char* digits)
{
    return from < text.size() && text.find_first_not_of(digits, from) == std::string::npos;
}

Reference referenceUnsigned(const std::string& text)
{
    Reference reference;
    const bool hex = text.compare(0, 2, "0x") == 0;
    reference.plain = hex ? allOf(text, 2, "0123456789abcdefABCDEF") : allOf(text, 0, "0123456789");
    if (reference.plain) {
        errno = 0;
        reference.unsignedValue = std::strtoull(text.c_str() + (hex ? 2 : 0), nullptr, hex ? 16 : 10);
        reference.fits = errno != ERANGE;
    }
    return reference;
}

Reference referenceInt(const std::string& text)
{
    Reference reference;
    const bool hex = text.compare(0, 2, "0x") == 0;
    const size_t digitsFrom = !text.empty() && text[0] == '-' ? 1 : 0;
    reference.plain = hex ? allOf(text, 2, "0123456789abcdefABCDEF") : allOf(text, digitsFrom, "0123456789");
    if (reference.plain) {
        errno = 0;
        reference.signedValue = hex ? static_cast<long long>(std::strtoull(text.c_str() + 2, nullptr, 16))
                                    : std::strtoll(text.c_str(), nullptr, 10);
        const bool inRange = reference.signedValue >= INT_MIN && reference.signedValue <= INT_MAX;
        reference.fits = errno != ERANGE && inRange && (!hex || reference.signedValue >= 0);
    }
    return reference;
}

void checkResultText(const XmlResult& result, const std::string& text)
{
    if (result.isSuccess()) {
        require(result.format() == "Success", "a success formats as Success", result.format());
    } else {
        require(result.format() ==
                    "Conversion failed (Code 71): Unable to convert from string \"" + text + "\".",
                "a failure quotes the text", result.format());
    }
}

void readUnsigned(const std::string& text)
{
    const TiXmlText node(text);
    unsigned long long value = 0;
    const XmlResult result = UnsignedText::fromXml(&node, value);
    checkResultText(result, text);
    const Reference reference = referenceUnsigned(text);
    if (reference.plain) {
        require(result.isSuccess() == reference.fits, "a plain number reads exactly when it fits", text);
        require(!result.isSuccess() || value == reference.unsignedValue, "a plain number reads as strtoull",
                text);
    } else if (text.find_first_of("\r\n\t\v -") != std::string::npos) {
        require(result.isFailure(), "white space or a minus sign never reads as unsigned", text);
    } else if (result.isSuccess()) {
        require(text.find_first_not_of("0123456789abcdefABCDEFxX+\f") == std::string::npos,
                "a success holds only sign, prefix, digits and a leading form feed", text);
    }
}

void readInt(const std::string& text)
{
    const TiXmlText node(text);
    Command::ResultCode value = presetCode;
    const XmlResult result = CodeText::fromXml(&node, value);
    checkResultText(result, text);
    require(result.isSuccess() || value == presetCode, "a failed code leaves the target as it was", text);
    const Reference reference = referenceInt(text);
    if (reference.plain) {
        require(result.isSuccess() == reference.fits, "a plain code reads exactly when it fits an int", text);
        require(!result.isSuccess() || static_cast<long long>(value) == reference.signedValue,
                "a plain code reads as strtoll", text);
    } else if (text.find_first_of("\r\n\t\v ") != std::string::npos) {
        require(result.isFailure(), "white space never reads as a code", text);
    } else if (result.isSuccess()) {
        require(text.find_first_not_of("0123456789abcdefABCDEFxX+-\f") == std::string::npos,
                "a success holds only sign, prefix, digits and a leading form feed", text);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    readUnsigned(text);
    readInt(text);
    return 0;
}
