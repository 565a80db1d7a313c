#include "batch/picture-saver.h"

#include <QDialog>
#include <QPixmap>

#include "base/format-string.h"
#include "base/native-path.h"
#include "gui/eight-bit-text.h"

void TPictureSaver::Save(QDialog& dialog) {
  const std::string file = base::WithTrailingSeparator(directory) + FormatString("%03d.png", ++count);
  if (!dialog.grab().save(ToQString(file)) && failedFile.empty()) {
    failedFile = file;
  }
}
