#ifndef VELMO_KVO_LIPSYNC_LIPSYNCNTPTIMESTAMPSTRAIT_H
#define VELMO_KVO_LIPSYNC_LIPSYNCNTPTIMESTAMPSTRAIT_H

#include "velmo/kvo/common/LipSyncNtpTimestamps.h"
#include "velmo/utilities/TypeList.h"
#include "velmo/utilities/serializer/Child.h"
#include "velmo/utilities/serializer/Convertor.h"
#include "velmo/utilities/serializer/NamedTextTrait.h"

namespace velmo {
namespace kvo {
namespace lipsync {

// The timestamps element: four required numbers, read in field order.
struct LipSyncNtpTimestampsTrait
{
    using Record = common::LipSyncNtpTimestamps;

    static constexpr const char* tag = "LipSyncNtpTimestamps";

    struct Tags
    {
        static constexpr char tCap[] = "capture_timestamp";
        static constexpr char tRdr[] = "rendering_timestamp";
        static constexpr char tRcv[] = "receiving_timestamp";
        static constexpr char jbmDepth[] = "jitter_buffer_depth";
    };

    static unsigned long long getTCap(const Record& record) { return record.tCap; }
    static void setTCap(Record& record, const unsigned long long& value) { record.tCap = value; }
    static unsigned long long getTRdr(const Record& record) { return record.tRdr; }
    static void setTRdr(Record& record, const unsigned long long& value) { record.tRdr = value; }
    static unsigned long long getTRcv(const Record& record) { return record.tRcv; }
    static void setTRcv(Record& record, const unsigned long long& value) { record.tRcv = value; }
    static unsigned long long getJbmDepth(const Record& record) { return record.jbmDepth; }
    static void setJbmDepth(Record& record, const unsigned long long& value) { record.jbmDepth = value; }

    using Getter = unsigned long long (*)(const Record&);
    using Setter = void (*)(Record&, const unsigned long long&);

    template <const char* tagVariable, Getter getter, Setter setter>
    using Member =
        velmo::utilities::serializer::Child<velmo::utilities::serializer::NamedTextTrait<
                                                unsigned long long, tagVariable, false,
                                                velmo::utilities::serializer::Convertor<unsigned long long>>,
                                            Getter, getter, Setter, setter>;

    using Children = velmo::utilities::TypeListOf<
        Member<Tags::tCap, &getTCap, &setTCap>, Member<Tags::tRdr, &getTRdr, &setTRdr>,
        Member<Tags::tRcv, &getTRcv, &setTRcv>, Member<Tags::jbmDepth, &getJbmDepth, &setJbmDepth>>;
};

} // namespace lipsync
} // namespace kvo
} // namespace velmo

#endif
