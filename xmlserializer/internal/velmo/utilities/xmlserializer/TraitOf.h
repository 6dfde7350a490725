#ifndef VELMO_UTILITIES_XMLSERIALIZER_TRAITOF_H
#define VELMO_UTILITIES_XMLSERIALIZER_TRAITOF_H

#include "velmo/utilities/TypeList.h"

#include <type_traits>

namespace velmo {
namespace utilities {
namespace xmlserializer {
namespace detail {

// Picks from `List` the first trait whose `Record` is `Record`. A record
// that no trait of the list describes is a compile-time error.
template <class Record, class List>
struct TraitOf;

template <class Record, class Head, class Tail, bool headMatches>
struct TraitOfStep
{
    using type = typename TraitOf<Record, Tail>::type;
};

template <class Record, class Head, class Tail>
struct TraitOfStep<Record, Head, Tail, true>
{
    using type = Head;
};

template <class Record, class Head, class Tail>
struct TraitOf<Record, TypeList<Head, Tail>>
    : TraitOfStep<Record, Head, Tail, std::is_same<typename Head::Record, Record>::value>
{
};

template <class Record>
struct TraitOf<Record, TypeListOf<>>
{
    static_assert(sizeof(Record) == 0, "no serialization trait in the list describes this record");
};

} // namespace detail
} // namespace xmlserializer
} // namespace utilities
} // namespace velmo

#endif
