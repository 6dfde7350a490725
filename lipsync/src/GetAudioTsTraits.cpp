#include "velmo/kvo/lipsync/GetAudioTsTraits.h"

#include "velmo/kvo/cmdfrmwrk/ResultAnswerSerializer.h"
#include "velmo/kvo/lipsync/LipSyncNtpTimestampsTrait.h"
#include "velmo/utilities/xmlserializer/ChildAccess.h"
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

namespace {

XmlResult readTimestamps(const TiXmlNode& element, kvo::lipsync::GetAudioTs::Answer& answer)
{
    using Trait = kvo::lipsync::LipSyncNtpTimestampsTrait;
    const TiXmlNode* child = nullptr;
    XmlResult result = detail::ChildAccess<Trait>::get(element, child);
    if (result.isFailure()) {
        return result;
    }
    Trait::Record timestamps = Trait::Record();
    result = XmlTraitSerializer<Trait>::fromXml(*child, timestamps, Trait::tag);
    if (result.isSuccess()) {
        answer.timestamps = timestamps;
    }
    return result;
}

} // namespace

XmlResult XmlTraitSerializer<kvo::lipsync::SerializationTraitGetAudioTsAnswer>::fromXml(
    const TiXmlNode& element, kvo::lipsync::GetAudioTs::Answer& answer, const char* expectedName)
{
    return detail::readFramed(element, expectedName, [&] {
        XmlResult result = readTimestamps(element, answer);
        if (result.isSuccess()) {
            result = kvo::cmdfrmwrk::readAnswerResult(element, answer);
        }
        return result;
    });
}

} // namespace xmlserializer
} // namespace utilities
} // namespace velmo
