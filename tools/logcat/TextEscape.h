#ifndef VELMO_KVO_LOGCAT_TEXTESCAPE_H
#define VELMO_KVO_LOGCAT_TEXTESCAPE_H

#include <string>

namespace velmo {
namespace kvo {
namespace logcat {

// Keeps a record on one terminal line: control characters become \n, \r, \t
// or \xNN; every other byte is left as it is.
std::string escapeControlCharacters(const std::string& text);

// Two lowercase hex digits per byte, no separator.
std::string hexBytes(const std::string& bytes);

} // namespace logcat
} // namespace kvo
} // namespace velmo

#endif
