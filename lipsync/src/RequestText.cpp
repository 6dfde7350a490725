#include "velmo/kvo/lipsync/LipSyncSerializer.h"

#include "velmo/utilities/Decimal.h"

namespace velmo {
namespace kvo {
namespace lipsync {

using velmo::utilities::xmlserializer::XmlResult;

namespace {

// A request as the generic serializer prints it, printed once.
struct PrintedRequest
{
    XmlResult result;
    std::string text;
};

template <class Request>
PrintedRequest print(const Request& request)
{
    PrintedRequest printed{XmlResult::success(), std::string()};
    printed.result = LipSyncXmlSerializer::Generic().serialize(request, printed.text);
    return printed;
}

// A SetAudioDelay request is the same text around its number: printed once
// with a number that occurs nowhere else in it, then cut there.
struct TextAroundNumber
{
    std::string before;
    std::string after;
};

TextAroundNumber cutAroundNumber()
{
    const unsigned long long sample = 9876543210123ULL;
    const std::string sampleElementText = ">9876543210123<";
    PrintedRequest printed = print(SetAudioDelay::Request{sample});
    TextAroundNumber around;
    const std::string::size_type at = printed.text.find(sampleElementText);
    if (printed.result.isSuccess() && at != std::string::npos) {
        around.before = printed.text.substr(0, at + 1);
        around.after = printed.text.substr(at + sampleElementText.size() - 1);
    }
    return around;
}

} // namespace

XmlResult LipSyncXmlSerializer::serialize(const GetAudioTs::Request& request, std::string& xml) const
{
    static const PrintedRequest printed = print(request);
    xml.assign(printed.text);
    return printed.result;
}

XmlResult LipSyncXmlSerializer::serialize(const SetAudioDelay::Request& request, std::string& xml) const
{
    static const TextAroundNumber around = cutAroundNumber();
    if (around.before.empty()) {
        return Generic::serialize(request, xml);
    }
    char digits[velmo::utilities::maxDecimalDigits];
    const char* end = velmo::utilities::writeDecimal(digits, request.delayMs);
    xml.assign(around.before)
        .append(digits, static_cast<std::string::size_type>(end - digits))
        .append(around.after);
    return XmlResult::success();
}

} // namespace lipsync
} // namespace kvo
} // namespace velmo
