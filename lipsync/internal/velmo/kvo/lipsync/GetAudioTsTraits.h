#ifndef VELMO_KVO_LIPSYNC_GETAUDIOTSTRAITS_H
#define VELMO_KVO_LIPSYNC_GETAUDIOTSTRAITS_H

#include "velmo/kvo/lipsync/GetAudioTs.h"
#include "velmo/utilities/xmlserializer/XmlResult.h"
#include "velmo/utilities/xmlserializer/XmlTraitSerializer.h"

#include <tinyxml.h>

namespace velmo {
namespace kvo {
namespace lipsync {

struct SerializationTraitGetAudioTsRequest
{
    using Record = GetAudioTs::Request;
    static constexpr const char* tag = "GetAudioTs_Request";

    // The request is the bare element.
    static velmo::utilities::xmlserializer::XmlResult writePayload(const Record& request,
                                                                   TiXmlNode*& payload);
};

struct SerializationTraitGetAudioTsAnswer
{
    using Record = GetAudioTs::Answer;
    static constexpr const char* tag = "GetAudioTs_Answer";
};

} // namespace lipsync
} // namespace kvo

namespace utilities {
namespace xmlserializer {

// The timestamps are read before the server result and stored on their own,
// so they survive a "Result" element that then fails.
template <>
struct XmlTraitSerializer<kvo::lipsync::SerializationTraitGetAudioTsAnswer>
{
    static XmlResult fromXml(const TiXmlNode& element, kvo::lipsync::GetAudioTs::Answer& answer,
                             const char* expectedName);
};

} // namespace xmlserializer
} // namespace utilities
} // namespace velmo

#endif
