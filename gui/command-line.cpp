#include "gui/command-line.h"

#include <memory>
#include <optional>

#include <QAbstractItemView>
#include <QAction>
#include <QCompleter>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QStringListModel>

#include "gui/eight-bit-text.h"

namespace {

// The toolkit's own limit is 32,767, less than a long path in a script of generated lines may need.
constexpr int kMostCharacters = 1 << 20;

/// The clipboard that a key pastes from; nothing for any other key.
std::optional<QClipboard::Mode> PastedBy(const QKeyEvent& key) {
  // Pastes the selection in the toolkit's line editors; it is no standard key that could be asked for.
  if (key.keyCombination() == (Qt::CTRL | Qt::SHIFT | Qt::Key_Insert)) {
    return QClipboard::Selection;
  }
  return key.matches(QKeySequence::Paste) ? std::optional(QClipboard::Clipboard) : std::nullopt;
}

}  // namespace

TCommandLine::TCommandLine(QWidget* parent)
    : QLineEdit(parent), candidates(new QStringListModel(this)), completer(new QCompleter(candidates, this)) {
  setMaxLength(kMostCharacters);
  // Not setCompleter(), which would propose something with every key.
  completer->setWidget(this);
  completer->setCompletionMode(QCompleter::UnfilteredPopupCompletion);
  completer->setMaxVisibleItems(12);
  completer->popup()->setAccessibleName("Candidates");
  connect(completer, qOverload<const QString&>(&QCompleter::activated), this, &TCommandLine::Accept);
  // Only while the list is open, and not for text that the program sets.
  connect(this, &QLineEdit::textEdited, this, [this] {
    if (ShowsCandidates()) {
      Complete();
    }
  });
}

bool TCommandLine::ShowsCandidates() const {
  return completer->popup()->isVisible();
}

bool TCommandLine::event(QEvent* event) {
  // Before the toolkit takes the key for moving the focus.
  if (event->type() == QEvent::KeyPress && OnComplete && !ShowsCandidates()) {
    const auto* key = static_cast<QKeyEvent*>(event);
    if (key->keyCombination() == QKeyCombination(Qt::Key_Tab)) {
      Complete();
      return true;
    }
  }
  return QLineEdit::event(event);
}

void TCommandLine::keyPressEvent(QKeyEvent* event) {
  if (ShowsCandidates()) {
    // The completer does with these what belongs to its popup, if they are not taken here.
    for (const int key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape, Qt::Key_Tab, Qt::Key_Backtab}) {
      if (event->key() == key) {
        event->ignore();
        return;
      }
    }
  }
  if (const auto mode = PastedBy(*event)) {
    PasteFrom(*mode);
  } else {
    QLineEdit::keyPressEvent(event);
  }
}

void TCommandLine::inputMethodEvent(QInputMethodEvent* event) {
  // Input methods deliver pasted and dictated text this way.
  if (event->commitString().contains('\n')) {
    emit linesPasted(event->commitString());
  } else {
    QLineEdit::inputMethodEvent(event);
  }
}

void TCommandLine::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() == Qt::MiddleButton && QGuiApplication::clipboard()->supportsSelection()) {
    deselect();
    PasteFrom(QClipboard::Selection);
  } else {
    QLineEdit::mouseReleaseEvent(event);
  }
}

void TCommandLine::contextMenuEvent(QContextMenuEvent* event) {
  const std::unique_ptr<QMenu> menu(createStandardContextMenu());
  for (QAction* action : menu->actions()) {
    // Nothing else tells the toolkit's actions apart.
    if (action->text().startsWith(QLineEdit::tr("&Paste"))) {
      action->disconnect(SIGNAL(triggered(bool)));
      connect(action, &QAction::triggered, this, [this] { PasteFrom(QClipboard::Clipboard); });
    }
  }
  menu->exec(event->globalPos());
}

void TCommandLine::PasteFrom(QClipboard::Mode mode) {
  const QString text = QGuiApplication::clipboard()->text(mode);
  if (text.contains('\n')) {
    emit linesPasted(text);
  } else {
    insert(text);
  }
}

void TCommandLine::Complete() {
  const QString before = text().left(cursorPosition());
  const std::string bytes = FromQString(before);
  // What stands behind the cursor plays no part and stays.
  const TCandidates completion = OnComplete(bytes);
  // The controller counts bytes of UTF-8, the line editor counts UTF-16 units.
  start = ToQString(bytes.substr(0, completion.start)).size();
  QStringList texts;
  for (const std::string& candidate : completion.candidates) {
    texts << ToQString(candidate);
  }
  // While the list is open a single candidate stays in it: typing on would otherwise insert what nobody chose.
  if (texts.size() == 1 && !ShowsCandidates()) {
    Accept(texts.first());
  } else {
    ShowCandidates(texts);
  }
}

void TCommandLine::ShowCandidates(const QStringList& texts) {
  const bool isComplete = texts.size() == 1 && texts.first() == text().mid(start, cursorPosition() - start);
  if (texts.isEmpty() || isComplete) {
    completer->popup()->hide();
    return;
  }
  candidates->setStringList(texts);
  QRect place = cursorRect();
  // 40 pixels for the scroll bar and the frame.
  place.setWidth(qMin(width(), completer->popup()->sizeHintForColumn(0) + 40));
  completer->complete(place);
  completer->popup()->setCurrentIndex(completer->completionModel()->index(0, 0));
}

void TCommandLine::Accept(const QString& candidate) {
  setSelection(static_cast<int>(start), cursorPosition() - static_cast<int>(start));
  insert(candidate);
}
