#include "gui/main-window.h"

#include <algorithm>
#include <initializer_list>
#include <utility>

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDrag>
#include <QDragEnterEvent>
#include <QGuiApplication>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QMimeData>
#include <QMouseEvent>
#include <QScreen>
#include <QToolTip>
#include <QUrl>
#include <boost/bind/bind.hpp>

#include "base/native-path.h"
#include "gui/eight-bit-text.h"
#include "gui/fit-dialog.h"
#include "gui/tool-tip.h"
#include "ui_main-window.h"

/// Outside of every namespace, as the toolkit asks for.
static QIcon MakeIcon() {
  // The linker leaves out what nobody mentions in a static library.
  Q_INIT_RESOURCE(icons);
  QIcon icon;
  for (const char* file :
       {":/icons/tessimar-16.png", ":/icons/tessimar-32.png", ":/icons/tessimar-48.png", ":/icons/tessimar-256.png"}) {
    icon.addFile(file);
  }
  return icon;
}

namespace {

constexpr const char* kTitle = "Tessimar v" TESSIMAR_VERSION;

/// Adds a row with a label and an item with its text for screen readers, which the table takes over.
void AddSideRow(QTableWidget* table, const std::string& text) {
  const int row = table->rowCount();
  table->setRowCount(row + 1);
  auto* label = new QLabel(table);
  // A name of a plug-in may hold what the toolkit would take for markup.
  label->setTextFormat(Qt::PlainText);
  label->setText(ToQString(text));
  label->setIndent(5);
  label->setToolTip(PlainToolTip(label->text()));
  table->setCellWidget(row, 0, label);
  auto* item = new QTableWidgetItem();
  item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled);
  item->setData(Qt::AccessibleTextRole, label->text());
  table->setItem(row, 0, item);
}

/// Files are only read: a source that is told of a move would delete them.
void AcceptAsCopy(QDropEvent& event) {
  event.setDropAction(Qt::CopyAction);
  event.accept();
}

}  // namespace

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent),
      ui(std::make_unique<Ui::MainWindow>()),
      workInput(this),
      offerScope(boost::bind(&MainWindow::TakeOffer, this, boost::placeholders::_1)) {
  ui->setupUi(this);
  // Up, down and Escape belong to the window, which the line editor would take for itself.
  ui->leCommand->installEventFilter(this);
  setWindowTitle(kTitle);
  // The dialogs' too.
  QGuiApplication::setWindowIcon(MakeIcon());
  const QSize available = QGuiApplication::screens().first()->availableGeometry().size();
  const QSize frame = frameGeometry().size();
  move((available.width() - frame.width()) / 2, (available.height() - frame.height()) / 2);
  ui->twVariables->setColumnWidth(0, 100);
  ui->twVariables->setColumnWidth(1, 100);
  ui->twVariables->setColumnWidth(2, 750);
  ui->leCommand->setFocus(Qt::OtherFocusReason);
  ui->splitter->setSizes({260, 260, 50});
  // The command line must not be dragged out of sight.
  ui->splitter->setCollapsible(2, false);
  setMinimumSize(480, 340);
  for (QGroupBox* box : {ui->groupBox, ui->groupBox_2, ui->groupBox_3}) {
    box->setToolTip(box->title());
  }
  // Tab leads out of every pane but the command line, where it completes and Shift+Tab leads out.
  ui->pteInfo->setTabChangesFocus(true);
  ui->twVariables->setTabKeyNavigation(false);
  connect(ui->twVariables, &QTableWidget::cellActivated, this, &MainWindow::TakeVariable);
  for (QTableWidget* table : {ui->twFeatures, ui->twClassifiers, ui->twSegmentationMethods}) {
    table->setTabKeyNavigation(false);
    connect(table, &QTableWidget::cellActivated, this, [this, table](int row) {
      InsertIntoCommand('"' + table->item(row, 0)->data(Qt::AccessibleTextRole).toString() + '"');
    });
  }
  // A file dropped anywhere is the window's. The text widgets would take its address as text; without accepting drops
  // they let it pass to here.
  setAcceptDrops(true);
  ui->pteInfo->setAcceptDrops(false);
  ui->leCommand->setAcceptDrops(false);
  connect(ui->pteInfo, &QPlainTextEdit::cursorPositionChanged, this, [this] { outputEnd = QTextCursor(); });
  connect(ui->pteInfo, &QPlainTextEdit::selectionChanged, this, [this] { outputEnd = QTextCursor(); });
  ui->leCommand->OnComplete = [this](const std::string& before) {
    return OnComplete ? OnComplete(before) : TCandidates();
  };
  workInput.OnInterrupt = [this] { Interrupt(); };
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

void MainWindow::SetVariables(const std::vector<TVariableRow>& rows) {
  ui->twVariables->SetRows(rows);
}

void MainWindow::AddOutput(const std::string& text) {
  QPlainTextEdit* pane = ui->pteInfo;
  const QTextCursor before = pane->textCursor();
  // Output goes where the cursor is, which is at the end unless the user has put it elsewhere.
  if (!before.hasSelection()) {
    pane->insertPlainText(ToQString(text));
    pane->ensureCursorVisible();
    return;
  }
  QTextCursor place = outputEnd.isNull() ? before : outputEnd;
  QTextCursor selection = before;
  // Text inserted at either end of the selection would become part of it.
  selection.setKeepPositionOnInsert(before.position() > before.anchor());
  // Drops the selection of this copy and keeps the place.
  place.setPosition(place.position());
  place.insertText(ToQString(text));
  pane->setTextCursor(place);
  pane->ensureCursorVisible();
  selection.setKeepPositionOnInsert(false);
  pane->setTextCursor(selection);
  outputEnd = place;
}

void MainWindow::PaintOutput() {
  ui->pteInfo->viewport()->repaint();
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

void MainWindow::SelectCommandText() {
  ui->leCommand->selectAll();
}

void MainWindow::SetBusy(bool isBusy) {
  if (isBusy) {
    if (!workInput.IsActive()) {
      // The line that was typed shows at once: a command that never reports draws nothing before it ends.
      PaintOutput();
    }
    workInput.Begin();
    return;
  }
  if (isClosing) {
    workInput.DropKept();
  }
  workInput.End();
  if (workInput.IsActive()) {
    return;
  }
  // Only now, since a command that ends empties the line.
  if (!offered.empty()) {
    SetCommandText(std::exchange(offered, {}));
  }
  // The user closed the window while a command ran, and it could not go then.
  if (isClosing) {
    close();
  }
}

void MainWindow::ShowWork(const std::string& text) {
  setWindowTitle(text.empty() ? QString(kTitle) : kTitle + (" - " + ToQString(text)));
  ProcessWorkEvents();
}

void MainWindow::ProcessWorkEvents() {
  // While work is under way TWorkInput holds the input back, Escape excepted; outside of it nothing would.
  QCoreApplication::processEvents(workInput.IsActive() ? QEventLoop::AllEvents : QEventLoop::ExcludeUserInputEvents);
}

void MainWindow::on_leCommand_returnPressed() {
  // Connected by name when setupUi() runs: renaming the widget or the slot parts them without an error of the compiler.
  if (OnReturnPressed) {
    OnReturnPressed();
  }
}

void MainWindow::on_leCommand_linesPasted(const QString& text) {
  TCommandLine* line = ui->leCommand;
  QStringList lines = text.split('\n');
  for (const QString& each : lines) {
    if (each.size() + line->text().size() > line->maxLength()) {
      // The editor would cut the line without a word, and a cut command may do something else than the whole one.
      QToolTip::showText(line->mapToGlobal(QPoint()), "A line of more than 1,048,576 characters was not pasted", line);
      return;
    }
  }
  // What stands behind the last line end waits for its Return.
  const QString rest = lines.takeLast();
  for (QString each : lines) {
    // Texts of Windows end their lines in CR LF.
    if (each.endsWith('\r')) {
      each.chop(1);
    }
    line->insert(each);
    on_leCommand_returnPressed();
    if (isClosing) {
      return;
    }
    // A line that waits until another has ended is still there; the text of a help request is selected.
    if (!line->hasSelectedText()) {
      line->clear();
    }
  }
  if (!rest.isEmpty()) {
    line->insert(rest);
  }
}

void MainWindow::RunHelp() {
  const std::string before = GetCommandText();
  // F1 takes the road of a typed line, and leaves what was being typed.
  SetCommandText("help");
  on_leCommand_returnPressed();
  if (!before.empty()) {
    SetCommandText(before);
  }
}

void MainWindow::TakeOffer(const std::string& line) {
  SetCommandText(line);
  if (workInput.IsActive()) {
    // The command under way will empty the line.
    offered = line;
  }
}

void MainWindow::TakeVariable(int row) {
  const TVariableRow& variable = ui->twVariables->GetRow(row);
  // In an empty line a picture or a ranking is shown; in a line that was begun the name is what it lacks.
  const bool isEmpty = ui->leCommand->text().isEmpty();
  QString line = ToQString(variable.name);
  if (isEmpty && variable.type == "image") {
    line = "displayimage(" + line + ")";
  } else if (isEmpty && variable.type == "databaseindex") {
    line = "displayindex(" + line + ")";
  }
  InsertIntoCommand(line);
}

void MainWindow::InsertIntoCommand(const QString& text) {
  ui->leCommand->insert(text);
  ui->leCommand->setFocus(Qt::OtherFocusReason);
}

void MainWindow::Interrupt() {
  if (OnInterrupt) {
    OnInterrupt();
  }
}

void MainWindow::FollowPanes() {
  const auto follow = [this](QWidget* widget) {
    QWidget* parent = widget->parentWidget();
    // Margins at the size of the form, before anything was resized.
    const QRect place = widget->geometry();
    followers.push_back({widget, QMargins(place.left(), place.top(), parent->width() - place.left() - place.width(),
                                          parent->height() - place.top() - place.height())});
    parent->installEventFilter(this);
  };
  for (QWidget* widget :
       std::initializer_list<QWidget*>{ui->splitter, ui->twVariables, ui->pteInfo, ui->leCommand, ui->twFeatures,
                                       ui->twClassifiers, ui->twSegmentationMethods}) {
    follow(widget);
  }
  const QList<int> sizes = ui->splitter->sizes();
  ui->splitter->setStretchFactor(0, 1);
  ui->splitter->setStretchFactor(1, 1);
  // One line needs no more than it has.
  ui->gbCommand->setFixedHeight(ui->gbCommand->height());
  // Both would move the panes by a pixel.
  ui->splitter->setSizes(sizes);
}

void MainWindow::ArrangeChildrenOf(const QWidget* parent) {
  for (const auto& [widget, margins] : followers) {
    if (widget->parentWidget() != parent) {
      continue;
    }
    const int widthBefore = widget->width();
    widget->setGeometry(parent->rect().marginsRemoved(margins));
    // The description takes what the table wins or loses; names and types keep the widths that the user gave them.
    if (widget == ui->twVariables) {
      constexpr int kDescription = 2;
      const int width = ui->twVariables->columnWidth(kDescription) + widget->width() - widthBefore;
      ui->twVariables->setColumnWidth(kDescription, std::max(width, 100));
    }
  }
  if (parent == ui->centralWidget) {
    ArrangeSideTables();
  }
}

/// The three boxes stay at the right edge and share what height there is.
void MainWindow::ArrangeSideTables() {
  // The size of the central widget in the form.
  constexpr QSize kForm(1182, 568);
  const int wider = ui->centralWidget->width() - kForm.width();
  const int higher = ui->centralWidget->height() - kForm.height();
  int index = 0;
  // In the form the boxes lie at (1040, 10), (1040, 180) and (1040, 350), each 131 x 161.
  for (QWidget* box : {ui->groupBox, ui->groupBox_2, ui->groupBox_3}) {
    // Thirds of the extra height without a pixel lost to rounding.
    const int above = higher * index / 3;
    const int including = higher * (index + 1) / 3;
    box->setGeometry(1040 + wider, 10 + 170 * index + above, 131, 161 + including - above);
    ++index;
  }
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Resize && watched != ui->leCommand) {
    ArrangeChildrenOf(static_cast<QWidget*>(watched));
    return false;
  }
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
      // The first press closes the list and the next one empties the line.
      if (ui->leCommand->ShowsCandidates()) {
        return false;
      }
      ClearCommandText();
      return true;
    default:
      return false;
  }
}

void MainWindow::keyPressEvent(QKeyEvent* event) {
  if (event->keyCombination() == (Qt::CTRL | Qt::Key_Q)) {
    close();
  } else if (event->keyCombination() == QKeyCombination(Qt::Key_F1)) {
    RunHelp();
  } else {
    QMainWindow::keyPressEvent(event);
  }
}

void MainWindow::closeEvent(QCloseEvent* event) {
  isClosing = true;
  if (workInput.IsActive()) {
    // The window stays for now: SetBusy(false) closes it once the work has ended.
    event->ignore();
    Interrupt();
  } else {
    QMainWindow::closeEvent(event);
  }
}

void MainWindow::showEvent(QShowEvent* event) {
  // Not where the user brings back a minimized window.
  if (!event->spontaneous()) {
    isClosing = false;
  }
  if (followers.empty()) {
    FollowPanes();
    ShrinkToScreen(*this);
  }
  QMainWindow::showEvent(event);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (event->mimeData()->hasUrls()) {
    AcceptAsCopy(*event);
  } else if (event->mimeData()->hasText()) {
    event->acceptProposedAction();
  }
}

void MainWindow::dragMoveEvent(QDragMoveEvent* event) {
  if (event->mimeData()->hasUrls()) {
    AcceptAsCopy(*event);
  }
}

void MainWindow::dropEvent(QDropEvent* event) {
  if (!event->mimeData()->hasUrls()) {
    return;
  }
  AcceptAsCopy(*event);
  const QList<QUrl> urls = event->mimeData()->urls();
  if (urls.isEmpty()) {
    return;
  }
  // Of several files the first one: a command line takes one path.
  const std::string path = base::DroppedPath(FromQString(urls.first().path()));
  // As databases know an image; everything else is taken for a directory, and the controller checks it.
  const bool isImage = path.find(".jpg") != std::string::npos;
  SetCommandText((isImage ? "image=loadimage(\"" : "database=loaddatabase(\"") + path + "\")");
  if (OnFileDropped) {
    OnFileDropped();
  }
}

void MainWindow::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || !ui->twFeatures->geometry().contains(event->position().toPoint())) {
    return;
  }
  // The toolkit deletes the drag, and the drag its data, once the user has let go.
  auto* mime = new QMimeData();
  mime->setText("tessimar/feature");
  auto* drag = new QDrag(this);
  drag->setMimeData(mime);
  drag->exec(Qt::MoveAction);
}
