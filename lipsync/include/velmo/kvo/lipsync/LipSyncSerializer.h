#ifndef VELMO_KVO_LIPSYNC_LIPSYNCSERIALIZER_H
#define VELMO_KVO_LIPSYNC_LIPSYNCSERIALIZER_H

#include "velmo/kvo/cmdfrmwrk/XmlSerializer.h"
#include "velmo/kvo/lipsync/GetAudioTsTraits.h"
#include "velmo/kvo/lipsync/SetAudioDelayTraits.h"
#include "velmo/utilities/TypeList.h"

namespace velmo {
namespace kvo {
namespace lipsync {

typedef velmo::utilities::TypeList<
    SerializationTraitGetAudioTsRequest,
    velmo::utilities::TypeList<
        SerializationTraitGetAudioTsAnswer,
        velmo::utilities::TypeList<SerializationTraitSetAudioDelayRequest,
                                   velmo::utilities::TypeList<SerializationTraitSetAudioDelayAnswer,
                                                              velmo::utilities::detail::TypeNull>>>>
    LipSyncCommandList;

typedef cmdfrmwrk::XmlSerializer<LipSyncCommandList> LipSyncXmlSerializer;

} // namespace lipsync
} // namespace kvo
} // namespace velmo

#endif
