#ifndef VELMO_UTILITIES_RESULT_RESULT_H
#define VELMO_UTILITIES_RESULT_RESULT_H

/**
 * @file
 * `velmo::utilities::result::Result`, the value every fallible call returns.
 */

#include "velmo/utilities/Export.h"

#include <charconv>
#include <cstddef>
#include <locale>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>

namespace velmo {
/// Helpers shared by every layer of the library.
namespace utilities {
/// The result type and its code families.
namespace result {

/**
 * A fallible operation's outcome: a code of the trait's family plus the text
 * that explains it. Nothing in this library throws; failures are these
 * values.
 *
 * Read it with isSuccess() or getErrorCode(), and show it with format(),
 * which gives the code's text, its number, and the whole chain of causes,
 * outermost first:
 *
 *     An error has occured in the transport layer (Code 1005): {Connection closed by distant (Code 5905):
 *     {Protocol has been closed by distant (Code 40005): {Closed by distant (Code 10003)}}}
 *
 * (one line). When a layer's call fails because a call of the layer below
 * failed, it keeps the lower result's format() text in braces; two lower
 * results kept by one result are joined with " && " inside the braces. The
 * nested texts are kept as text: the lower codes can be read from the text
 * only. Each family has its own block of numbers (the Service 1000, the
 * command exchange 5900, XML reading 66, the socket 10000, the connection
 * 20000, the framing 40000, and plain errno values), so a number names its
 * layer.
 *
 * A result is a plain value: copies and assignments copy the code and all
 * texts, and a result copied to another thread is independent of the
 * original. Numbers in the texts are plain decimal digits whatever the
 * process's locale.
 *
 * @tparam Trait the code family: a class with a `ResultCode` enumeration, a
 *         `successCode` constant and a `toString(ResultCode)` function.
 */
template <class Trait>
class Result
{
public:
    /// The family's code type.
    using ResultCode = typename Trait::ResultCode;

    /**
     * A result with @p errorCode and no text; a success when @p errorCode is
     * the family's success code.
     */
    Result(ResultCode errorCode) : _errorCode(errorCode) {}

    /**
     * Converts a result of the layer below: @p successCode with no text when
     * @p lower is a success, else @p errorCode with the format() text of
     * @p lower nested.
     *
     * @param lower the lower layer's result.
     * @param errorCode the code to take when @p lower failed.
     * @param successCode the code to take when @p lower succeeded.
     */
    template <class OtherTrait>
    Result(const Result<OtherTrait>& lower, ResultCode errorCode, ResultCode successCode)
        : _errorCode(successCode)
    {
        if (lower.isFailure()) {
            _errorCode = errorCode;
            Append<Result<OtherTrait>>::run(*this, lower);
        }
    }

    /// Copies the code and every text.
    Result(const Result& other) = default;

    /// Takes the texts of @p other, which is left valid but with unspecified texts.
    // Results travel up the layers by value; moving a temporary spares
    // copying its texts, which a success can carry too (the deserializers'
    // suffixes).
    Result(Result&& other) = default;

    /// Copies the code and every text; assigning a result to itself changes nothing.
    Result& operator=(const Result& other)
    {
        _errorCode = other._errorCode;
        if (this != &other) {
            _mainMessage = other._mainMessage;
            _trailingMessage = other._trailingMessage;
            _nestedResults = other._nestedResults;
        }
        return *this;
    }

    /// Takes the code and the texts of @p other, which is left valid but with unspecified texts.
    Result& operator=(Result&& other)
    {
        _errorCode = other._errorCode;
        if (this != &other) {
            _mainMessage = std::move(other._mainMessage);
            _trailingMessage = std::move(other._trailingMessage);
            _nestedResults = std::move(other._nestedResults);
        }
        return *this;
    }

    /**
     * The family's success, built once and shared; safe to call from several
     * threads at once. Copy it to return it.
     */
    static const Result& success()
    {
        static const Result successResult(Trait::successCode);
        return successResult;
    }

    /// True when the code is the family's success code (for a ServiceResult, 1000).
    bool isSuccess() const { return _errorCode == Trait::successCode; }
    /// The opposite of isSuccess().
    bool isFailure() const { return !isSuccess(); }
    /// The code, to be compared with the family's enumeration (e.g. Service::NotInCall).
    ResultCode getErrorCode() const { return _errorCode; }

    /**
     * The failure's own text followed, after a blank, by the lower results
     * in braces: "Unable to connect to /tmp/s {No such file or directory
     * (Code 2)}". Either part may be missing; a bare code gives "". For a
     * failure that the engine reported, the engine's own message is in the
     * braces.
     */
    std::string getMainMessage() const
    {
        std::string message(_mainMessage);
        if (_nestedResults.empty()) {
            return message;
        }
        if (!message.empty()) {
            message += ' ';
        }
        message += '{';
        message += _nestedResults;
        message += '}';
        return message;
    }

    /**
     * The whole result on one line: "Success" for a success, whatever text it
     * holds; else the code's text, " (Code ", the number, ")", and, when
     * getMainMessage() is not empty, ": " and that message. This is the text
     * the call's log line ends with.
     */
    // Codes are written in plain digits whatever the process's locale.
    std::string format() const
    {
        if (isSuccess()) {
            return Trait::toString(Trait::successCode);
        }
        std::string text = Trait::toString(_errorCode);
        text += " (Code ";
        appendNumber(text, static_cast<long long>(_errorCode));
        text += ')';
        const std::string mainMessage = getMainMessage();
        if (!mainMessage.empty()) {
            text += ": ";
            text += mainMessage;
        }
        text += _trailingMessage;
        return text;
    }

    // The second parameter only lets the text kinds below be specialised
    // inside the class. Numbers are written in plain digits, and anything
    // else as a stream in the classic locale prints it, whatever locale the
    // application made global.
    /**
     * Appends one value to a result's text: the library's way of building a
     * failure. A number or any other value is appended as a stream in the
     * classic locale prints it; a result of another family is nested.
     *
     * @tparam T the value's type.
     * @tparam Unused only lets the specialisations be declared here.
     */
    template <class T, class Unused = void>
    struct Append
    {
        /// Appends @p value to the main message of @p result, with no separator.
        static void run(Result& result, const T& value)
        {
            if constexpr (isPlainNumber<T>()) {
                appendNumber(result._mainMessage, value);
            } else {
                std::ostringstream text;
                text.imbue(std::locale::classic());
                text << value;
                result._mainMessage += text.str();
            }
        }
    };

    // Text is appended as it stands, which is exactly what a stream in its
    // default state prints, without the stream's buffer and the copy out of
    // it.
    /// Appends a character array's text up to its terminating zero.
    template <std::size_t N, class Unused>
    struct Append<char[N], Unused>
    {
        /// Appends @p value to the main message of @p result.
        static void run(Result& result, const char (&value)[N]) { result._mainMessage += value; }
    };

    /// Appends a zero-terminated text.
    template <class Unused>
    struct Append<const char*, Unused>
    {
        /// Appends @p value, which must not be null, to the main message of @p result.
        static void run(Result& result, const char* const& value) { result._mainMessage += value; }
    };

    /// Appends a string's characters.
    template <class Unused>
    struct Append<std::string, Unused>
    {
        /// Appends @p value to the main message of @p result.
        static void run(Result& result, const std::string& value) { result._mainMessage += value; }
    };

    /// Appends one character.
    template <class Unused>
    struct Append<char, Unused>
    {
        /// Appends @p value to the main message of @p result.
        static void run(Result& result, const char& value) { result._mainMessage += value; }
    };

    /// Nests a result of another family.
    template <class OtherTrait, class Unused>
    struct Append<Result<OtherTrait>, Unused>
    {
        /**
         * Adds the format() text of @p lower to the nested results of
         * @p result, after " && " when some are there already. The code of
         * @p result does not change, and a successful @p lower is nested too.
         */
        static void run(Result& result, const Result<OtherTrait>& lower)
        {
            if (!result._nestedResults.empty()) {
                result._nestedResults += " && ";
            }
            result._nestedResults += lower.format();
        }
    };

    /// True for the integer types that Append writes as decimal digits.
    // Character types print as characters and bool as a word, not digits.
    template <class T>
    static constexpr bool isPlainNumber()
    {
        return std::is_integral<T>::value && !std::is_same<T, bool>::value && !std::is_same<T, char>::value &&
               !std::is_same<T, signed char>::value && !std::is_same<T, unsigned char>::value &&
               !std::is_same<T, wchar_t>::value && !std::is_same<T, char16_t>::value &&
               !std::is_same<T, char32_t>::value;
    }

    /// Appends @p value to @p text in decimal digits, with a minus sign when negative.
    template <class T>
    static void appendNumber(std::string& text, T value)
    {
        char digits[24];
        const char* end = std::to_chars(digits, digits + sizeof(digits), value).ptr;
        text.append(digits, static_cast<std::string::size_type>(end - digits));
    }

    /**
     * Appends @p value as Append does and returns a copy of the result.
     * Chained insertions each apply to the previous copy, so only the value of
     * the whole expression holds every piece: build and return a failure in
     * one expression, `return ServiceResult(code) << "text " << number;`.
     */
    // Returns a copy on purpose: a chain of insertions builds a failure in one
    // expression, each insertion applying to the previous copy.
    template <class T>
    Result operator<<(const T& value)
    {
        Append<T>::run(*this, value);
        return *this;
    }

    /// The code; read it with getErrorCode().
    ResultCode _errorCode;
    /// The failure's own text, without the nested results; read it with getMainMessage().
    std::string _mainMessage;
    /// Text that format() writes last, without a separator; this library leaves it empty.
    std::string _trailingMessage;
    /// The format() texts of the nested lower results, joined by " && ".
    std::string _nestedResults;
};

/**
 * The family of a C library error: the code is the errno value, 0 is the
 * success, and the text is what strerror() says, so it follows the process's
 * language settings.
 */
struct VELMO_EXPORT ErrnoTrait
{
    /// An errno value.
    using ResultCode = int;
    /// No error.
    static constexpr ResultCode successCode = 0;
    /// "Success" for 0, else strerror(@p code).
    static const char* toString(ResultCode code);
};

} // namespace result
} // namespace utilities
} // namespace velmo

#endif
