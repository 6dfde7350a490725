#include "velmo/kvo/lipsync/SetAudioDelayTraits.h"

namespace velmo {
namespace kvo {
namespace lipsync {

velmo::utilities::xmlserializer::XmlResult
SerializationTraitSetAudioDelayRequest::writePayload(const Record& request, TiXmlNode*& payload)
{
    return velmo::utilities::xmlserializer::XmlTraitSerializer<DelayTrait>::toXml(request.delayMs, payload);
}

} // namespace lipsync
} // namespace kvo
} // namespace velmo
