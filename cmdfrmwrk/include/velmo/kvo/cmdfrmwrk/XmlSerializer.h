#ifndef VELMO_KVO_CMDFRMWRK_XMLSERIALIZER_H
#define VELMO_KVO_CMDFRMWRK_XMLSERIALIZER_H

#include "velmo/utilities/xmlserializer/XmlSerializer.h"

#include <sstream>
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

private:
    static std::string version()
    {
        std::ostringstream text;
        text << versionMajor << "." << versionMinor << "." << versionPatch;
        return text.str();
    }
};

} // namespace cmdfrmwrk
} // namespace kvo
} // namespace velmo

#endif
