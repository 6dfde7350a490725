#include "JsonObject.h"

#include <cstdio>

namespace velmo {
namespace kvo {
namespace tools {

namespace {

// Length of the well-formed UTF-8 sequence at `at`, or 0 if there is none
// (overlong forms, surrogates and values above U+10FFFF are not well-formed).
size_t utf8SequenceLength(const std::string& text, size_t at)
{
    const unsigned char lead = static_cast<unsigned char>(text[at]);
    size_t length = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xbf;
    if (lead < 0x80) {
        return 1;
    } else if (lead >= 0xc2 && lead <= 0xdf) {
        length = 2;
    } else if (lead >= 0xe0 && lead <= 0xef) {
        length = 3;
        low = lead == 0xe0 ? 0xa0 : low;
        high = lead == 0xed ? 0x9f : high;
    } else if (lead >= 0xf0 && lead <= 0xf4) {
        length = 4;
        low = lead == 0xf0 ? 0x90 : low;
        high = lead == 0xf4 ? 0x8f : high;
    } else {
        return 0;
    }
    if (at + length > text.size()) {
        return 0;
    }
    for (size_t i = 1; i < length; ++i) {
        const unsigned char next = static_cast<unsigned char>(text[at + i]);
        if (next < (i == 1 ? low : 0x80) || next > (i == 1 ? high : 0xbf)) {
            return 0;
        }
    }
    return length;
}

} // namespace

std::string jsonString(const std::string& text)
{
    std::string quoted = "\"";
    for (size_t at = 0; at < text.size();) {
        const char c = text[at];
        const unsigned char byte = static_cast<unsigned char>(c);
        const size_t length = utf8SequenceLength(text, at);
        if (length == 0) {
            quoted += "\\ufffd";
            at += 1;
            continue;
        }
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (c == '\n') {
            quoted += "\\n";
        } else if (c == '\r') {
            quoted += "\\r";
        } else if (c == '\t') {
            quoted += "\\t";
        } else if (byte < 0x20 || byte == 0x7f) {
            char escaped[8];
            std::snprintf(escaped, sizeof(escaped), "\\u%04x", byte);
            quoted += escaped;
        } else {
            quoted.append(text, at, length);
        }
        at += length;
    }
    quoted += '"';
    return quoted;
}

JsonObject& JsonObject::text(const std::string& name, const std::string& value)
{
    return raw(name, jsonString(value));
}

JsonObject& JsonObject::raw(const std::string& name, const std::string& value)
{
    if (_members.size() > 1) {
        _members += ',';
    }
    _members += jsonString(name) + ':' + value;
    return *this;
}

} // namespace tools
} // namespace kvo
} // namespace velmo
