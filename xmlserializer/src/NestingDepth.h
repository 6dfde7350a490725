#ifndef VELMO_UTILITIES_XMLSERIALIZER_NESTINGDEPTH_H
#define VELMO_UTILITIES_XMLSERIALIZER_NESTINGDEPTH_H

#include <cstddef>
#include <string>

namespace velmo {
namespace utilities {
namespace xmlserializer {
namespace detail {

// Whether the elements of `xml` nest more than `limit` deep, told by one
// forward pass over the bytes (up to the first zero byte, where the parser
// stops too), without recursion and without building anything. Comments,
// CDATA sections, declarations and quoted attribute values are passed over,
// so markup inside them does not count; an element closed by "/>" does not
// open a level.
bool nestsDeeperThan(const std::string& xml, std::size_t limit);

} // namespace detail
} // namespace xmlserializer
} // namespace utilities
} // namespace velmo

#endif
