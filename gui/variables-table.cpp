#include "gui/variables-table.h"

#include <algorithm>
#include <array>

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QToolTip>

#include "gui/eight-bit-text.h"
#include "gui/tool-tip.h"

namespace {

constexpr int kNameColumn = 0;
constexpr int kTypeColumn = 1;
constexpr int kDescriptionColumn = 2;
constexpr int kIndent = 5;
// No screen shows more of one line.
constexpr int kMostCharacters = 4096;

/// Draws text behind a small indent and cuts it at the cell's edge, and thumbnails at the cell's left.
class TCellPainter : public QStyledItemDelegate {
 public:
  explicit TCellPainter(TVariablesTable* theTable) : QStyledItemDelegate(theTable), table(theTable) {}

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    // A description may be far longer than any screen is wide, and the toolkit would lay out all of it for each
    // drawing.
    const QString text = cell.text.left(kMostCharacters);
    cell.text.clear();
    const QStyle* style = table->style();
    // Background, selection and focus first, without the text.
    style->drawControl(QStyle::CE_ItemViewItem, &cell, painter, table);
    painter->save();
    painter->setClipRect(cell.rect);
    if (!text.isEmpty()) {
      painter->setFont(cell.font);
      const bool isSelected = (cell.state & QStyle::State_Selected) != 0;
      style->drawItemText(painter, cell.rect.adjusted(kIndent, 0, 0, 0),
                          Qt::AlignLeft | Qt::AlignVCenter | Qt::TextForceLeftToRight, cell.palette, table->isEnabled(),
                          text, isSelected ? QPalette::HighlightedText : QPalette::Text);
    } else if (index.column() == kTypeColumn) {
      // Read when the row is drawn for the first time: a script may make thousands of images that nobody scrolls to.
      const QPixmap thumbnail = table->GetThumbnail(index.row(), painter->device()->devicePixelRatioF());
      style->drawItemPixmap(painter, cell.rect, Qt::AlignLeft | Qt::AlignVCenter, thumbnail);
    }
    painter->restore();
  }

  bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                 const QModelIndex& index) override {
    if (event->type() != QEvent::ToolTip || !index.isValid()) {
      return QStyledItemDelegate::helpEvent(event, view, option, index);
    }
    QToolTip::showText(event->globalPos(), PlainToolTip(table->GetText(index.row(), index.column())), view->viewport(),
                       option.rect);
    return true;
  }

 private:
  TVariablesTable* table;
};

}  // namespace

TVariablesTable::TVariablesTable(QWidget* parent) : QTableWidget(parent) {
  // The table is its parent and deletes it.
  setItemDelegate(new TCellPainter(this));
  // The table shows the store and changes nothing in it.
  setEditTriggers(NoEditTriggers);
}

void TVariablesTable::SetRows(const std::vector<TVariableRow>& newRows) {
  // A name occurs once, and a variable that is replaced moves to the end.
  for (std::size_t i = 0; i < newRows.size() && i + 1 < rows.size(); ++i) {
    // Removing that one row keeps all below it, with their thumbnails, as they are.
    if (rows[i].shown.name != newRows[i].name && rows[i + 1].shown.name == newRows[i].name) {
      rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(i));
      removeRow(static_cast<int>(i));
    }
  }
  const std::size_t kept = std::min(rows.size(), newRows.size());
  rows.resize(newRows.size());
  setRowCount(static_cast<int>(newRows.size()));
  bool hasImage = false;
  for (std::size_t i = 0; i < newRows.size(); ++i) {
    if (i >= kept || rows[i].shown != newRows[i]) {
      Fill(static_cast<int>(i), newRows[i]);
    }
    rows[i].isFresh = false;
    hasImage = hasImage || newRows[i].type == "image";
  }
  if (hasImage) {
    viewport()->update();
  }
}

void TVariablesTable::Fill(int row, const TVariableRow& content) {
  TRow& filled = rows[static_cast<std::size_t>(row)];
  const bool isImage = content.type == "image";
  const std::array<QString, 3> texts = {ToQString(content.name), isImage ? QString() : ToQString(content.type),
                                        ToQString(content.description)};
  for (int column = kNameColumn; column <= kDescriptionColumn; ++column) {
    QTableWidgetItem* cell = item(row, column);
    // setRowCount() makes rows without items.
    const bool isNew = cell == nullptr;
    if (isNew) {
      cell = new QTableWidgetItem();
      cell->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    }
    cell->setText(texts[static_cast<std::size_t>(column)]);
    if (column == kNameColumn) {
      cell->setFont(QFont("Courier"));
    } else if (column == kTypeColumn) {
      // The cell of an image has no text, but a screen reader needs one.
      cell->setData(Qt::AccessibleTextRole, ToQString(content.type));
    }
    if (isNew) {
      // The table takes it over.
      setItem(row, column, cell);
    }
  }
  filled.shown = content;
}

QPixmap TVariablesTable::GetThumbnail(int row, qreal pixelRatio) {
  TRow& asked = rows[static_cast<std::size_t>(row)];
  if (asked.shown.type != "image") {
    return {};
  }
  if (!asked.isFresh || asked.pixelRatio != pixelRatio) {
    asked.thumbnail = thumbnails.Get(asked.shown.imageFilename, pixelRatio);
    asked.pixelRatio = pixelRatio;
    asked.isFresh = true;
  }
  return asked.thumbnail;
}

QString TVariablesTable::GetText(int row, int column) const {
  const TVariableRow& asked = rows[static_cast<std::size_t>(row)].shown;
  switch (column) {
    case kNameColumn:
      return ToQString(asked.name);
    case kTypeColumn:
      return ToQString(asked.type == "image" ? asked.imageFilename : asked.type);
    default:
      return ToQString(asked.description);
  }
}
