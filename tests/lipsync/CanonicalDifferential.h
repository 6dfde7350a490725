#ifndef AKVO_TESTS_LIPSYNC_CANONICALDIFFERENTIAL_H
#define AKVO_TESTS_LIPSYNC_CANONICALDIFFERENTIAL_H

#include "velmo/kvo/cmdfrmwrk/Peer.h"
#include "velmo/kvo/lipsync/GetAudioTs.h"
#include "velmo/kvo/lipsync/LipSyncSerializer.h"
#include "velmo/kvo/lipsync/SetAudioDelay.h"

#include <string>

namespace akvo {
namespace test {

using velmo::kvo::cmdfrmwrk::Command;
using velmo::kvo::cmdfrmwrk::Peer;
using velmo::kvo::lipsync::GetAudioTs;
using velmo::kvo::lipsync::LipSyncXmlSerializer;
using velmo::kvo::lipsync::SetAudioDelay;

// The three ways the engine's printer writes an empty message.
const char* const emptyMessageForms[] = {"<Message/>", "<Message />", "<Message></Message>"};

// A state no answer produces, so that any field an answer writes, or fails
// to write, shows.
inline void presetServerResult(Command::Answer& answer)
{
    answer.result = Command::Answer().result;
    answer.result._errorCode = Command::BadState;
    answer.result._mainMessage = "previous";
    answer.result._trailingMessage = " trailing";
    answer.result._nestedResults = "nested";
}

inline void preset(GetAudioTs::Answer& answer)
{
    presetServerResult(answer);
    answer.timestamps = {11, 12, 13, 14};
}

inline void preset(SetAudioDelay::Answer& answer)
{
    presetServerResult(answer);
}

inline std::string fieldsOf(const Command::Answer& answer)
{
    const auto& r = answer.result;
    return std::to_string(r._errorCode) + "|" + r._mainMessage + "|" + r._trailingMessage + "|" +
           r._nestedResults;
}

inline std::string fieldsOf(const GetAudioTs::Answer& answer)
{
    const auto& t = answer.timestamps;
    return fieldsOf(static_cast<const Command::Answer&>(answer)) + "|" + std::to_string(t.tCap) + "|" +
           std::to_string(t.tRdr) + "|" + std::to_string(t.tRcv) + "|" + std::to_string(t.jbmDepth);
}

struct CanonicalRead
{
    bool accepted;
    // Empty when the canonical reader and the general path agree.
    std::string disagreement;
};

// Reads `xml` both ways, from the same previous state: the canonical reader
// must either decline having written nothing, or leave every field of the
// answer as the general path does, for an exchange the general path also
// reports as the Peer's success, texts and all.
template <class Answer>
CanonicalRead readBothWays(const std::string& xml)
{
    Answer fast;
    preset(fast);
    const std::string before = fieldsOf(fast);
    if (!LipSyncXmlSerializer::readCanonical(xml, fast)) {
        const std::string after = fieldsOf(fast);
        return {false, after == before ? "" : "declined, but wrote " + after};
    }
    Answer general;
    preset(general);
    const Peer::PeerResult exchange(LipSyncXmlSerializer().deserialize(xml, general), Peer::SerializerError,
                                    Peer::Success);
    const Peer::PeerResult& success = Peer::PeerResult::success();
    if (exchange._errorCode != success._errorCode || exchange._mainMessage != success._mainMessage ||
        exchange._trailingMessage != success._trailingMessage ||
        exchange._nestedResults != success._nestedResults) {
        return {true, "accepted, but the general path reports " + exchange.format()};
    }
    if (fieldsOf(fast) != fieldsOf(general)) {
        return {true, "read " + fieldsOf(fast) + " where the general path reads " + fieldsOf(general)};
    }
    return {true, ""};
}

} // namespace test
} // namespace akvo

#endif
