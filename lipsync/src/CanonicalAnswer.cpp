#include "velmo/kvo/lipsync/LipSyncSerializer.h"

#include <climits>
#include <cstdint>
#include <cstring>

// Reading the answers in the one form the engine prints, without a document.
//
// The engine prints every answer compactly, in one layout: the declaration,
// the root with its version, the command element, the Result (ErrorCode, then
// Message) and, for GetAudioTs, the four timestamps in their order, nothing
// in between and nothing after. readCanonical accepts exactly that layout
// and declines anything else, having written nothing; the caller then reads
// the answer the general way. It accepts:
//
//   - the fixed text, byte for byte, with "AKVO" and "0.1.0";
//   - ErrorCode: an optional "-" and one or more decimal digits whose value
//     fits an int (leading zeros allowed);
//   - Message: "<Message/>", "<Message />", "<Message></Message>", or the
//     element holding words of printable ASCII other than "<", ">" and "&",
//     separated by single blanks, with no blank at either end;
//   - each timestamp: one or more decimal digits whose value fits 64 bits.
//
// Why the general path reads every accepted answer to the same result:
//
//   - The text is a well-formed document of depth four, so the depth check
//     lets it through, TinyXML builds the tree it spells, and the envelope
//     checks (root name, version, a single top-level element, a first child)
//     all pass, the first child being the command element of the right name.
//   - Every element the readers look for is there, once, under the right
//     parent, with one text child; there is no comment, CDATA, entity or
//     white space that TinyXML would drop, condense or decode, so each text
//     node holds exactly the bytes between the tags.
//   - The number readers refuse white space and "0x" switches to hexadecimal;
//     neither occurs. A decimal digit run, with "-" only for the code, parses
//     to its value when it fits the type and fails otherwise, and "fits" is
//     the check made here. The classic locale has no grouping.
//   - The message reader appends the text, or nothing for an empty element,
//     to a Result whose code was just set; the general path then assigns
//     that Result, and the four timestamps, to the answer. Here the answer
//     receives the same code, message and timestamps.
//   - The exchange's outcome is the Peer success in both cases: the general
//     path's success carries its suffix texts in the serializer result only,
//     which the Peer result does not keep.
//
// A differential test checks this on boundary values and every one-byte
// change of each canonical answer, and a fuzz target mutates inside this
// layout, from values of its choosing.

namespace velmo {
namespace kvo {
namespace lipsync {

namespace {

class Cursor
{
public:
    explicit Cursor(const std::string& text) : _at(text.data()), _end(text.data() + text.size()) {}

    template <std::size_t N>
    bool literal(const char (&text)[N])
    {
        const std::size_t length = N - 1;
        if (static_cast<std::size_t>(_end - _at) < length || std::memcmp(_at, text, length) != 0) {
            return false;
        }
        _at += length;
        return true;
    }

    // One or more digits whose value fits 64 bits, whether they fit told
    // from the text. Leading zeros are skipped; then eight digits at a time
    // are checked and summed within one 64-bit word, and the rest one by one
    // with 32-bit arithmetic, since per-digit 64-bit arithmetic is slow on
    // 32-bit x86.
    bool unsignedNumber(unsigned long long& value)
    {
        static const char largest[] = "18446744073709551615";
        while (_end - _at > 1 && _at[0] == '0' && isDigit(_at[1])) {
            ++_at;
        }
        const char* const digits = _at;
        unsigned long long sum = 0;
        uint32_t eight = 0;
        while (_end - _at >= 8 && eightDigits(_at, eight)) {
            if (_at - digits >= 16) {
                return false;
            }
            sum = sum * 100000000u + eight;
            _at += 8;
        }
        // Seven digits at most are left, or the word above would have
        // taken them.
        uint32_t part = 0;
        uint32_t scale = 1;
        for (; _at < _end && isDigit(*_at); ++_at) {
            part = part * 10 + static_cast<uint32_t>(*_at - '0');
            scale *= 10;
        }
        const std::size_t count = static_cast<std::size_t>(_at - digits);
        if (count == 0 || count > sizeof(largest) - 1 ||
            (count == sizeof(largest) - 1 && std::memcmp(digits, largest, count) > 0)) {
            return false;
        }
        value = sum * scale + part;
        return true;
    }

    bool signedInt(int& value)
    {
        const bool negative = _at < _end && *_at == '-';
        _at += negative ? 1 : 0;
        unsigned long long magnitude = 0;
        const unsigned long long limit = negative ? static_cast<unsigned long long>(INT_MAX) + 1 : INT_MAX;
        if (!unsignedNumber(magnitude) || magnitude > limit) {
            return false;
        }
        value = negative ? static_cast<int>(-static_cast<long long>(magnitude)) : static_cast<int>(magnitude);
        return true;
    }

    // The text of a Message element, the empty forms included.
    bool message(const char*& text, std::size_t& size)
    {
        text = _at;
        size = 0;
        if (literal("<Message/>") || literal("<Message />") || literal("<Message></Message>")) {
            return true;
        }
        if (!literal("<Message>")) {
            return false;
        }
        text = _at;
        while (_at < _end && isWordCharacter(*_at)) {
            ++_at;
            if (_at + 1 < _end && *_at == ' ' && isWordCharacter(_at[1])) {
                ++_at;
            }
        }
        size = static_cast<std::size_t>(_at - text);
        return size > 0 && literal("</Message>");
    }

    bool atEnd() const { return _at == _end; }

private:
    static bool isDigit(char c) { return c >= '0' && c <= '9'; }

    // Whether the eight bytes at `text` are all decimal digits, and if so
    // their value. A byte is a digit when its high nibble is 3 and stays 3
    // once 6 is added; a byte that fails the first test may carry into its
    // neighbour's second, but then the whole word fails anyway.
    static bool eightDigits(const char* text, uint32_t& value)
    {
        static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the first digit is read from the low byte");
        uint64_t word;
        std::memcpy(&word, text, sizeof(word));
        const uint64_t highNibbles = 0xF0F0F0F0F0F0F0F0ULL;
        if (((word & highNibbles) | (((word + 0x0606060606060606ULL) & highNibbles) >> 4)) !=
            0x3333333333333333ULL) {
            return false;
        }
        word -= 0x3030303030303030ULL;
        word = (word * 10 + (word >> 8)) & 0x00FF00FF00FF00FFULL;
        word = (word * 100 + (word >> 16)) & 0x0000FFFF0000FFFFULL;
        value = static_cast<uint32_t>(word * 10000 + (word >> 32));
        return true;
    }

    static bool isWordCharacter(char c) { return c > ' ' && c < 0x7f && c != '<' && c != '>' && c != '&'; }

    const char* _at;
    const char* const _end;
};

// The Result element from its code on; each layout's fixed text around it
// is compared in one piece with its neighbours.
bool readCodeAndMessage(Cursor& cursor, int& code, const char*& message, std::size_t& messageSize)
{
    return cursor.signedInt(code) && cursor.literal("</ErrorCode>") && cursor.message(message, messageSize);
}

// What the general path assigns: a fresh Result of the code and the message.
void storeResult(cmdfrmwrk::Command::Answer& answer, int code, const char* message, std::size_t messageSize)
{
    answer.result._errorCode = static_cast<cmdfrmwrk::Command::ResultCode>(code);
    answer.result._mainMessage.assign(message, messageSize);
    answer.result._trailingMessage.clear();
    answer.result._nestedResults.clear();
}

const char getAudioTsHead[] =
    "<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\"><GetAudioTs_Answer><Result><ErrorCode>";
const char setAudioDelayHead[] =
    "<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\"><SetAudioDelay_Answer><Result><ErrorCode>";

} // namespace

bool LipSyncXmlSerializer::readCanonical(const std::string& xml, GetAudioTs::Answer& answer)
{
    Cursor cursor(xml);
    int code = 0;
    const char* message = nullptr;
    std::size_t messageSize = 0;
    common::LipSyncNtpTimestamps timestamps{};
    const bool canonical =
        cursor.literal(getAudioTsHead) && readCodeAndMessage(cursor, code, message, messageSize) &&
        cursor.literal("</Result><LipSyncNtpTimestamps><capture_timestamp>") &&
        cursor.unsignedNumber(timestamps.tCap) &&
        cursor.literal("</capture_timestamp><rendering_timestamp>") &&
        cursor.unsignedNumber(timestamps.tRdr) &&
        cursor.literal("</rendering_timestamp><receiving_timestamp>") &&
        cursor.unsignedNumber(timestamps.tRcv) &&
        cursor.literal("</receiving_timestamp><jitter_buffer_depth>") &&
        cursor.unsignedNumber(timestamps.jbmDepth) &&
        cursor.literal("</jitter_buffer_depth></LipSyncNtpTimestamps></GetAudioTs_Answer></AKVO>") &&
        cursor.atEnd();
    if (!canonical) {
        return false;
    }
    answer.timestamps = timestamps;
    storeResult(answer, code, message, messageSize);
    return true;
}

bool LipSyncXmlSerializer::readCanonical(const std::string& xml, SetAudioDelay::Answer& answer)
{
    Cursor cursor(xml);
    int code = 0;
    const char* message = nullptr;
    std::size_t messageSize = 0;
    const bool canonical = cursor.literal(setAudioDelayHead) &&
                           readCodeAndMessage(cursor, code, message, messageSize) &&
                           cursor.literal("</Result></SetAudioDelay_Answer></AKVO>") && cursor.atEnd();
    if (!canonical) {
        return false;
    }
    storeResult(answer, code, message, messageSize);
    return true;
}

} // namespace lipsync
} // namespace kvo
} // namespace velmo
