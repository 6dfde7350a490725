#ifndef VELMO_UTILITIES_LOG_STANDARDERRORLINE_H
#define VELMO_UTILITIES_LOG_STANDARDERRORLINE_H

#include <cstdarg>

namespace velmo {
namespace utilities {

// Writes "<letter>/<tag> <message>\n" to standard error in one system call,
// the message formatted from `format` and `args` as vfprintf would, so that
// lines of threads logging at once never mix: a line of up to 1024 bytes
// from one buffer, a longer one in pieces. Only a partial write (a signal, a
// full disk) makes it go on with a second call. A formatted message longer
// than 1023 bytes is built in the heap; should that fail, the line carries
// its first 1023 bytes. Errors are ignored: logging never fails its caller.
//
// The bytes go to the descriptor behind stderr, past stdio's buffer, which
// standard error does not have unless the application gave it one.
void writeStandardErrorLine(const char* letter, const char* tag, const char* format, va_list args);

} // namespace utilities
} // namespace velmo

#endif
