#ifndef VELMO_KVO_LIPSYNC_LIPSYNCSERIALIZER_H
#define VELMO_KVO_LIPSYNC_LIPSYNCSERIALIZER_H

#include "velmo/kvo/cmdfrmwrk/XmlSerializer.h"
#include "velmo/kvo/lipsync/GetAudioTs.h"
#include "velmo/kvo/lipsync/GetAudioTsTraits.h"
#include "velmo/kvo/lipsync/SetAudioDelay.h"
#include "velmo/kvo/lipsync/SetAudioDelayTraits.h"
#include "velmo/utilities/TypeList.h"
#include "velmo/utilities/xmlserializer/XmlResult.h"

#include <string>

namespace velmo {
namespace kvo {
namespace lipsync {

using LipSyncCommandList =
    velmo::utilities::TypeListOf<SerializationTraitGetAudioTsRequest, SerializationTraitGetAudioTsAnswer,
                                 SerializationTraitSetAudioDelayRequest,
                                 SerializationTraitSetAudioDelayAnswer>;

// The lip-sync commands' envelope. Its two requests are printed by the
// generic serializer once per process and reused; answers in the exact form
// the engine prints are read without building a document (see
// CanonicalAnswer.cpp for why that reads them as the general path does),
// and every other answer takes the general path.
class LipSyncXmlSerializer : public cmdfrmwrk::XmlSerializer<LipSyncCommandList>
{
public:
    using Generic = cmdfrmwrk::XmlSerializer<LipSyncCommandList>;

    using Generic::readCanonical;
    using Generic::serialize;

    velmo::utilities::xmlserializer::XmlResult serialize(const GetAudioTs::Request& request,
                                                         std::string& xml) const;
    velmo::utilities::xmlserializer::XmlResult serialize(const SetAudioDelay::Request& request,
                                                         std::string& xml) const;

    static bool readCanonical(const std::string& xml, GetAudioTs::Answer& answer);
    static bool readCanonical(const std::string& xml, SetAudioDelay::Answer& answer);
};

} // namespace lipsync
} // namespace kvo
} // namespace velmo

#endif
