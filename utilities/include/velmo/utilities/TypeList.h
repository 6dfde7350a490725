#ifndef VELMO_UTILITIES_TYPELIST_H
#define VELMO_UTILITIES_TYPELIST_H

namespace velmo {
namespace utilities {

namespace detail {
struct TypeNull
{
};
} // namespace detail

template <class Head, class Tail>
struct TypeList
{
    typedef Head head;
    typedef Tail tail;
};

} // namespace utilities
} // namespace velmo

#endif
