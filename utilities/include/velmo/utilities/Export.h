#ifndef VELMO_UTILITIES_EXPORT_H
#define VELMO_UTILITIES_EXPORT_H

// The library is built with hidden visibility; what applications may use is
// marked with VELMO_EXPORT.
#define VELMO_EXPORT __attribute__((visibility("default")))

#endif
