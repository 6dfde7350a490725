#ifndef VELMO_UTILITIES_EXPORT_H
#define VELMO_UTILITIES_EXPORT_H

/**
 * @file
 * The marker of what the shared library exports.
 */

/**
 * Marks a class or function that the shared library exports. The library is
 * built with hidden visibility and a version script, so only what carries
 * this marker, and is listed there, can be linked against.
 */
#define VELMO_EXPORT __attribute__((visibility("default")))

/**
 * Marks a member of an exported class that the shared library keeps to
 * itself: the library's own layers call it, applications cannot link it.
 */
#define VELMO_LOCAL __attribute__((visibility("hidden")))

#endif
