#ifndef VELMO_KVO_TOOLS_JSONOBJECT_H
#define VELMO_KVO_TOOLS_JSONOBJECT_H

#include <string>
#include <type_traits>

namespace velmo {
namespace kvo {
namespace tools {

// A JSON string literal, quotes included, that is valid UTF-8 whatever the
// text holds: valid UTF-8 passes through, each byte that is not part of a
// valid sequence becomes U+FFFD, control characters are escaped.
std::string jsonString(const std::string& text);

// One JSON object on one line, its members in the order they were added.
class JsonObject
{
public:
    JsonObject& text(const std::string& name, const std::string& value);

    template <typename Integer>
    JsonObject& number(const std::string& name, Integer value)
    {
        static_assert(std::is_integral<Integer>::value, "a whole number");
        return raw(name, std::to_string(value));
    }

    // `value` is a JSON value already.
    JsonObject& raw(const std::string& name, const std::string& value);

    // The object, no newline.
    std::string line() const { return _members + '}'; }

private:
    std::string _members = "{";
};

} // namespace tools
} // namespace kvo
} // namespace velmo

#endif
