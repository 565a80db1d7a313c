#include "gui/thumbnails.h"

#include <memory>

#include <QImageReader>

#include "base/native-path.h"
#include "gui/eight-bit-text.h"
#include "images/image-rgb.h"

namespace {

// More than fit on any screen.
constexpr int kMostKept = 512;
// What the largest picture takes at the largest pixel of the toolkit, 8 bytes. Its own limit of 128 MB would leave out
// a good photograph, and say so on standard error.
constexpr int kMostMegabytes = 2048;

/// The picture of a file at `wanted`; null if it cannot be read. A JPEG file is decoded at the smallest of its format's
/// own sizes that still has four times the thumbnail's, so that large photographs cost little.
QPixmap ReadThumbnail(const std::string& filename, QSize wanted) {
  // The toolkit has decoders of its own, and whoever installs more for it adds to them.
  if (!TImageRGB::IsSafe(filename)) {
    return {};
  }
  QImageReader::setAllocationLimit(kMostMegabytes);
  QImageReader reader(ToQString(base::NativePath(filename)));
  // Many files are called .jpg and are something else.
  reader.setDecideFormatFromContent(true);
  const QSize size = reader.size();
  if (reader.format() == "jpeg" && size.isValid()) {
    for (const int divisor : {8, 4, 2}) {
      // As the decoder rounds.
      const QSize reduced((size.width() + divisor - 1) / divisor, (size.height() + divisor - 1) / divisor);
      if (reduced.width() >= 4 * wanted.width() && reduced.height() >= 4 * wanted.height()) {
        reader.setScaledSize(reduced);
        break;
      }
    }
  }
  const QImage picture = reader.read();
  // All thumbnails have one size, whatever the proportions of the picture.
  return picture.isNull() ? QPixmap()
                          : QPixmap::fromImage(picture.scaled(wanted, Qt::IgnoreAspectRatio, Qt::FastTransformation));
}

}  // namespace

TThumbnails::TThumbnails() : entries(kMostKept) {}

QPixmap TThumbnails::Get(const std::string& filename, qreal pixelRatio) {
  const auto stamp = base::StampFile(filename);
  if (!stamp) {
    return {};
  }
  const std::string path = base::CanonicalPath(filename);
  // The canonical path, so that several spellings of a file share one entry.
  const QByteArray key(path.data(), static_cast<qsizetype>(path.size()));
  const TEntry* kept = entries.object(key);
  if (kept != nullptr && kept->stamp == *stamp && kept->pixelRatio == pixelRatio) {
    return kept->picture;
  }
  QPixmap picture = ReadThumbnail(filename, kSize * pixelRatio);
  picture.setDevicePixelRatio(pixelRatio);
  entries.remove(key);
  // A file that is being written could change within the resolution of its time stamp, and the old thumbnail would
  // stay.
  if (stamp->IsSettled()) {
    entries.insert(key, std::make_unique<TEntry>(TEntry{*stamp, pixelRatio, picture}).release());
  }
  return picture;
}
