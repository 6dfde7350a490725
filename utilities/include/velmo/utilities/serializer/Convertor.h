#ifndef VELMO_UTILITIES_SERIALIZER_CONVERTOR_H
#define VELMO_UTILITIES_SERIALIZER_CONVERTOR_H

#include <sstream>
#include <string>
#include <type_traits>

namespace velmo {
namespace utilities {
namespace serializer {

// Converts an integer to and from its text. The peer writes numbers bare, so
// any white space is refused rather than skipped, and the whole text must be
// one number: "12 " or "12abc" are rejected instead of reading as 12.
template <class T>
struct Convertor
{
    static bool toString(const T& value, std::string& text)
    {
        std::ostringstream stream;
        stream << value;
        if (stream.fail() || stream.bad()) {
            return false;
        }
        text = stream.str();
        return true;
    }

    // Parses straight into `value`, which a failed parse may therefore alter.
    static bool fromString(const std::string& text, T& value)
    {
        if (text.find_first_of("\r\n\t\v ") != std::string::npos) {
            return false;
        }
        // The stream would wrap "-1" around to the largest value.
        if (std::is_unsigned<T>::value && text.find('-') != std::string::npos) {
            return false;
        }
        std::istringstream stream(text);
        if (text.compare(0, 2, "0x") == 0) {
            stream >> std::hex;
        }
        stream >> value;
        return stream.eof() && !stream.fail() && !stream.bad();
    }
};

template <>
struct Convertor<std::string>
{
    static bool fromString(const std::string& text, std::string& value)
    {
        value = text;
        return true;
    }
};

} // namespace serializer
} // namespace utilities
} // namespace velmo

#endif
