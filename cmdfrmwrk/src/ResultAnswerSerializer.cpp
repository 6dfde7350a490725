#include "velmo/kvo/cmdfrmwrk/ResultAnswerSerializer.h"

#include "ResultTrait.h"
#include "velmo/utilities/xmlserializer/ChildAccess.h"

namespace velmo {
namespace kvo {
namespace cmdfrmwrk {

using velmo::utilities::xmlserializer::XmlResult;
using velmo::utilities::xmlserializer::XmlTraitSerializer;
using velmo::utilities::xmlserializer::detail::ChildAccess;

XmlResult readAnswerResult(const TiXmlNode& element, Command::Answer& answer)
{
    const TiXmlNode* child = nullptr;
    XmlResult result = ChildAccess<CommandResultTrait>::get(element, child);
    if (result.isFailure()) {
        return result;
    }
    CommandResultTrait::Record serverResult(Command::UnknownError);
    result = XmlTraitSerializer<CommandResultTrait>::fromXml(*child, serverResult, CommandResultTrait::tag);
    if (result.isSuccess()) {
        answer.result = serverResult;
    }
    return result;
}

} // namespace cmdfrmwrk
} // namespace kvo
} // namespace velmo
