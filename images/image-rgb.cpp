#include "images/image-rgb.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include <FreeImage.h>

#include "base/file.h"
#include "base/guarded-run.h"
#include "base/native-path.h"
#include "images/image-gray.h"
#include "images/side-data.h"
#include "kernels/gray-plane.h"
#include "kernels/resize-cubic.h"
#include "kernels/swap-red-blue.h"

/// The bytes of an image file, on disk or in memory, as the library reads them.
class TEncodedPicture {
 public:
  /// The name tells the format of bytes that do not tell it themselves; may be empty.
  explicit TEncodedPicture(std::string theName) : name(std::move(theName)) {}
  virtual ~TEncodedPicture() = default;
  TEncodedPicture(const TEncodedPicture&) = delete;
  TEncodedPicture& operator=(const TEncodedPicture&) = delete;

  const std::string& GetName() const { return name; }
  long GetSize() { return Seek(0, SEEK_END) ? Tell() : 0; }
  bool Read(unsigned char* bytes, unsigned count) { return ReadProc(bytes, 1, count, this) == count; }
  bool Skip(long count) { return Seek(count, SEEK_CUR); }
  void Rewind() { Seek(0, SEEK_SET); }

  bool HasForm(FREE_IMAGE_FORMAT format) {
    Rewind();
    return FreeImage_ValidateFromHandle(format, &io, this) != FALSE;
  }
  FREE_IMAGE_FORMAT FindForm() {
    Rewind();
    return FreeImage_GetFileTypeFromHandle(&io, this, 0);
  }
  FIBITMAP* Decode(FREE_IMAGE_FORMAT format, int flags) {
    isShort = false;
    Rewind();
    return FreeImage_LoadFromHandle(format, &io, this, flags);
  }

  /// True if the decoder wanted more than the file has.
  bool IsShort() const { return isShort; }

  /// Hides what the file holds besides its pixels from whoever reads it from now on. False if decoding it in this
  /// process might take for ever nevertheless.
  bool HideSideData(TSideData (*find)(const TReadAt&)) {
    hidden.clear();
    TSideData found = find([this](std::int64_t position, unsigned char* bytes, std::size_t count) {
      return Seek(static_cast<long>(position), SEEK_SET) ? ReadItems(bytes, 1, count) : 0;
    });
    hidden = std::move(found.keys);
    return found.isBounded;
  }

 private:
  virtual std::size_t ReadItems(void* bytes, std::size_t size, std::size_t count) = 0;
  virtual bool Seek(long offset, int origin) = 0;
  virtual long Tell() = 0;

  static unsigned ReadProc(void* buffer, unsigned size, unsigned count, fi_handle handle) {
    auto& picture = *static_cast<TEncodedPicture*>(handle);
    const long begin = picture.hidden.empty() ? 0 : picture.Tell();
    auto* bytes = static_cast<unsigned char*>(buffer);
    const std::size_t whole = picture.ReadItems(bytes, size, count);
    // What a file lacks reads as zero. Some decoders take the buffer as it is, so that the same file would give now
    // this and now that; that of GIF waits for a zero byte, and would look at the last one again for ever.
    std::fill(bytes + whole * size, bytes + std::size_t{size} * count, static_cast<unsigned char>(0));
    picture.isShort = picture.isShort || (whole == 0 && size > 0 && count > 0);
    const std::int64_t end = begin + static_cast<std::int64_t>(whole * size);
    for (auto key = std::lower_bound(picture.hidden.begin(), picture.hidden.end(), begin);
         key != picture.hidden.end() && *key < end; ++key) {
      bytes[*key - begin] = 0;
    }
    return static_cast<unsigned>(whole);
  }
  static unsigned WriteProc(void* /*buffer*/, unsigned /*size*/, unsigned /*count*/, fi_handle /*handle*/) { return 0; }
  static int SeekProc(fi_handle handle, long offset, int origin) {
    return static_cast<TEncodedPicture*>(handle)->Seek(offset, origin) ? 0 : -1;
  }
  static long TellProc(fi_handle handle) { return static_cast<TEncodedPicture*>(handle)->Tell(); }

  FreeImageIO io = {ReadProc, WriteProc, SeekProc, TellProc};
  std::string name;
  bool isShort = false;
  /// Positions of bytes that read as zero, ascending.
  std::vector<std::int64_t> hidden;
};

namespace {

// The formats whose decoders run in this process. None of these decoders crashed, ran away or took more memory than its
// picture has on thousands of damaged files, once they did not see what the files hold besides the picture. On Windows
// these are the formats that can be read at all.
constexpr std::array kTrustedFormats = {
    // The first one, since nearly all pictures are JPEGs: its library reads what browsers meet.
    FIF_JPEG,
    // So do those of PNG and WebP.
    FIF_PNG, FIF_WEBP,
    // The library's own, of long standing and little to go wrong.
    FIF_GIF, FIF_BMP, FIF_PBM, FIF_PBMRAW, FIF_PGM, FIF_PGMRAW, FIF_PPM, FIF_PPMRAW};
// All others run in a process apart. Damaged files crashed the decoders of TIFF (by an assertion), PSD, JPEG XR, Sun
// raster, XPM, TGA and PCX and drove those of XBM, IFF, EXR and PICT into loops without an end. That of JPEG 2000 takes
// 12 bytes a pixel, of which the header of a file without any pixels may claim hundreds of millions. Those of ICO, MNG,
// JNG, HDR, DDS, SGI, PFM, PCD, CUT, KOALA and WBMP are seldom used, and their like; cameras' raw files have hundreds
// of variants. What has no known form goes there as well, since telling what it is takes the same code.

constexpr std::int64_t kMostPixels = std::int64_t{1} << 28;
constexpr std::int64_t kMostBytes = std::int64_t{2} << 30;
constexpr base::TGuardLimits kLimitsApart = {
    .processorSeconds = 20, .waitedSeconds = 120, .memory = static_cast<std::size_t>(kMostBytes)};

// A file that claims more pixels than kPlausiblePixels, and more than these for each of its bytes, would take seconds
// and gigabytes, most likely for nothing: it is decoded apart whatever its format. A blank page that was scanned may
// have so many, therefore it is decoded.
constexpr std::int64_t kPlausiblePixels = std::int64_t{1} << 24;
constexpr std::int64_t kPlausiblePixelsPerByte = 1000;

/// How many pixels a byte of a file can hold at most, with something to spare.
std::int64_t MostPixelsPerByte(FREE_IMAGE_FORMAT format) {
  switch (format) {
    case FIF_PNG:
    case FIF_WEBP:
    case FIF_TIFF:
    case FIF_J2K:
    case FIF_JP2:
      // A picture of one color may have any size.
      return kMostPixels;
    case FIF_GIF:
      // Twelve bits for 4096 equal pixels.
      return 3000;
    default:
      return kPlausiblePixelsPerByte;
  }
}

/// The divisor that asks for no pixels at all.
constexpr int kHeaderOnly = 0;

struct TBitmapUnloader {
  void operator()(FIBITMAP* bitmap) const { FreeImage_Unload(bitmap); }
};
using TBitmap = std::unique_ptr<FIBITMAP, TBitmapUnloader>;

/// Bytes in memory. The library's own stream of them takes a tenth of a photograph's decoding.
class TMemoryPicture : public TEncodedPicture {
 public:
  TMemoryPicture(const unsigned char* theData, long theSize, const std::string& theName)
      : TEncodedPicture(theName), data(theData), size(theSize) {}

 private:
  std::size_t ReadItems(void* bytes, std::size_t itemSize, std::size_t count) override {
    const auto rest = static_cast<std::size_t>(size - position);
    const std::size_t whole = itemSize == 0 ? 0 : std::min(count, rest / itemSize);
    std::copy_n(data + position, whole * itemSize, static_cast<unsigned char*>(bytes));
    position += static_cast<long>(whole * itemSize);
    return whole;
  }
  bool Seek(long offset, int origin) override {
    const long base = origin == SEEK_SET ? 0 : origin == SEEK_CUR ? position : size;
    // By differences, since base + offset may be more than a long holds.
    if (offset < -base || offset > size - base) {
      return false;
    }
    position = base + offset;
    return true;
  }
  long Tell() override { return position; }

  const unsigned char* data;
  long size;
  long position = 0;
};

/// A regular file. Nothing else is opened: a named pipe would wait for its other end.
class TPictureFile : public TEncodedPicture {
 public:
  explicit TPictureFile(const std::string& path)
      : TEncodedPicture(path),
        file(base::IsRegularFile(path) ? std::fopen(base::NativePath(path).c_str(), "rb") : nullptr) {}

  bool IsOpen() const { return file != nullptr; }

 private:
  std::size_t ReadItems(void* bytes, std::size_t size, std::size_t count) override {
    return std::fread(bytes, size, count, file.get());
  }
  bool Seek(long offset, int origin) override { return std::fseek(file.get(), offset, origin) == 0; }
  long Tell() override { return std::ftell(file.get()); }

  struct TCloser {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
  };
  std::unique_ptr<std::FILE, TCloser> file;
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

/// Leaves nothing but pixels to the decoder. False if that may take for ever nevertheless.
bool HideSideData(TEncodedPicture& source, FREE_IMAGE_FORMAT format) {
  switch (format) {
    case FIF_JPEG:
      return source.HideSideData(FindJpegSideData);
    case FIF_PNG:
      return source.HideSideData(FindPngSideData);
    case FIF_WEBP:
      return source.HideSideData(FindWebPSideData);
    default:
      return true;
  }
}

/// The format, if it is one whose decoder may run in this process and finds nothing in the file to keep it for long,
/// otherwise FIF_UNKNOWN.
FREE_IMAGE_FORMAT FindTrustedFormat(TEncodedPicture& source) {
  const auto* format = std::find_if(kTrustedFormats.begin(), kTrustedFormats.end(),
                                    [&source](FREE_IMAGE_FORMAT each) { return source.HasForm(each); });
  return format == kTrustedFormats.end() || !HideSideData(source, *format) ? FIF_UNKNOWN : *format;
}

/// The format by the contents, or failing that by the name. FIF_UNKNOWN if the library cannot read it.
FREE_IMAGE_FORMAT FindFormat(TEncodedPicture& source) {
  FREE_IMAGE_FORMAT format = source.FindForm();
  if (format == FIF_UNKNOWN && !source.GetName().empty()) {
    format = FreeImage_GetFIFFromFilename(source.GetName().c_str());
  }
  return FreeImage_FIFSupportsReading(format) == FALSE ? FIF_UNKNOWN : format;
}

/// What a decoder makes of a picture.
struct TForm {
  std::int64_t width = 0;
  std::int64_t height = 0;
  std::int64_t bits = 0;

  bool IsEmpty() const { return width <= 0 || height <= 0; }
  bool IsTooLarge() const { return width * height > kMostPixels || (width * bits + 31) / 32 * 4 * height > kMostBytes; }
};

/// The empty form for no bitmap.
TForm FormOf(FIBITMAP* bitmap) {
  return {FreeImage_GetWidth(bitmap), FreeImage_GetHeight(bitmap), FreeImage_GetBPP(bitmap)};
}

/// The form of the first frame, which the library does not tell without decoding it.
TForm GifForm(TEncodedPicture& source) {
  source.Rewind();
  // Six bytes of header and seven of the logical screen descriptor (GIF89a, 17 and 18). Its flags tell of a global
  // color table, which has 3 * 2^(n + 1) bytes.
  std::array<unsigned char, 13> screen;
  if (!source.Read(screen.data(), screen.size()) ||
      ((screen[10] & 0x80) != 0 && !source.Skip(3L << ((screen[10] & 7) + 1)))) {
    return {};
  }
  // "," begins an image descriptor, "!" an extension, whose data come in blocks of up to 255 bytes that an empty one
  // ends (GIF89a, 15, 20 and 23 to 26).
  for (unsigned char block = 0; source.Read(&block, 1);) {
    if (std::array<unsigned char, 8> frame; block == ',' && source.Read(frame.data(), frame.size())) {
      return TForm{frame[4] | frame[5] << 8, frame[6] | frame[7] << 8, 8};
    }
    if (block != '!' || !source.Skip(1)) {
      return {};
    }
    for (unsigned char length = 1; length > 0;) {
      if (!source.Read(&length, 1) || !source.Skip(length)) {
        return {};
      }
    }
  }
  return {};
}

/// Reads the next number of a PNM header, behind blanks and comments. False if there is none, or if it is no `int`: the
/// library lets such a number wrap, and its decoder may then write beside a bitmap of the absolute size.
bool SkipPnmNumber(TEncodedPicture& source) {
  unsigned char character = 0;
  const auto isDigit = [&character] { return character >= '0' && character <= '9'; };
  bool isComment = false;
  do {
    if (!source.Read(&character, 1)) {
      return false;
    }
    isComment = isComment ? character != '\n' : character == '#';
  } while (isComment || !isDigit());
  std::int64_t number = 0;
  do {
    number = number * 10 + (character - '0');
  } while (number <= std::numeric_limits<std::int32_t>::max() && source.Read(&character, 1) && isDigit());
  return number <= std::numeric_limits<std::int32_t>::max();
}

bool HasPnmSize(TEncodedPicture& source) {
  source.Rewind();
  return source.Skip(2) && SkipPnmNumber(source) && SkipPnmNumber(source);
}

/// What came of a picture.
struct TDecoded {
  /// Null if its header already ruled it out, if nobody asked for it, or if it cannot be decoded.
  TBitmap bitmap;
  bool isReadable = false;
  bool isDamaged = false;
  std::optional<std::pair<int, int>> refusedSize;
};

/// The form of the picture, without its pixels as far as the format can leave them out. Nothing if it cannot; an empty
/// form for a picture that cannot be read.
std::optional<TForm> ReadForm(TEncodedPicture& source, FREE_IMAGE_FORMAT format) {
  switch (format) {
    case FIF_GIF:
      return GifForm(source);
    case FIF_PBM:
    case FIF_PBMRAW:
    case FIF_PGM:
    case FIF_PGMRAW:
    case FIF_PPM:
    case FIF_PPMRAW:
      if (!HasPnmSize(source)) {
        return TForm{};
      }
      break;
    case FIF_J2K:
    case FIF_JP2:
      // JPEG 2000 does leave out the pixels, although the library says that it does not.
      break;
    default:
      if (FreeImage_FIFSupportsNoPixels(format) == FALSE) {
        return std::nullopt;
      }
  }
  const TBitmap header(source.Decode(format, FIF_LOAD_NOPIXELS));
  return FormOf(header.get());
}

/// False for a picture that is large and has more than so many pixels for each byte of its file.
bool HasFewer(std::int64_t pixelsPerByte, const TForm& form, TEncodedPicture& source) {
  const std::int64_t pixels = form.width * form.height;
  return pixels <= kPlausiblePixels || pixels <= pixelsPerByte * source.GetSize();
}

/// True for the formats that other libraries decode, which remark a file that ends too early, and may look behind the
/// end of a sound one; and for GIF, which often lacks its last byte only. The library's own decoders fill up the
/// picture without a word.
bool RemarksEarlyEnd(FREE_IMAGE_FORMAT format) {
  constexpr std::array kRemarking = {FIF_JPEG, FIF_PNG, FIF_WEBP, FIF_GIF, FIF_TIFF, FIF_FAXG3,
                                     FIF_J2K,  FIF_JP2, FIF_EXR,  FIF_JXR, FIF_RAW};
  return std::find(kRemarking.begin(), kRemarking.end(), format) != kRemarking.end();
}

/// Decodes a picture whose form is known, if it can be.
TDecoded Decode(TEncodedPicture& source, FREE_IMAGE_FORMAT format, const std::optional<TForm>& form, int divisor) {
  TDecoded decoded;
  const auto accept = [&](const TForm& found) {
    if (found.IsTooLarge()) {
      decoded.refusedSize = {static_cast<int>(found.width), static_cast<int>(found.height)};
    }
    decoded.isReadable = !found.IsEmpty() && !found.IsTooLarge() && HasFewer(MostPixelsPerByte(format), found, source);
    return decoded.isReadable;
  };
  if (form && (!accept(*form) || divisor == kHeaderOnly)) {
    return decoded;
  }
  // The library takes the longer side that is wanted, in the upper half of the flags, and decodes at the smallest part
  // of the full size that is not below it.
  const int flags = divisor > 1 && form ? static_cast<int>(std::max(form->width, form->height) / divisor) << 16 : 0;
  const TDecoderMessages messages;
  decoded.bitmap.reset(source.Decode(format, flags));
  decoded.isDamaged = messages.AnyDamage() || (source.IsShort() && !RemarksEarlyEnd(format));
  // Asked once more: a decoder may make another picture than the header promises.
  const TForm made = FormOf(decoded.bitmap.get());
  // Next to nothing of a large picture is nothing.
  if (!accept(made) || (decoded.isDamaged && !HasFewer(kPlausiblePixelsPerByte, form.value_or(made), source))) {
    decoded.isReadable = false;
    decoded.bitmap.reset();
  }
  return decoded;
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
    // F. Drago, K. Myszkowski, T. Annen and N. Chiba, "Adaptive Logarithmic Mapping for Displaying High Contrast
    // Scenes", 2003. Zeros ask for the library's own gamma and exposure.
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

/// A 24-bit version of a bitmap, which may be itself; null if there is none.
TBitmap ToColor(TBitmap bitmap) {
  return FreeImage_GetBPP(bitmap.get()) == 24 ? std::move(bitmap) : ConvertTo24Bits(bitmap.get());
}

/// What a process apart answers; if there are pixels, they follow from top to bottom, in rows of TImageRGB.
struct TAnswerHead {
  int width = 0;
  int height = 0;
  bool isTooLarge = false;
  bool isDamaged = false;
};

std::size_t RowSize(int width) {
  return (static_cast<std::size_t>(width) * 3 + 3) / 4 * 4;
}

/// Decodes a picture of any format and writes what came of it. False if it cannot be read.
bool Answer(TEncodedPicture& source, int divisor, std::FILE* answer) {
  const FREE_IMAGE_FORMAT format = FindFormat(source);
  if (format == FIF_UNKNOWN) {
    return false;
  }
  TDecoded decoded = Decode(source, format, ReadForm(source, format), divisor);
  TAnswerHead head;
  head.isTooLarge = decoded.refusedSize.has_value();
  head.isDamaged = decoded.isDamaged;
  if (!decoded.isReadable || divisor == kHeaderOnly) {
    std::tie(head.width, head.height) = decoded.refusedSize.value_or(std::pair(0, 0));
    return (decoded.isReadable || head.isTooLarge) && std::fwrite(&head, sizeof head, 1, answer) == 1;
  }
  const TBitmap color = ToColor(std::move(decoded.bitmap));
  if (!color || FreeImage_HasPixels(color.get()) == FALSE) {
    return false;
  }
  head.width = static_cast<int>(FreeImage_GetWidth(color.get()));
  head.height = static_cast<int>(FreeImage_GetHeight(color.get()));
  bool isWritten = std::fwrite(&head, sizeof head, 1, answer) == 1;
  // Row by row, since there may be no memory for the whole picture once more.
  std::vector<unsigned char> row(RowSize(head.width));
  for (int y = head.height - 1; isWritten && y >= 0; --y) {
    kernels::SwapRedBlue(FreeImage_GetScanLine(color.get(), y), 0, row.data(), 0, head.width, 1);
    isWritten = std::fwrite(row.data(), 1, row.size(), answer) == row.size();
  }
  return isWritten;
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
  TPictureFile file(path);
  return file.IsOpen() && Load(file, 1);
}

bool TImageRGB::ReadHeader(const std::string& path) {
  TPictureFile file(path);
  return file.IsOpen() && Load(file, kHeaderOnly);
}

bool TImageRGB::IsSafe(const std::string& path) {
  TPictureFile file(path);
  if (!file.IsOpen()) {
    return false;
  }
  const FREE_IMAGE_FORMAT format = FindTrustedFormat(file);
  const auto form = format == FIF_UNKNOWN ? std::nullopt : ReadForm(file, format);
  return form && !form->IsEmpty() && !form->IsTooLarge() && HasFewer(kPlausiblePixelsPerByte, *form, file);
}

std::pair<int, int> TImageRGB::JpegSize(const std::string& path) {
  TPictureFile file(path);
  const TBitmap header(file.IsOpen() && FindTrustedFormat(file) == FIF_JPEG ? file.Decode(FIF_JPEG, FIF_LOAD_NOPIXELS)
                                                                            : nullptr);
  return {static_cast<int>(FreeImage_GetWidth(header.get())), static_cast<int>(FreeImage_GetHeight(header.get()))};
}

bool TImageRGB::LoadReduced(const std::string& path, int divisor) {
  TPictureFile file(path);
  return file.IsOpen() && file.HasForm(FIF_JPEG) && Load(file, divisor);
}

bool TImageRGB::LoadFromMemory(const unsigned char* data, std::size_t size, const std::string& name) {
  // The library counts in long, which has 32 bits on Windows; the limit is the same on all platforms.
  if (size > std::numeric_limits<std::int32_t>::max()) {
    return false;
  }
  TMemoryPicture picture(data, static_cast<long>(size), name);
  return Load(picture, 1);
}

bool TImageRGB::Load(TEncodedPicture& source, int divisor) {
  refusedSize.reset();
  // A process of its own, which may crash or be ended, decodes what seldom is a photograph: a format whose decoder few
  // people test, or a file that is tiny for the picture that it claims to be.
  const FREE_IMAGE_FORMAT format = FindTrustedFormat(source);
  if (format == FIF_UNKNOWN) {
    return base::CanRunGuarded() && LoadApart(source, divisor);
  }
  const std::optional<TForm> form = ReadForm(source, format);
  if (base::CanRunGuarded() && form && !form->IsTooLarge() && !HasFewer(kPlausiblePixelsPerByte, *form, source)) {
    return LoadApart(source, divisor);
  }
  TDecoded decoded = Decode(source, format, form, divisor);
  refusedSize = decoded.refusedSize;
  if (!decoded.isReadable || divisor == kHeaderOnly) {
    return decoded.isReadable;
  }
  isDamaged = decoded.isDamaged;
  const TBitmap color = ToColor(std::move(decoded.bitmap));
  return color && CopyFromBitmap(color.get());
}

bool TImageRGB::LoadApart(TEncodedPicture& source, int divisor) {
  const base::TAnswer answer =
      base::RunGuarded([&](std::FILE* file) { return Answer(source, divisor, file); }, kLimitsApart);
  TAnswerHead head;
  // As it lies in memory: the other process is a copy of this one.
  if (!answer || std::fread(&head, sizeof head, 1, answer.get()) != 1) {
    return false;
  }
  if (head.isTooLarge) {
    refusedSize = {head.width, head.height};
    return false;
  }
  if (divisor == kHeaderOnly) {
    return true;
  }
  // A decoder that a stranger's file leads astray may answer anything.
  if (head.width <= 0 || head.height <= 0 || TForm{head.width, head.height, 24}.IsTooLarge() ||
      base::RemainingBytes(answer.get()) != RowSize(head.width) * static_cast<std::size_t>(head.height)) {
    return false;
  }
  isDamaged = head.isDamaged;
  SetSizeToFill(head.width, head.height);
  bool isWhole = true;
  for (int y = 0; isWhole && y < head.height; ++y) {
    unsigned char* row = GetPixels() + static_cast<std::ptrdiff_t>(y) * GetStride();
    isWhole = std::fread(row, 1, RowSize(head.width), answer.get()) == RowSize(head.width);
  }
  return isWhole;
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
  SetSizeToFill(static_cast<int>(FreeImage_GetWidth(bitmap)), height);
  if (GetHeight() == 0) {
    return false;
  }
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
  // Huffman tables made for this picture (T.81, K.2) make the file smaller and change no pixel. The bytes go with the
  // memory stream, hence the copy below.
  if (!bitmap || !memory ||
      FreeImage_SaveToMemory(FIF_JPEG, bitmap.get(), memory.get(), quality | JPEG_OPTIMIZE) == FALSE ||
      FreeImage_AcquireMemory(memory.get(), &bytes, &size) == FALSE) {
    return {};
  }
  return {reinterpret_cast<const char*>(bytes), size};
}

void TImageRGB::ToGray(TImageGray& gray) const {
  gray.SetSizeToFill(GetWidth(), GetHeight());
  kernels::GrayPlane(GetPixels(), GetStride(), gray.GetPixels(), gray.GetStride(), GetWidth(), GetHeight());
}

void TImageRGB::ScaleTo(TImageRGB& destination, int width, int height) const {
  destination.SetSize(width, height, true);
  kernels::ResizeCubicRgb(GetPixels(), GetStride(), GetWidth(), GetHeight(), destination.GetPixels(),
                          destination.GetStride(), destination.GetWidth(), destination.GetHeight());
}
