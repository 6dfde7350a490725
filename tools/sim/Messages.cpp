#include "Messages.h"

#include <tinyxml.h>

namespace velmo {
namespace kvo {
namespace sim {

const char* const protocolVersion = "0.1.0";
const char* const garbageText = "%%% engine garbage: this is not an XML document %%%";

namespace {

const char* const rootTag = "AKVO";

// Accepts what the library's reader accepts: decimal, or hexadecimal after a lower-case "0x".
bool parseNumber(const std::string& text, std::uint64_t& value)
{
    bool hex = text.size() > 2 && text.compare(0, 2, "0x") == 0;
    std::size_t first = hex ? 2 : 0;
    unsigned base = hex ? 16 : 10;
    if (text.size() == first) {
        return false;
    }
    value = 0;
    for (std::size_t i = first; i < text.size(); ++i) {
        char c = text[i];
        unsigned digit = 0;
        if (c >= '0' && c <= '9') {
            digit = static_cast<unsigned>(c - '0');
        } else if (hex && c >= 'a' && c <= 'f') {
            digit = static_cast<unsigned>(c - 'a' + 10);
        } else if (hex && c >= 'A' && c <= 'F') {
            digit = static_cast<unsigned>(c - 'A' + 10);
        } else {
            return false;
        }
        if (value > (UINT64_MAX - digit) / base) {
            return false;
        }
        value = value * base + digit;
    }
    return true;
}

// Escapes what would break the document or its framing (a line feed could form the end marker).
std::string escaped(const std::string& text)
{
    std::string out;
    for (char c : text) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        case '\n':
            out += "&#10;";
            break;
        case '\r':
            out += "&#13;";
            break;
        default:
            out += c;
        }
    }
    return out;
}

std::string element(const char* tag, const std::string& text)
{
    return std::string("<") + tag + ">" + text + "</" + tag + ">";
}

} // namespace

const char* requestTag(Command command)
{
    return command == Command::GetAudioTs ? "GetAudioTs_Request" : "SetAudioDelay_Request";
}

const char* answerTag(Command command)
{
    return command == Command::GetAudioTs ? "GetAudioTs_Answer" : "SetAudioDelay_Answer";
}

bool parseRequest(const std::string& document, Request& request, std::string& reason)
{
    if (document.find('\0') != std::string::npos) {
        reason = "zero byte in the request";
        return false;
    }
    // TinyXML steps a whole UTF-8 character, up to four bytes, even past the
    // end of the text; zero bytes after the request keep it inside.
    std::string padded(document);
    padded.append(4, '\0');
    TiXmlDocument xml;
    xml.Parse(padded.c_str());
    if (xml.Error()) {
        reason = std::string("not XML: ") + xml.ErrorDesc();
        return false;
    }
    const TiXmlElement* root = xml.FirstChildElement();
    if (root == nullptr || root->ValueStr() != rootTag || root->NextSiblingElement() != nullptr) {
        reason = "the document is not one AKVO element";
        return false;
    }
    const char* version = root->Attribute("version");
    if (version == nullptr || std::string(version) != protocolVersion) {
        reason = std::string("envelope version '") + (version == nullptr ? "" : version) + "', not " +
                 protocolVersion;
        return false;
    }
    const TiXmlElement* command = root->FirstChildElement();
    if (command == nullptr) {
        reason = "no command";
        return false;
    }
    if (command->ValueStr() == requestTag(Command::GetAudioTs)) {
        request.command = Command::GetAudioTs;
        return true;
    }
    if (command->ValueStr() == requestTag(Command::SetAudioDelay)) {
        const char* delay = command->GetText();
        if (delay == nullptr || !parseNumber(delay, request.delayMs)) {
            reason = std::string("delay '") + (delay == nullptr ? "" : delay) + "' is not a number";
            return false;
        }
        request.command = Command::SetAudioDelay;
        return true;
    }
    reason = "unknown command '" + command->ValueStr() + "'";
    return false;
}

std::string answerDocument(const Reply& reply, const std::string& version)
{
    std::string body = "<Result>" + element("ErrorCode", std::to_string(reply.code));
    // An empty message is written the way the engine writes it for each command.
    if (!reply.message.empty()) {
        body += element("Message", escaped(reply.message));
    } else if (reply.command == Command::GetAudioTs) {
        body += "<Message></Message>";
    } else {
        body += "<Message/>";
    }
    body += "</Result>";
    if (reply.command == Command::GetAudioTs) {
        const Timestamps& t = reply.timestamps;
        body += "<LipSyncNtpTimestamps>" + element("capture_timestamp", std::to_string(t.capture)) +
                element("rendering_timestamp", std::to_string(t.rendering)) +
                element("receiving_timestamp", std::to_string(t.receiving)) +
                element("jitter_buffer_depth", std::to_string(t.jitterBufferDepth)) +
                "</LipSyncNtpTimestamps>";
    }
    return "<?xml version=\"1.0\" ?><AKVO version=\"" + escaped(version) + "\">" +
           element(answerTag(reply.command), body) + "</AKVO>";
}

} // namespace sim
} // namespace kvo
} // namespace velmo
