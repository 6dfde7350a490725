// Any bytes read as a GetAudioTs answer and as a SetAudioDelay answer. Beyond
// not crashing, the outcome must be one that deserialize can give, and a
// failed read must leave the answer's server result as the caller preset it.
#include "Require.h"

#include "velmo/kvo/lipsync/GetAudioTs.h"
#include "velmo/kvo/lipsync/LipSyncSerializer.h"
#include "velmo/kvo/lipsync/SetAudioDelay.h"
#include "velmo/utilities/xmlserializer/XmlResult.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

using akvo::fuzz::require;
using velmo::utilities::xmlserializer::XmlResult;
namespace xs = velmo::utilities::xmlserializer;

template <typename Answer>
XmlResult readAnswer(const std::string& xml, Answer& answer)
{
    const XmlResult result = velmo::kvo::lipsync::LipSyncXmlSerializer().deserialize(xml, answer);
    const xs::ResultCode code = result.getErrorCode();
    require(code == xs::Success || code == xs::WrongXmlNode || code == xs::ChildNotFound ||
                code == xs::ConversionFailed,
            "only 66, 68, 69 and 71 come out of deserialize", result.format());
    require(result.isSuccess() || answer.result.format() == "Unknown error (Code 1001)",
            "a failed read keeps the preset server result", answer.result.format());
    return result;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string xml(reinterpret_cast<const char*>(data), size);
    velmo::kvo::lipsync::SetAudioDelay::Answer setAnswer;
    readAnswer(xml, setAnswer);

    velmo::kvo::lipsync::GetAudioTs::Answer answer;
    answer.timestamps = {1, 2, 3, 4};
    const XmlResult result = readAnswer(xml, answer);
    const std::string message = result.getMainMessage();
    // The timestamps are read before the Result element, so only a failure there may follow their storing.
    const std::string suffix = " (While desserializing \"GetAudioTs_Answer\")";
    const bool atResult =
        message.find("(While desserializing \"Result\")" + suffix) != std::string::npos ||
        message == "No element node \"Result\" found in node \"GetAudioTs_Answer\"" + suffix;
    const auto& t = answer.timestamps;
    require(result.isSuccess() || atResult || (t.tCap == 1 && t.tRdr == 2 && t.tRcv == 3 && t.jbmDepth == 4),
            "timestamps are stored only once all four were read", message);
    return 0;
}
