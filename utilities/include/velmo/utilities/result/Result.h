#ifndef VELMO_UTILITIES_RESULT_RESULT_H
#define VELMO_UTILITIES_RESULT_RESULT_H

#include "velmo/utilities/Export.h"

#include <charconv>
#include <cstddef>
#include <locale>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>

namespace velmo {
namespace utilities {
namespace result {

// A fallible operation's outcome: a code of the trait's family plus the text
// that explains it. Lower-layer results are kept as their rendering in
// `_nestedResults`, so the final text reads from the outermost cause inwards.
template <class Trait>
class Result
{
public:
    typedef typename Trait::ResultCode ResultCode;

    Result(ResultCode errorCode) : _errorCode(errorCode) {}

    template <class OtherTrait>
    Result(const Result<OtherTrait>& lower, ResultCode errorCode, ResultCode successCode)
        : _errorCode(successCode)
    {
        if (lower.isFailure()) {
            _errorCode = errorCode;
            Append<Result<OtherTrait>>::run(*this, lower);
        }
    }

    Result(const Result& other) = default;

    // Results travel up the layers by value; moving a temporary spares
    // copying its texts, which a success can carry too (the deserializers'
    // suffixes).
    Result(Result&& other) = default;

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

    static const Result& success()
    {
        static const Result successResult(Trait::successCode);
        return successResult;
    }

    bool isSuccess() const { return _errorCode == Trait::successCode; }
    bool isFailure() const { return !isSuccess(); }
    ResultCode getErrorCode() const { return _errorCode; }

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
    template <class T, class Unused = void>
    struct Append
    {
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
    template <std::size_t N, class Unused>
    struct Append<char[N], Unused>
    {
        static void run(Result& result, const char (&value)[N]) { result._mainMessage += value; }
    };

    template <class Unused>
    struct Append<const char*, Unused>
    {
        static void run(Result& result, const char* const& value) { result._mainMessage += value; }
    };

    template <class Unused>
    struct Append<std::string, Unused>
    {
        static void run(Result& result, const std::string& value) { result._mainMessage += value; }
    };

    template <class Unused>
    struct Append<char, Unused>
    {
        static void run(Result& result, const char& value) { result._mainMessage += value; }
    };

    template <class OtherTrait, class Unused>
    struct Append<Result<OtherTrait>, Unused>
    {
        static void run(Result& result, const Result<OtherTrait>& lower)
        {
            if (!result._nestedResults.empty()) {
                result._nestedResults += " && ";
            }
            result._nestedResults += lower.format();
        }
    };

    // Character types print as characters and bool as a word, not digits.
    template <class T>
    static constexpr bool isPlainNumber()
    {
        return std::is_integral<T>::value && !std::is_same<T, bool>::value && !std::is_same<T, char>::value &&
               !std::is_same<T, signed char>::value && !std::is_same<T, unsigned char>::value &&
               !std::is_same<T, wchar_t>::value && !std::is_same<T, char16_t>::value &&
               !std::is_same<T, char32_t>::value;
    }

    template <class T>
    static void appendNumber(std::string& text, T value)
    {
        char digits[24];
        const char* end = std::to_chars(digits, digits + sizeof(digits), value).ptr;
        text.append(digits, static_cast<std::string::size_type>(end - digits));
    }

    // Returns a copy on purpose: a chain of insertions builds a failure in one
    // expression, each insertion applying to the previous copy.
    template <class T>
    Result operator<<(const T& value)
    {
        Append<T>::run(*this, value);
        return *this;
    }

    ResultCode _errorCode;
    std::string _mainMessage;
    std::string _trailingMessage;
    std::string _nestedResults;
};

// Carries a C library errno value; its text is whatever strerror says.
struct VELMO_EXPORT ErrnoTrait
{
    typedef int ResultCode;
    static constexpr ResultCode successCode = 0;
    static const char* toString(ResultCode code);
};

} // namespace result
} // namespace utilities
} // namespace velmo

#endif
