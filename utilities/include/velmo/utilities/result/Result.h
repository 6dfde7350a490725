#ifndef VELMO_UTILITIES_RESULT_RESULT_H
#define VELMO_UTILITIES_RESULT_RESULT_H

#include "velmo/utilities/Export.h"

#include <sstream>
#include <string>

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

    std::string format() const
    {
        if (isSuccess()) {
            return Trait::toString(Trait::successCode);
        }
        std::ostringstream text;
        text << Trait::toString(_errorCode) << " (Code " << static_cast<long long>(_errorCode) << ")";
        const std::string mainMessage = getMainMessage();
        if (!mainMessage.empty()) {
            text << ": " << mainMessage;
        }
        text << _trailingMessage;
        return text.str();
    }

    template <class T>
    struct Append
    {
        static void run(Result& result, const T& value)
        {
            std::ostringstream text;
            text << value;
            result._mainMessage += text.str();
        }
    };

    template <class OtherTrait>
    struct Append<Result<OtherTrait>>
    {
        static void run(Result& result, const Result<OtherTrait>& lower)
        {
            if (!result._nestedResults.empty()) {
                result._nestedResults += " && ";
            }
            result._nestedResults += lower.format();
        }
    };

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
