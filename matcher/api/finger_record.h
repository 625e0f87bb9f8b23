#pragma once

// Reads ISO/IEC 19794-2:2005 finger minutiae records. Multi-byte fields are big-endian.
//
//   offset  size  field                      use
//   0       4     "FMR" and a zero byte      checked
//   4       4     " 20" and a zero byte      checked
//   8       4     record length              equals the number of bytes given
//   12      2     capture equipment          -
//   14      2     image width, pixels        kept
//   16      2     image height, pixels       kept
//   18      2     horizontal resolution      -
//   20      2     vertical resolution        first byte: view count of the finger position scan
//   22      1     number of finger views     view count of the parse
//   23      1     reserved                   -
//   24            finger views, one after another:
//     0     1     finger position code       kept by the finger position scan
//     1     1     view number, impression    -
//     2     1     finger quality             -
//     3     1     number of minutiae, n      the first 128 are kept, the rest read past
//     4     6n    minutiae
//     4+6n  2     extended data length, e    -
//     6+6n  e     extended data              -
//
// A minutia is b0..b5: type in the upper 2 bits of b0, x in the other 14 bits of b0 b1, y in the
// lower 14 bits of b2 b3, angle byte b4, quality b5 (not kept).
//
// No function here reads outside buffer[0..length), whatever the bytes say; malformed records are
// a false result, never an exception.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "matcher/api/template_loading.h"
#include "matcher/features/finger_model.h"

namespace orl::matcher {

// The least and the greatest length of a record that can be loaded, in bytes.
inline constexpr std::size_t kRecordHeaderBytes = 24;
inline constexpr std::size_t kMaxRecordBytes = 6200;

// Reads the record in buffer[0..length), keeps its image size in `loaded` as soon as the header is
// sound, and, once all views are read, appends the features of every view to loaded.fingers.
// Bytes after the last view are ignored. Returns false when the record is malformed, when it has a
// view but an image of 0 x 0 pixels, or when a view has fewer than 2 minutiae; `loaded` then holds
// what had been read. A record without views is sound and appends nothing.
// Throws: std::runtime_error "not triangulation" for a view whose minutiae admit no triangle,
// std::bad_alloc. Safe from several threads, each with its own `loaded`.
template <FeatureForm kForm>
bool parseFingerRecord(BasicLoadedTemplate<kForm>& loaded,
                       const std::uint8_t* buffer,
                       std::size_t length);

extern template bool parseFingerRecord(LoadedTemplate&, const std::uint8_t*, std::size_t);
extern template bool parseFingerRecord(FullLoadedTemplate&, const std::uint8_t*, std::size_t);

// Reads the finger position codes of the record's views into `fingerPositions`, cleared first. The
// scan ends with success when as many views as byte 20 tells are read or when fewer than 4 bytes
// remain. Returns false, with no position, when the header is not that of a record of this length
// or when a view runs past the end.
// Throws: std::bad_alloc. Safe from several threads, each with its own `fingerPositions`.
bool scanFingerPositions(const std::uint8_t* buffer,
                         std::size_t length,
                         std::vector<std::uint8_t>& fingerPositions);

}  // namespace orl::matcher
