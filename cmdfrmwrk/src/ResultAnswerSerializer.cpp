#include "velmo/kvo/cmdfrmwrk/ResultAnswerSerializer.h"

#include "ResultTrait.h"
#include "velmo/utilities/xmlserializer/ChildReader.h"

namespace velmo {
namespace kvo {
namespace cmdfrmwrk {

using velmo::utilities::xmlserializer::XmlResult;

XmlResult readAnswerResult(const TiXmlNode& element, Command::Answer& answer)
{
    return velmo::utilities::xmlserializer::readChild<CommandResultTrait>(
        element, CommandResultTrait::Record(Command::UnknownError), answer.result);
}

} // namespace cmdfrmwrk
} // namespace kvo
} // namespace velmo
