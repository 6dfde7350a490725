#ifndef VELMO_UTILITIES_SERIALIZER_CONVERTOR_H
#define VELMO_UTILITIES_SERIALIZER_CONVERTOR_H

#include <istream>
#include <sstream>
#include <streambuf>
#include <string>
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
        TextReader reader(text);
        std::istream stream(&reader);
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
