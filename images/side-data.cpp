#include "images/side-data.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

// Each scan of a JPEG goes over all of its pixels and may take no more than ten bytes. Encoders make about ten, those
// that try for the last byte some sixty.
constexpr int kMostScans = 100;

// Decoders unpack a text up to some megabytes. Who writes them writes one or two.
constexpr std::size_t kMostPackedTexts = 16;

// A file may be cut into millions of parts without pixels. Photographs of the size that can be decoded have some
// thousands.
constexpr int kMostParts = 100000;

/// The bytes of a file one by one.
class TBytes {
 public:
  TBytes(const TReadAt& theReadAt, std::int64_t begin) : readAt(theReadAt), blockBegin(begin) {}

  /// The next byte, or -1 behind the last.
  int Next() {
    if (next == count) {
      Seek(GetPosition());
      count = readAt(blockBegin, block.data(), block.size());
    }
    return next < count ? block[next++] : -1;
  }

  /// Of so many bytes, the first one being the most significant. -1 if the file has fewer.
  std::int64_t NextNumber(int size) {
    std::int64_t number = 0;
    for (int i = 0; i < size; ++i) {
      const int byte = Next();
      if (byte < 0) {
        return -1;
      }
      number = number << 8 | byte;
    }
    return number;
  }

  std::int64_t GetPosition() const { return blockBegin + static_cast<std::int64_t>(next); }

  void Seek(std::int64_t position) {
    const std::int64_t inBlock = position - blockBegin;
    if (inBlock >= 0 && inBlock < static_cast<std::int64_t>(count)) {
      next = static_cast<std::size_t>(inBlock);
      return;
    }
    blockBegin = position;
    next = 0;
    count = 0;
  }

 private:
  const TReadAt& readAt;
  std::array<unsigned char, 4096> block;
  std::int64_t blockBegin;
  std::size_t next = 0;
  std::size_t count = 0;
};

enum TMarker : int {
  kFirstFrameHeader = 0xC0,
  kHuffmanTables = 0xC4,
  kArithmeticTables = 0xCC,
  kReservedFrame = 0xC8,
  kFirstRestart = 0xD0,
  kStartOfImage = 0xD8,
  kEndOfImage = 0xD9,
  kStartOfScan = 0xDA,
  kFirstApplication = 0xE0,
  kAdobe = 0xEE,
  kLastApplication = 0xEF,
};

/// The second byte of the next marker, wherever it stands: decoders skip what lies between, as they do with coded
/// pixels and the restarts among them. -1 at the end of the file.
int NextMarker(TBytes& bytes) {
  for (int byte = bytes.Next(); byte >= 0; byte = bytes.Next()) {
    // A marker is FF and a second byte, with any number of FF as filling between (T.81, B.1.1.2). FF 00 is a coded byte
    // of FF (B.1.1.5).
    if (byte != 0xFF) {
      continue;
    }
    while (byte == 0xFF) {
      byte = bytes.Next();
    }
    if (byte != 0 && (byte < kFirstRestart || byte >= kStartOfImage)) {
      return byte;
    }
  }
  return -1;
}

bool IsFrameHeader(int marker) {
  return marker >= kFirstFrameHeader && marker < kFirstRestart && marker != kHuffmanTables &&
         marker != kArithmeticTables && marker != kReservedFrame;
}

bool IsProgressive(int frameHeader) {
  // SOF2, SOF6, SOF10 and SOF14 (T.81, table B.1).
  return (frameHeader & 3) == 2;
}

/// JFIF and Adobe say what the numbers of a pixel mean. `bytes` stands behind the length of the part.
bool DescribesPixels(int marker, TBytes& bytes) {
  constexpr std::int64_t kJfif = 'J' << 24 | 'F' << 16 | 'I' << 8 | 'F';
  return marker == kAdobe || (marker == kFirstApplication && bytes.NextNumber(4) == kJfif);
}

constexpr std::int64_t ChunkName(std::string_view name) {
  return std::int64_t{name[0]} << 24 | name[1] << 16 | name[2] << 8 | name[3];
}

}  // namespace

TSideData FindJpegSideData(const TReadAt& readAt) {
  TSideData found;
  // Behind the marker that starts the image.
  TBytes bytes(readAt, 2);
  std::int64_t components = 0;
  bool isProgressive = false;
  int scans = 0;
  for (int part = 0; part < kMostParts; ++part) {
    const int marker = NextMarker(bytes);
    if (marker < 0 || marker == kEndOfImage) {
      return found;
    }
    if (marker < kFirstFrameHeader) {
      // Stands alone.
      continue;
    }
    const std::int64_t length = bytes.NextNumber(2);
    const std::int64_t begin = bytes.GetPosition();
    if (IsFrameHeader(marker)) {
      isProgressive = IsProgressive(marker);
      // Behind the bits of a sample, the height and the width.
      bytes.Seek(begin + 5);
      components = bytes.Next();
    } else if (marker == kStartOfScan) {
      ++scans;
      // With all components in one scan, there is none behind it.
      if (scans == 1 && !isProgressive && bytes.Next() == components) {
        return found;
      }
      if (scans > kMostScans) {
        break;
      }
    } else if (marker >= kFirstApplication && marker <= kLastApplication && !DescribesPixels(marker, bytes)) {
      found.keys.push_back(begin);
    }
    bytes.Seek(begin + std::max<std::int64_t>(length - 2, 0));
  }
  found.isBounded = false;
  return found;
}

TSideData FindPngSideData(const TReadAt& readAt) {
  TSideData found;
  // Behind the signature.
  TBytes bytes(readAt, 8);
  for (int part = 0; part < kMostParts; ++part) {
    const std::int64_t length = bytes.NextNumber(4);
    const std::int64_t name = bytes.NextNumber(4);
    if (length < 0 || name < 0 || name == ChunkName("IEND")) {
      found.isBounded = found.keys.size() <= kMostPackedTexts;
      return found;
    }
    const std::int64_t begin = bytes.GetPosition();
    // Packed texts. The checksum is looked at before they are unpacked.
    if (length > 0 && (name == ChunkName("zTXt") || name == ChunkName("iTXt"))) {
      found.keys.push_back(begin);
    }
    // Behind the data and the four bytes of their checksum.
    bytes.Seek(begin + length + 4);
  }
  found.isBounded = false;
  return found;
}

TSideData FindWebPSideData(const TReadAt& readAt) {
  TSideData found;
  // Behind "RIFF", the size of the file and "WEBP".
  TBytes bytes(readAt, 12);
  for (int part = 0; part < kMostParts; ++part) {
    const std::int64_t name = bytes.NextNumber(4);
    std::int64_t length = 0;
    for (int i = 0; i < 4; ++i) {
      // Behind the end of the file the -1 makes the length negative, whatever it is combined with.
      length |= bytes.NextNumber(1) << (8 * i);
    }
    if (name < 0 || length < 0) {
      return found;
    }
    const std::int64_t begin = bytes.GetPosition();
    if (length > 0 && name == ChunkName("EXIF")) {
      found.keys.push_back(begin);
    }
    // An odd length is filled up. The padding byte is not part of the length.
    bytes.Seek(begin + length + length % 2);
  }
  found.isBounded = false;
  return found;
}
