#ifndef VELMO_KVO_CMDFRMWRK_XMLSERIALIZER_H
#define VELMO_KVO_CMDFRMWRK_XMLSERIALIZER_H

#include "velmo/utilities/xmlserializer/XmlSerializer.h"

#include <string>

namespace velmo {
namespace kvo {
namespace cmdfrmwrk {

// The envelope spoken with the audio engine: root "AKVO", version 0.1.0.
template <class List>
class XmlSerializer : public velmo::utilities::xmlserializer::XmlSerializer<List>
{
public:
    static constexpr unsigned int versionMajor = 0;
    static constexpr unsigned int versionMinor = 1;
    static constexpr unsigned int versionPatch = 0;

    XmlSerializer() : velmo::utilities::xmlserializer::XmlSerializer<List>("AKVO", version()) {}

    // A command set may read the answers in the one form its server prints
    // without parsing a document (returning true having filled `answer` as
    // deserialize would); by default every answer takes the general path.
    template <class Answer>
    static bool readCanonical(const std::string&, Answer&)
    {
        return false;
    }

private:
    // A fresh serializer is built for every request and every answer, so the
    // text is put together without a string stream, whose buffer would cost
    // an allocation each time.
    static std::string version()
    {
        return std::to_string(versionMajor) + "." + std::to_string(versionMinor) + "." +
               std::to_string(versionPatch);
    }
};

} // namespace cmdfrmwrk
} // namespace kvo
} // namespace velmo

#endif
