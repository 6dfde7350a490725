#include "TextEscape.h"

#include <cstdio>

namespace velmo {
namespace kvo {
namespace logcat {

namespace {

std::string hexByte(const char* format, unsigned char byte)
{
    char text[8];
    std::snprintf(text, sizeof(text), format, byte);
    return text;
}

bool isControl(unsigned char byte)
{
    return byte < 0x20 || byte == 0x7f;
}

} // namespace

std::string escapeControlCharacters(const std::string& text)
{
    std::string escaped;
    for (const char c : text) {
        const unsigned char byte = static_cast<unsigned char>(c);
        if (c == '\n') {
            escaped += "\\n";
        } else if (c == '\r') {
            escaped += "\\r";
        } else if (c == '\t') {
            escaped += "\\t";
        } else if (isControl(byte)) {
            escaped += hexByte("\\x%02x", byte);
        } else {
            escaped += c;
        }
    }
    return escaped;
}

std::string hexBytes(const std::string& bytes)
{
    std::string hex;
    for (const char c : bytes) {
        hex += hexByte("%02x", static_cast<unsigned char>(c));
    }
    return hex;
}

} // namespace logcat
} // namespace kvo
} // namespace velmo
