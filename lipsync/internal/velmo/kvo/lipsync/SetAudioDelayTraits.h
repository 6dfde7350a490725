#ifndef VELMO_KVO_LIPSYNC_SETAUDIODELAYTRAITS_H
#define VELMO_KVO_LIPSYNC_SETAUDIODELAYTRAITS_H

#include "velmo/kvo/cmdfrmwrk/ResultAnswerSerializer.h"
#include "velmo/kvo/lipsync/SetAudioDelay.h"
#include "velmo/utilities/serializer/Convertor.h"
#include "velmo/utilities/serializer/ResultAnswerTrait.h"
#include "velmo/utilities/serializer/TextTrait.h"
#include "velmo/utilities/xmlserializer/XmlResult.h"
#include "velmo/utilities/xmlserializer/XmlTraitSerializer.h"

#include <tinyxml.h>

namespace velmo {
namespace kvo {
namespace lipsync {

inline constexpr char setAudioDelayAnswerTag[] = "SetAudioDelay_Answer";

struct SerializationTraitSetAudioDelayRequest
{
    using Record = SetAudioDelay::Request;
    using DelayTrait =
        velmo::utilities::serializer::TextTrait<unsigned long long,
                                                velmo::utilities::serializer::Convertor<unsigned long long>>;
    static constexpr const char* tag = "SetAudioDelay_Request";

    // The delay is the element's text.
    static velmo::utilities::xmlserializer::XmlResult writePayload(const Record& request,
                                                                   TiXmlNode*& payload);
};

struct SerializationTraitSetAudioDelayAnswer
    : velmo::utilities::serializer::ResultAnswerTrait<setAudioDelayAnswerTag>
{
    using Record = SetAudioDelay::Answer;
};

} // namespace lipsync
} // namespace kvo

namespace utilities {
namespace xmlserializer {

template <>
struct XmlTraitSerializer<kvo::lipsync::SerializationTraitSetAudioDelayAnswer>
    : XmlTraitSerializer<serializer::ResultAnswerTrait<kvo::lipsync::setAudioDelayAnswerTag>>
{
};

} // namespace xmlserializer
} // namespace utilities
} // namespace velmo

#endif
