#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <boost/function.hpp>

// What a picture's file holds besides its pixels: descriptions, color profiles, smaller versions of the picture. This
// program uses none of it, and decoders take it in all the same: a smaller version may claim any size, and some
// kilobytes of packed text become gigabytes. Here it is found, so that the decoders need not see it.

/// Reads up to `count` bytes of a file at `position`. Returns how many there were.
using TReadAt = boost::function<std::size_t(std::int64_t position, unsigned char* bytes, std::size_t count)>;

struct TSideData {
  /// Positions in the file, ascending. Decoders leave out the parts of the file of which these bytes read as zero: the
  /// names of parts, or data whose checksum does not fit any more.
  std::vector<std::int64_t> keys;
  /// False for a file that could keep its decoder, or another one that sees all of it, busy far longer than its size
  /// and the picture's let expect.
  bool isBounded = true;
};

/// The markers are those of ITU-T T.81, annex B.
TSideData FindJpegSideData(const TReadAt& readAt);

/// The chunks are those of ISO/IEC 15948, section 11.
TSideData FindPngSideData(const TReadAt& readAt);

/// The chunks are those of RFC 9649, section 2.
TSideData FindWebPSideData(const TReadAt& readAt);
