#ifndef VELMO_UTILITIES_DECIMAL_H
#define VELMO_UTILITIES_DECIMAL_H

#include <charconv>
#include <cstdint>
#include <cstring>

namespace velmo {
namespace utilities {

// The most digits an unsigned 64-bit value has.
constexpr int maxDecimalDigits = 20;

namespace detail {

// "00", "01", ... "99", one after the other.
struct DigitPairs
{
    constexpr DigitPairs() : text()
    {
        for (int i = 0; i < 100; ++i) {
            text[2 * i] = static_cast<char>('0' + i / 10);
            text[2 * i + 1] = static_cast<char>('0' + i % 10);
        }
    }
    char text[200];
};

inline constexpr DigitPairs digitPairs;

} // namespace detail

// Writes `value` in plain decimal digits from `out`, which has room for
// maxDecimalDigits, and returns the end. On 32-bit x86 every 64-bit division
// is a library call, so the value is cut into parts of nine digits, each
// printed with 32-bit arithmetic, two digits a step: two 64-bit divisions at
// most instead of one per digit pair.
inline char* writeDecimal(char* out, unsigned long long value)
{
    constexpr uint32_t billion = 1000000000u;
    if (value <= UINT32_MAX) {
        return std::to_chars(out, out + maxDecimalDigits, static_cast<uint32_t>(value)).ptr;
    }
    const unsigned long long high = value / billion;
    uint32_t low = static_cast<uint32_t>(value - high * billion);
    out = writeDecimal(out, high);
    for (int pair = 3; pair >= 0; --pair) {
        std::memcpy(out + 1 + 2 * pair, detail::digitPairs.text + 2 * (low % 100), 2);
        low /= 100;
    }
    out[0] = static_cast<char>('0' + low);
    return out + 9;
}

} // namespace utilities
} // namespace velmo

#endif
