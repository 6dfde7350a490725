#include "velmo/kvo/lipsync/GetAudioTsTraits.h"

#include "velmo/kvo/cmdfrmwrk/ResultAnswerSerializer.h"
#include "velmo/kvo/lipsync/LipSyncNtpTimestampsTrait.h"
#include "velmo/utilities/xmlserializer/ChildReader.h"
#include "velmo/utilities/xmlserializer/RecordFrame.h"

namespace velmo {
namespace kvo {
namespace lipsync {

velmo::utilities::xmlserializer::XmlResult
SerializationTraitGetAudioTsRequest::writePayload(const Record&, TiXmlNode*& payload)
{
    payload = nullptr;
    return velmo::utilities::xmlserializer::XmlResult::success();
}

} // namespace lipsync
} // namespace kvo

namespace utilities {
namespace xmlserializer {

XmlResult XmlTraitSerializer<kvo::lipsync::SerializationTraitGetAudioTsAnswer>::fromXml(
    const TiXmlNode& element, kvo::lipsync::GetAudioTs::Answer& answer, const char* expectedName)
{
    return readFramed(element, expectedName, [&] {
        using Trait = kvo::lipsync::LipSyncNtpTimestampsTrait;
        XmlResult result = readChild<Trait>(element, Trait::Record(), answer.timestamps);
        if (result.isSuccess()) {
            result = kvo::cmdfrmwrk::readAnswerResult(element, answer);
        }
        return result;
    });
}

} // namespace xmlserializer
} // namespace utilities
} // namespace velmo
