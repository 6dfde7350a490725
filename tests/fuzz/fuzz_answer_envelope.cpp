// Any bytes read as a GetAudioTs answer and as a SetAudioDelay answer. Beyond
// not crashing, the outcome must be one the envelope and the traits can give,
// with the text that belongs to its code, and a failed read must leave the
// server result of the answer as the caller preset it.
#include "Require.h"

#include "velmo/kvo/lipsync/GetAudioTs.h"
#include "velmo/kvo/lipsync/LipSyncSerializer.h"
#include "velmo/kvo/lipsync/SetAudioDelay.h"
#include "velmo/utilities/xmlserializer/XmlResult.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace {

using akvo::fuzz::endsWith;
using akvo::fuzz::require;
using akvo::fuzz::startsWith;
using velmo::kvo::lipsync::GetAudioTs;
using velmo::kvo::lipsync::LipSyncXmlSerializer;
using velmo::kvo::lipsync::SetAudioDelay;
using velmo::utilities::xmlserializer::XmlResult;
namespace xs = velmo::utilities::xmlserializer;

const std::string unknownServerResult = "Unknown error (Code 1001)";

std::string whileDeserializing(const std::string& tag)
{
    return " (While desserializing \"" + tag + "\")";
}

bool isEnvelopeFailure(const std::string& message)
{
    return message == "No 'AKVO' root element found in xml data." ||
           message == "No version found in root node 'AKVO" || message == "No command tag found." ||
           message == "No content under root element." ||
           (startsWith(message, "Version does not match; expect '0.1.0' got '") && endsWith(message, "'."));
}

void checkOutcome(const XmlResult& result, const std::string& xml, const std::string& tag)
{
    const std::string formatted = result.format();
    const std::string message = result.getMainMessage();
    require(!formatted.empty(), "format() is never empty");
    switch (result.getErrorCode()) {
    case xs::Success:
        require(formatted == "Success", "a success formats as Success", formatted);
        require(std::strstr(xml.c_str(), tag.c_str()) != nullptr,
                "a success read an element of the answer's name", tag);
        break;
    case xs::WrongXmlNode:
        require(startsWith(message, "Trying to deserialize the wrong element.Found \"") &&
                    endsWith(message, "\" expected " + tag),
                "a wrong command element is named, without suffix", message);
        break;
    case xs::ChildNotFound:
        require(endsWith(message, whileDeserializing(tag)), "a missing child names the answer last", message);
        break;
    case xs::ConversionFailed:
        require(isEnvelopeFailure(message) || endsWith(message, whileDeserializing(tag)),
                "a conversion failure is the envelope's or names the answer last", message);
        break;
    default:
        require(false, "only 66, 68, 69 and 71 come out of deserialize", formatted);
    }
    require(startsWith(formatted, xs::detail::ResultTrait::toString(result.getErrorCode())),
            "format() starts with the code's text", formatted);
}

bool failedAtTheResultElement(const std::string& message)
{
    const std::string answerSuffix = whileDeserializing("GetAudioTs_Answer");
    return endsWith(message, whileDeserializing("Result") + answerSuffix) ||
           message == "No element node \"Result\" found in node \"GetAudioTs_Answer\"" + answerSuffix;
}

void readGetAudioTsAnswer(const std::string& xml)
{
    GetAudioTs::Answer answer;
    answer.timestamps = {1, 2, 3, 4};
    const XmlResult result = LipSyncXmlSerializer().deserialize(xml, answer);
    checkOutcome(result, xml, "GetAudioTs_Answer");
    require(!answer.result.format().empty(), "the server result formats to some text");
    if (result.isSuccess()) {
        return;
    }
    require(answer.result.format() == unknownServerResult, "a failed read keeps the preset server result",
            answer.result.format());
    if (!failedAtTheResultElement(result.getMainMessage())) {
        const auto& t = answer.timestamps;
        require(t.tCap == 1 && t.tRdr == 2 && t.tRcv == 3 && t.jbmDepth == 4,
                "timestamps are stored only once all four were read", result.format());
    }
}

void readSetAudioDelayAnswer(const std::string& xml)
{
    SetAudioDelay::Answer answer;
    const XmlResult result = LipSyncXmlSerializer().deserialize(xml, answer);
    checkOutcome(result, xml, "SetAudioDelay_Answer");
    require(!answer.result.format().empty(), "the server result formats to some text");
    if (result.isFailure()) {
        require(answer.result.format() == unknownServerResult, "a failed read keeps the preset server result",
                answer.result.format());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string xml(reinterpret_cast<const char*>(data), size);
    readGetAudioTsAnswer(xml);
    readSetAudioDelayAnswer(xml);
    return 0;
}
