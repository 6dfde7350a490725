#ifndef VELMO_KVO_CMDFRMWRK_RESULTANSWERSERIALIZER_H
#define VELMO_KVO_CMDFRMWRK_RESULTANSWERSERIALIZER_H

#include "velmo/kvo/cmdfrmwrk/Command.h"
#include "velmo/utilities/serializer/ResultAnswerTrait.h"
#include "velmo/utilities/xmlserializer/RecordFrame.h"
#include "velmo/utilities/xmlserializer/XmlResult.h"
#include "velmo/utilities/xmlserializer/XmlTraitSerializer.h"

#include <tinyxml.h>

namespace velmo {
namespace kvo {
namespace cmdfrmwrk {

// Reads the "Result" child of an answer element into `answer.result`, which
// is only replaced when the whole element could be read.
velmo::utilities::xmlserializer::XmlResult readAnswerResult(const TiXmlNode& element,
                                                            Command::Answer& answer);

} // namespace cmdfrmwrk
} // namespace kvo

namespace utilities {
namespace xmlserializer {

template <const char* tagVariable>
struct XmlTraitSerializer<serializer::ResultAnswerTrait<tagVariable>>
{
    static XmlResult fromXml(const TiXmlNode& element, kvo::cmdfrmwrk::Command::Answer& answer,
                             const char* expectedName)
    {
        return readFramed(element, expectedName,
                          [&] { return kvo::cmdfrmwrk::readAnswerResult(element, answer); });
    }
};

} // namespace xmlserializer
} // namespace utilities
} // namespace velmo

#endif
