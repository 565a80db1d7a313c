#pragma once

#include <string>

#include <QCache>
#include <QPixmap>

#include "base/file-stamp.h"

/// Thumbnails of image files, 40 x 30 logical pixels. Those used last are kept, each as long as its file stays the
/// same.
class TThumbnails {
 public:
  static constexpr QSize kSize = QSize(40, 30);

  TThumbnails();

  /// The picture of the file as it is now, made for a screen of that pixel ratio; null if it cannot be read or
  /// is not TImageRGB::IsSafe.
  QPixmap Get(const std::string& filename, qreal pixelRatio);

 private:
  struct TEntry {
    base::TFileStamp stamp;
    qreal pixelRatio;
    QPixmap picture;
  };

  /// By the identity of the file.
  QCache<QByteArray, TEntry> entries;
};
