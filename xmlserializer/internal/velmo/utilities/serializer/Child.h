#ifndef VELMO_UTILITIES_SERIALIZER_CHILD_H
#define VELMO_UTILITIES_SERIALIZER_CHILD_H

namespace velmo {
namespace utilities {
namespace serializer {

// One member of a record, stored as a child element described by
// `ChildTrait` and reached through the record's accessors.
template <class ChildTrait, class Getter, Getter getter, class Setter, Setter setter>
struct Child
{
    using Trait = ChildTrait;
    using ValueType = typename ChildTrait::ValueType;
    static constexpr Getter get = getter;
    static constexpr Setter set = setter;
};

} // namespace serializer
} // namespace utilities
} // namespace velmo

#endif
