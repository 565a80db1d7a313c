#pragma once

#include <string>
#include <vector>

#include <QLabel>
#include <QPixmap>
#include <QRect>

/// What can be seen at a place of a picture.
struct TPictureItem {
  /// In logical pixels of the picture at full size; null for all of it.
  QRect place;
  /// The image file, as its record names it; empty for none.
  std::string filename;
  /// The lines that a tooltip tells of it.
  std::string text;
};

/// A picture that tells what it shows, in tooltips and in a context menu: copy the name of an image file, open it, take
/// it as a query, save the picture. It has the size of the picture, or is reduced; then a click changes between that
/// and the full size, of which the mouse drags what does not fit.
///
/// By the keyboard: the arrows choose one of the things that it shows, or move the full size, and Space does what a
/// click does.
class TPictureView : public QLabel {
  Q_OBJECT

 public:
  explicit TPictureView(QWidget* parent = nullptr);

  /// Shows the picture at full size. Of items at one place the last counts.
  void SetPicture(const QPixmap& newPicture, const std::vector<TPictureItem>& newItems);
  const QPixmap& GetPicture() const { return picture; }
  const std::vector<TPictureItem>& GetItems() const { return items; }

  /// Resizes the view to `size` and shows the whole picture in it.
  void Reduce(QSize size);

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;

 private:
  QSize GetFullSize() const;
  /// The place in the picture at full size that is shown at `point` of the view.
  QPoint ToPicture(QPoint point) const;
  /// The other way round.
  QPoint FromPicture(QPoint point) const;
  const TPictureItem* FindItem(QPoint point) const;
  /// The item that the keyboard chose; null if there is none.
  const TPictureItem* ChosenItem() const;
  void Choose(std::size_t index);
  /// Changes between the full size and all of the picture; what `point` shows stays there.
  void Toggle(QPoint point);
  /// Shows the full size with its pixel `origin` at the top left, or next to that at an edge.
  void ShowFrom(QPoint origin);
  void SavePicture(const std::string& filename);
  void Warn(const QString& text);

  QPixmap picture;
  std::vector<TPictureItem> items;
  /// Null unless the view is reduced.
  QPixmap reduced;
  bool isFull = false;
  /// What the full size shows at the top left of the view.
  QPoint origin;
  /// Where the mouse button went down, and what was shown at the top left then.
  QPoint pressed;
  QPoint originThen;
  bool isDragged = false;
  std::size_t chosen = 0;
};
