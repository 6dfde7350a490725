#ifndef AKVO_TESTS_COMMS_TEXTS_H
#define AKVO_TESTS_COMMS_TEXTS_H

#include <cstring>
#include <string>

namespace akvo {
namespace test {

// The rendering of a failed Result<ErrnoTrait> built from `error`.
inline std::string errnoText(int error)
{
    return std::string(std::strerror(error)) + " (Code " + std::to_string(error) + ")";
}

// Makes `text` match itself literally in a death test's regular expression.
inline std::string escapeRegex(const std::string& text)
{
    std::string escaped;
    for (const char c : text) {
        if (c != '\0' && std::strchr("\\^$.|?*+()[]{}", c) != nullptr) {
            escaped += '\\';
        }
        escaped += c;
    }
    return escaped;
}

} // namespace test
} // namespace akvo

#endif
