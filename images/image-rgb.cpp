#include "images/image-rgb.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <string_view>

#include <FreeImage.h>

#include "base/native-path.h"
#include "images/image-gray.h"
#include "kernels/gray-plane.h"
#include "kernels/resize-cubic.h"
#include "kernels/swap-red-blue.h"

namespace {

struct TBitmapUnloader {
  void operator()(FIBITMAP* bitmap) const { FreeImage_Unload(bitmap); }
};
using TBitmap = std::unique_ptr<FIBITMAP, TBitmapUnloader>;

/// Bytes in memory as a stream of the library, whose own one takes a tenth of a photograph's decoding.
struct TMemoryStream {
  const unsigned char* data;
  long size;
  long position = 0;

  static unsigned Read(void* buffer, unsigned size, unsigned count, fi_handle handle) {
    auto& stream = *static_cast<TMemoryStream*>(handle);
    const auto rest = static_cast<unsigned long>(stream.size - stream.position);
    const unsigned long whole = size == 0 ? 0 : std::min<unsigned long>(count, rest / size);
    std::copy_n(stream.data + stream.position, whole * size, static_cast<unsigned char*>(buffer));
    stream.position += static_cast<long>(whole * size);
    return static_cast<unsigned>(whole);
  }

  static unsigned Write(void* /*buffer*/, unsigned /*size*/, unsigned /*count*/, fi_handle /*handle*/) { return 0; }

  static int Seek(fi_handle handle, long offset, int origin) {
    auto& stream = *static_cast<TMemoryStream*>(handle);
    const long base = origin == SEEK_SET ? 0 : origin == SEEK_CUR ? stream.position : stream.size;
    if (offset < -base || offset > stream.size - base) {
      return -1;
    }
    stream.position = base + offset;
    return 0;
  }

  static long Tell(fi_handle handle) { return static_cast<TMemoryStream*>(handle)->position; }
};

/// True for what the decoders remark on pictures of which every pixel is there: an unusual header, or a fault in what
/// goes with the pixels.
bool IsHarmless(std::string_view message) {
  constexpr std::array<std::string_view, 9> kHarmless = {"unknown JFIF revision number",
                                                         "non-standard JFXX segment",
                                                         "bad ICC marker",
                                                         "Warning: loading color model",
                                                         "Warning: image contains",
                                                         "additional alpha channel(s) ignored",
                                                         "Invalid data count for tag",
                                                         "Unimplemented variable number of parameters for Tiff Tag",
                                                         "Problem with skipping JPEG2000 box"};
  return std::any_of(kHarmless.begin(), kHarmless.end(),
                     [&](std::string_view remark) { return message.find(remark) != std::string_view::npos; });
}

/// Listens during its own lifetime to whether the library's decoders report damage.
class TDecoderMessages {
 public:
  TDecoderMessages() {
    anyDamage = false;
    FreeImage_SetOutputMessage(
        [](FREE_IMAGE_FORMAT, const char* message) { anyDamage = anyDamage || !IsHarmless(message); });
  }
  ~TDecoderMessages() { FreeImage_SetOutputMessage(nullptr); }
  TDecoderMessages(const TDecoderMessages&) = delete;
  TDecoderMessages& operator=(const TDecoderMessages&) = delete;

  bool AnyDamage() const { return anyDamage; }

 private:
  static inline bool anyDamage = false;
};

/// The format of a regular file, by its contents, or failing that by its name. FIF_UNKNOWN if the library cannot read
/// it. Nothing else is opened: a named pipe would wait for its other end.
FREE_IMAGE_FORMAT FindFormat(const std::string& nativePath) {
  if (!base::IsRegularFile(nativePath)) {
    return FIF_UNKNOWN;
  }
  FREE_IMAGE_FORMAT format = FreeImage_GetFileType(nativePath.c_str(), 0);
  if (format == FIF_UNKNOWN) {
    format = FreeImage_GetFIFFromFilename(nativePath.c_str());
  }
  return FreeImage_FIFSupportsReading(format) == FALSE ? FIF_UNKNOWN : format;
}

/// The picture without its pixels, as far as the format can leave them out; null if it cannot be read.
TBitmap ReadHeader(const std::string& path, FREE_IMAGE_FORMAT format) {
  return TBitmap(format == FIF_UNKNOWN ? nullptr
                                       : FreeImage_Load(format, base::NativePath(path).c_str(), FIF_LOAD_NOPIXELS));
}

/// A bitmap of FIT_RGBAF without its alpha. The library's own conversion cuts everything brighter than 1.
TBitmap DropAlpha(FIBITMAP* bitmap) {
  const unsigned width = FreeImage_GetWidth(bitmap);
  const unsigned height = FreeImage_GetHeight(bitmap);
  TBitmap opaque(FreeImage_AllocateT(FIT_RGBF, static_cast<int>(width), static_cast<int>(height)));
  for (unsigned y = 0; opaque && y < height; ++y) {
    const auto* source = reinterpret_cast<const FIRGBAF*>(FreeImage_GetScanLine(bitmap, static_cast<int>(y)));
    auto* destination = reinterpret_cast<FIRGBF*>(FreeImage_GetScanLine(opaque.get(), static_cast<int>(y)));
    std::transform(source, source + width, destination, [](const FIRGBAF& pixel) {
      return FIRGBF{pixel.red, pixel.green, pixel.blue};
    });
  }
  return opaque;
}

/// A 24-bit version of a bitmap in any other form; null if the library knows none.
TBitmap ConvertTo24Bits(FIBITMAP* bitmap) {
  TBitmap converted(FreeImage_ConvertTo24Bits(bitmap));
  if (converted) {
    return converted;
  }
  const FREE_IMAGE_TYPE type = FreeImage_GetImageType(bitmap);
  if (type == FIT_RGBF) {
    return TBitmap(FreeImage_ToneMapping(bitmap, FITMO_DRAGO03, 0, 0));
  }
  if (type == FIT_RGBAF) {
    const TBitmap opaque = DropAlpha(bitmap);
    return opaque ? ConvertTo24Bits(opaque.get()) : nullptr;
  }
  if (type == FIT_UINT16) {
    // Its range is known, while the standard type below stretches what is there to the full range.
    const TBitmap gray(FreeImage_ConvertTo8Bits(bitmap));
    return TBitmap(gray ? FreeImage_ConvertTo24Bits(gray.get()) : nullptr);
  }
  const TBitmap standard(FreeImage_ConvertToStandardType(bitmap, TRUE));
  return TBitmap(standard ? FreeImage_ConvertTo24Bits(standard.get()) : nullptr);
}

/// The picture for an encoder; null if there is no memory for it.
TBitmap ToBitmap(const TImageRGB& image) {
  TBitmap bitmap(FreeImage_Allocate(image.GetWidth(), image.GetHeight(), 24, 0, 0, 0));
  if (bitmap) {
    kernels::SwapRedBlue(
        image.GetPixels(), image.GetStride(), FreeImage_GetScanLine(bitmap.get(), image.GetHeight() - 1),
        -static_cast<std::ptrdiff_t>(FreeImage_GetPitch(bitmap.get())), image.GetWidth(), image.GetHeight());
  }
  return bitmap;
}

struct TMemoryCloser {
  void operator()(FIMEMORY* memory) const { FreeImage_CloseMemory(memory); }
};

}  // namespace

TImageRGB::TImageRGB() : TPixelBuffer(3) {}

TImageRGB::TImageRGB(unsigned char* data, int width, int height, int stride)
    : TPixelBuffer(data, width, height, stride, 3) {}

void TImageRGB::SetSize(int width, int height, bool clear) {
  Resize(width, height);
  if (clear) {
    ClearPixels();
  }
}

void TImageRGB::SetPixel(int x, int y, unsigned char red, unsigned char green, unsigned char blue) {
  if (unsigned char* pixel = PixelAt(x, y)) {
    pixel[0] = red;
    pixel[1] = green;
    pixel[2] = blue;
  }
}

bool TImageRGB::LoadFromFile(const std::string& path) {
  const std::string nativePath = base::NativePath(path);
  return Decode(nativePath, FindFormat(nativePath), 0);
}

bool TImageRGB::IsReadable(const std::string& path) {
  return ReadHeader(path, FindFormat(base::NativePath(path))) != nullptr;
}

std::pair<int, int> TImageRGB::JpegSize(const std::string& path) {
  const TBitmap header = FindFormat(base::NativePath(path)) == FIF_JPEG ? ReadHeader(path, FIF_JPEG) : nullptr;
  return {static_cast<int>(FreeImage_GetWidth(header.get())), static_cast<int>(FreeImage_GetHeight(header.get()))};
}

bool TImageRGB::LoadReduced(const std::string& path, int divisor) {
  const auto [width, height] = JpegSize(path);
  // The library takes the longer side that is wanted, in the upper half of the flags, and decodes at the smallest part
  // of the full size that is not below it.
  const int side = std::max(width, height) / divisor;
  return Decode(base::NativePath(path), FIF_JPEG, side << 16);
}

bool TImageRGB::Decode(const std::string& nativePath, int format, int flags) {
  if (format == FIF_UNKNOWN) {
    return false;
  }
  const TDecoderMessages messages;
  const TBitmap bitmap(FreeImage_Load(static_cast<FREE_IMAGE_FORMAT>(format), nativePath.c_str(), flags));
  isDamaged = messages.AnyDamage();
  return bitmap && CopyFromBitmap(bitmap.get());
}

bool TImageRGB::LoadFromMemory(const unsigned char* data, std::size_t size, const std::string& name) {
  if (size > std::numeric_limits<std::int32_t>::max()) {
    return false;
  }
  FreeImageIO io = {TMemoryStream::Read, TMemoryStream::Write, TMemoryStream::Seek, TMemoryStream::Tell};
  TMemoryStream stream = {data, static_cast<long>(size)};
  FREE_IMAGE_FORMAT format = FreeImage_GetFileTypeFromHandle(&io, &stream, 0);
  if (format == FIF_UNKNOWN && !name.empty()) {
    format = FreeImage_GetFIFFromFilename(name.c_str());
  }
  if (format == FIF_UNKNOWN || FreeImage_FIFSupportsReading(format) == FALSE) {
    return false;
  }
  stream.position = 0;
  const TDecoderMessages messages;
  const TBitmap bitmap(FreeImage_LoadFromHandle(format, &io, &stream, 0));
  isDamaged = messages.AnyDamage();
  return bitmap && CopyFromBitmap(bitmap.get());
}

bool TImageRGB::CopyFromBitmap(FIBITMAP* bitmap) {
  TBitmap converted;
  if (FreeImage_GetBPP(bitmap) != 24) {
    converted = ConvertTo24Bits(bitmap);
    bitmap = converted.get();
  }
  if (bitmap == nullptr || FreeImage_HasPixels(bitmap) == FALSE) {
    return false;
  }
  const int height = static_cast<int>(FreeImage_GetHeight(bitmap));
  SetSize(static_cast<int>(FreeImage_GetWidth(bitmap)), height, false);
  if (GetHeight() == 0) {
    return false;
  }
  ClearPadding();
  // Bitmaps stand on their bottom row and hold blue, green, red.
  kernels::SwapRedBlue(FreeImage_GetScanLine(bitmap, height - 1),
                       -static_cast<std::ptrdiff_t>(FreeImage_GetPitch(bitmap)), GetPixels(), GetStride(), GetWidth(),
                       height);
  return true;
}

void TImageRGB::SaveToFile(const std::string& path) const {
  const FREE_IMAGE_FORMAT format = FreeImage_GetFIFFromFilename(path.c_str());
  if (format == FIF_UNKNOWN || FreeImage_FIFSupportsWriting(format) == FALSE) {
    return;
  }
  if (const TBitmap bitmap = ToBitmap(*this)) {
    FreeImage_Save(format, bitmap.get(), path.c_str(), 0);
  }
}

std::string TImageRGB::EncodeJpeg(int quality) const {
  const TBitmap bitmap = ToBitmap(*this);
  const std::unique_ptr<FIMEMORY, TMemoryCloser> memory(FreeImage_OpenMemory());
  BYTE* bytes = nullptr;
  DWORD size = 0;
  if (!bitmap || !memory ||
      FreeImage_SaveToMemory(FIF_JPEG, bitmap.get(), memory.get(), quality | JPEG_OPTIMIZE) == FALSE ||
      FreeImage_AcquireMemory(memory.get(), &bytes, &size) == FALSE) {
    return {};
  }
  return {reinterpret_cast<const char*>(bytes), size};
}

void TImageRGB::ToGray(TImageGray& gray) const {
  gray.SetSize(GetWidth(), GetHeight());
  kernels::GrayPlane(GetPixels(), GetStride(), gray.GetPixels(), gray.GetStride(), GetWidth(), GetHeight());
}

void TImageRGB::ScaleTo(TImageRGB& destination, int width, int height) const {
  destination.SetSize(width, height, true);
  kernels::ResizeCubicRgb(GetPixels(), GetStride(), GetWidth(), GetHeight(), destination.GetPixels(),
                          destination.GetStride(), destination.GetWidth(), destination.GetHeight());
}
