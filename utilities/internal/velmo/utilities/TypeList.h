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
    using head = Head;
    using tail = Tail;
};

namespace detail {
template <class... Types>
struct NestedTypeList;

template <>
struct NestedTypeList<>
{
    using type = TypeNull;
};

template <class Head, class... Tail>
struct NestedTypeList<Head, Tail...>
{
    using type = TypeList<Head, typename NestedTypeList<Tail...>::type>;
};
} // namespace detail

// TypeListOf<A, B, C> is TypeList<A, TypeList<B, TypeList<C, TypeNull>>>,
// written flat. TypeListOf<> is the end marker itself, which is how the
// layers above name the end of a list.
template <class... Types>
using TypeListOf = typename detail::NestedTypeList<Types...>::type;

} // namespace utilities
} // namespace velmo

#endif
