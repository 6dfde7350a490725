// Answers built in the layout the engine prints, from values the fuzzer
// chooses (including values that do not fit, signs, spaces and markup in the
// message), then changed in a few bytes: the canonical reader must decline
// without writing anything, or read exactly what the general path reads.
#include "CanonicalDifferential.h"
#include "Require.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

using akvo::fuzz::require;

// A number as the engine writes it most of the time, or any short text.
std::string numberText(FuzzedDataProvider& data, bool isSigned)
{
    switch (data.ConsumeIntegralInRange(0, 3)) {
    case 0:
        return data.ConsumeRandomLengthString(24);
    case 1:
        return std::string(data.ConsumeIntegralInRange(0, 3), '0') +
               (isSigned ? std::to_string(data.ConsumeIntegral<int64_t>())
                         : std::to_string(data.ConsumeIntegral<uint64_t>()));
    default:
        return isSigned ? std::to_string(data.ConsumeIntegral<int32_t>())
                        : std::to_string(data.ConsumeIntegral<uint64_t>());
    }
}

std::string messageElement(FuzzedDataProvider& data)
{
    const int form = data.ConsumeIntegralInRange(0, 4);
    return form < 3 ? akvo::test::emptyMessageForms[form]
                    : "<Message>" + data.ConsumeRandomLengthString(32) + "</Message>";
}

std::string answerText(FuzzedDataProvider& data, bool get)
{
    std::string xml = "<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\"><";
    xml += get ? "GetAudioTs_Answer>" : "SetAudioDelay_Answer>";
    xml +=
        "<Result><ErrorCode>" + numberText(data, true) + "</ErrorCode>" + messageElement(data) + "</Result>";
    if (get) {
        const char* const names[] = {"capture_timestamp", "rendering_timestamp", "receiving_timestamp",
                                     "jitter_buffer_depth"};
        xml += "<LipSyncNtpTimestamps>";
        for (const char* name : names) {
            xml += std::string("<") + name + ">" + numberText(data, false) + "</" + name + ">";
        }
        xml += "</LipSyncNtpTimestamps>";
    }
    xml += get ? "</GetAudioTs_Answer></AKVO>" : "</SetAudioDelay_Answer></AKVO>";
    return xml;
}

// A few single-byte replacements, insertions and deletions anywhere.
void changeBytes(FuzzedDataProvider& data, std::string& xml)
{
    for (int changes = data.ConsumeIntegralInRange(0, 3); changes > 0 && !xml.empty(); --changes) {
        const size_t at = data.ConsumeIntegralInRange<size_t>(0, xml.size() - 1);
        const char byte = data.ConsumeIntegral<char>();
        switch (data.ConsumeIntegralInRange(0, 2)) {
        case 0:
            xml[at] = byte;
            break;
        case 1:
            xml.insert(at, 1, byte);
            break;
        default:
            xml.erase(at, 1);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    FuzzedDataProvider data(bytes, size);
    const bool get = data.ConsumeBool();
    std::string xml = answerText(data, get);
    changeBytes(data, xml);
    const akvo::test::CanonicalRead read =
        get ? akvo::test::readBothWays<akvo::test::GetAudioTs::Answer>(xml)
            : akvo::test::readBothWays<akvo::test::SetAudioDelay::Answer>(xml);
    require(read.disagreement.empty(), "the canonical reader reads as the general path does",
            read.disagreement + "\n  for " + xml);
    return 0;
}
