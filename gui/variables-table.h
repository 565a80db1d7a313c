#pragma once

#include <string>
#include <vector>

#include <QPixmap>
#include <QTableWidget>

#include "gui/thumbnails.h"

/// One row of the Variables table. The file name is that of an image and empty for every other type.
struct TVariableRow {
  std::string name;
  std::string type;
  std::string description;
  std::string imageFilename;

  bool operator==(const TVariableRow&) const = default;
};

/// The table of variables: name, type and description. An image shows a thumbnail of its file in place of its type;
/// it is read when it comes into view.
class TVariablesTable : public QTableWidget {
  Q_OBJECT

 public:
  explicit TVariablesTable(QWidget* parent = nullptr);

  /// Shows these rows in place of the earlier ones. Only what differs is touched, and thumbnails of files that changed
  /// are read again.
  void SetRows(const std::vector<TVariableRow>& newRows);

  /// The thumbnail of an image's row as its file was when it was first asked for after the last SetRows; null for every
  /// other row and for a file that cannot be read.
  QPixmap GetThumbnail(int row, qreal pixelRatio);

  const TVariableRow& GetRow(int row) const { return rows[static_cast<std::size_t>(row)].shown; }

  /// The whole text of a cell; the file name in place of a thumbnail.
  QString GetText(int row, int column) const;

 protected:
  /// Nothing that other views of the toolkit offer can be dropped here, so that every drop is the window's.
  QStringList mimeTypes() const override { return {}; }

 private:
  struct TRow {
    TVariableRow shown;
    QPixmap thumbnail;
    qreal pixelRatio = 0;
    /// False if the file may have changed since the thumbnail was taken.
    bool isFresh = false;
  };

  void Fill(int row, const TVariableRow& content);

  std::vector<TRow> rows;
  TThumbnails thumbnails;
};
