#ifndef VELMO_UTILITIES_SERIALIZER_CONVERTOR_H
#define VELMO_UTILITIES_SERIALIZER_CONVERTOR_H

#include <charconv>
#include <istream>
#include <locale>
#include <streambuf>
#include <string>
#include <system_error>
#include <type_traits>

namespace velmo {
namespace utilities {
namespace serializer {

// The stream buffer of a number being read: it reads the text where it lies,
// where a string stream would first copy it (an allocation for every number
// longer than a short string, as every timestamp is). It never writes.
class TextReader : public std::streambuf
{
public:
    explicit TextReader(const std::string& text)
    {
        char* begin = const_cast<char*>(text.data());
        setg(begin, begin, begin + text.size());
    }
};

// Converts an integer to and from its text. The peer writes numbers bare, so
// any white space is refused rather than skipped, and the whole text must be
// one number: "12 " or "12abc" are rejected instead of reading as 12.
template <class T>
struct Convertor
{
    // Plain digits, whatever the process's locale.
    static bool toString(const T& value, std::string& text)
    {
        char digits[24];
        const std::to_chars_result written = std::to_chars(digits, digits + sizeof(digits), value);
        if (written.ec != std::errc()) {
            return false;
        }
        text.assign(digits, written.ptr);
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
        // The classic locale: a global one that groups digits would accept
        // "1.000" for 1000.
        TextReader reader(text);
        std::istream stream(&reader);
        stream.imbue(std::locale::classic());
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
