#ifndef VELMO_UTILITIES_DECIMAL_H
#define VELMO_UTILITIES_DECIMAL_H

#include <charconv>
#include <cstdint>

namespace velmo {
namespace utilities {

// The most digits an unsigned 64-bit value has.
constexpr int maxDecimalDigits = 20;

// Writes `value` in plain decimal digits from `out`, which has room for
// maxDecimalDigits, and returns the end. On 32-bit x86 every 64-bit division
// is a library call, so the value is cut into parts of nine digits, each
// printed with 32-bit arithmetic: two 64-bit divisions at most instead of
// one per digit pair.
inline char* writeDecimal(char* out, unsigned long long value)
{
    constexpr uint32_t billion = 1000000000u;
    if (value <= UINT32_MAX) {
        return std::to_chars(out, out + maxDecimalDigits, static_cast<uint32_t>(value)).ptr;
    }
    const unsigned long long high = value / billion;
    uint32_t low = static_cast<uint32_t>(value - high * billion);
    out = writeDecimal(out, high);
    for (int digit = 8; digit >= 0; --digit) {
        out[digit] = static_cast<char>('0' + low % 10);
        low /= 10;
    }
    return out + 9;
}

} // namespace utilities
} // namespace velmo

#endif
