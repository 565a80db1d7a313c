#include "batch/picture-saver.h"

#include <QBuffer>
#include <QDialog>
#include <QPixmap>

#include "base/file.h"
#include "base/format-string.h"
#include "base/native-path.h"

void TPictureSaver::Save(QDialog& dialog) {
  // The number counts dialogs: one that cannot be saved leaves a gap, and behind 999 a name is longer.
  const std::string file = base::WithTrailingSeparator(directory) + FormatString("%03d.png", ++count);
  // PNG loses nothing, so that pictures can be compared pixel by pixel.
  QBuffer picture;
  // A disk that fills up must not leave half a picture.
  if (!(dialog.grab().save(&picture, "PNG") &&
        base::ReplaceFile(file, picture.data().constData(), static_cast<std::size_t>(picture.size()))) &&
      failedFile.empty()) {
    failedFile = file;
  }
}
