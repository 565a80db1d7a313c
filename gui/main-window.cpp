#include "gui/main-window.h"

#include <QDrag>
#include <QDragEnterEvent>
#include <QGuiApplication>
#include <QImageReader>
#include <QKeyEvent>
#include <QLabel>
#include <QMimeData>
#include <QMouseEvent>
#include <QPixmap>
#include <QScreen>
#include <QUrl>

#include "base/native-path.h"
#include "gui/eight-bit-text.h"
#include "ui_main-window.h"

namespace {

constexpr QSize kThumbnail(40, 30);

/// A cell's label. The table takes it over.
QLabel* AddLabel(QTableWidget* table, int row, int column) {
  auto* label = new QLabel(table);
  table->setCellWidget(row, column, label);
  return label;
}

void AddText(QTableWidget* table, int row, int column, const std::string& text) {
  QLabel* label = AddLabel(table, row, column);
  label->setTextFormat(Qt::PlainText);
  label->setText(ToQString(text));
  label->setIndent(5);
}

int AddRow(QTableWidget* table) {
  const int row = table->rowCount();
  table->setRowCount(row + 1);
  return row;
}

void AddSideRow(QTableWidget* table, const std::string& text) {
  AddText(table, AddRow(table), 0, text);
}

/// The picture of a file at 40 x 30; null if it cannot be read. A JPEG file is decoded at the smallest of its format's
/// own sizes that still has four times the thumbnail's, so that large photographs cost little.
QPixmap ReadThumbnail(const std::string& filename) {
  QImageReader reader(ToQString(base::NativePath(filename)));
  reader.setDecideFormatFromContent(true);
  const QSize size = reader.size();
  if (reader.format() == "jpeg" && size.isValid()) {
    for (const int divisor : {8, 4, 2}) {
      const QSize reduced((size.width() + divisor - 1) / divisor, (size.height() + divisor - 1) / divisor);
      if (reduced.width() >= 4 * kThumbnail.width() && reduced.height() >= 4 * kThumbnail.height()) {
        reader.setScaledSize(reduced);
        break;
      }
    }
  }
  const QImage picture = reader.read();
  return picture.isNull()
             ? QPixmap()
             : QPixmap::fromImage(picture).scaled(kThumbnail, Qt::IgnoreAspectRatio, Qt::FastTransformation);
}

}  // namespace

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent), ui(std::make_unique<Ui::MainWindow>()) {
  ui->setupUi(this);
  ui->leCommand->installEventFilter(this);
  setWindowTitle("Tessimar v0.1.8");
  const QSize available = QGuiApplication::screens().first()->availableGeometry().size();
  const QSize frame = frameGeometry().size();
  move((available.width() - frame.width()) / 2, (available.height() - frame.height()) / 2);
  ui->twVariables->setColumnWidth(0, 100);
  ui->twVariables->setColumnWidth(1, 100);
  ui->twVariables->setColumnWidth(2, 750);
  ui->leCommand->setFocus(Qt::OtherFocusReason);
  ui->splitter->setSizes({260, 260, 50});
  // A file dropped anywhere is the window's. The text widgets would take its address as text; without accepting drops
  // they let it pass to here.
  setAcceptDrops(true);
  ui->pteInfo->setAcceptDrops(false);
  ui->leCommand->setAcceptDrops(false);
}

MainWindow::~MainWindow() = default;

void MainWindow::AddFeature(const std::string& name) {
  AddSideRow(ui->twFeatures, name);
}

void MainWindow::AddClassifier(const std::string& name) {
  AddSideRow(ui->twClassifiers, name);
}

void MainWindow::AddSegmentationMethod(const std::string& name) {
  AddSideRow(ui->twSegmentationMethods, name);
}

void MainWindow::ClearVariables() {
  ui->twVariables->setRowCount(0);
}

void MainWindow::AddVariable(const std::string& name, const std::string& type, const std::string& description,
                             const std::string& imageFilename) {
  const int row = AddRow(ui->twVariables);
  AddText(ui->twVariables, row, 0, name);
  ui->twVariables->cellWidget(row, 0)->setFont(QFont("Courier"));
  if (type == "image") {
    AddLabel(ui->twVariables, row, 1)->setPixmap(ReadThumbnail(imageFilename));
  } else {
    AddText(ui->twVariables, row, 1, type);
  }
  AddText(ui->twVariables, row, 2, description);
}

void MainWindow::AddOutput(const std::string& text) {
  ui->pteInfo->insertPlainText(ToQString(text));
  ui->pteInfo->ensureCursorVisible();
}

std::string MainWindow::GetCommandText() const {
  return FromQString(ui->leCommand->text());
}

void MainWindow::SetCommandText(const std::string& text) {
  ui->leCommand->setText(ToQString(text));
}

void MainWindow::ClearCommandText() {
  ui->leCommand->clear();
}

void MainWindow::on_leCommand_returnPressed() {
  if (OnReturnPressed) {
    OnReturnPressed();
  }
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
  if (watched != ui->leCommand) {
    return QMainWindow::eventFilter(watched, event);
  }
  return event->type() == QEvent::KeyPress && HandleCommandKey(static_cast<QKeyEvent*>(event)->key());
}

bool MainWindow::HandleCommandKey(int key) {
  switch (key) {
    case Qt::Key_Up:
      if (OnKeyUp) {
        OnKeyUp();
      }
      return true;
    case Qt::Key_Down:
      if (OnKeyDown) {
        OnKeyDown();
      }
      return true;
    case Qt::Key_Escape:
      ClearCommandText();
      return true;
    default:
      return false;
  }
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (event->mimeData()->hasUrls() || event->mimeData()->hasText()) {
    event->acceptProposedAction();
  }
}

void MainWindow::dropEvent(QDropEvent* event) {
  if (!event->mimeData()->hasUrls()) {
    return;
  }
  event->acceptProposedAction();
  const QList<QUrl> urls = event->mimeData()->urls();
  if (urls.isEmpty()) {
    return;
  }
  const std::string path = base::DroppedPath(FromQString(urls.first().path()));
  const bool isImage = path.find(".jpg") != std::string::npos;
  SetCommandText((isImage ? "image=loadimage(\"" : "database=loaddatabase(\"") + path + "\")");
  on_leCommand_returnPressed();
}

void MainWindow::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || !ui->twFeatures->geometry().contains(event->position().toPoint())) {
    return;
  }
  // The toolkit deletes the drag, and the drag its data, once the user has let go.
  auto* data = new QMimeData();
  data->setText("tessimar/feature");
  auto* drag = new QDrag(this);
  drag->setMimeData(data);
  drag->exec(Qt::MoveAction);
}
