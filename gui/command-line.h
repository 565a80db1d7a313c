#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <QClipboard>
#include <QLineEdit>
#include <boost/function.hpp>

class QCompleter;
class QStringListModel;

/// What may stand in the command line in place of its bytes from `start` to the cursor.
struct TCandidates {
  std::size_t start = 0;
  std::vector<std::string> candidates;
};

/// The line in which commands are typed. It hands on what is pasted with its line ends, and Tab completes.
class TCommandLine : public QLineEdit {
  Q_OBJECT

 public:
  explicit TCommandLine(QWidget* parent = nullptr);

  /// Asked for what may stand in place of the end of the text before the cursor. Without it Tab moves the focus.
  boost::function<TCandidates(const std::string&)> OnComplete;

  /// True while candidates are shown. Escape then takes them away and nothing else.
  bool ShowsCandidates() const;

 signals:
  /// Text with at least one line end is to be inserted.
  void linesPasted(const QString& text);

 protected:
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void inputMethodEvent(QInputMethodEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  void PasteFrom(QClipboard::Mode mode);
  void Complete();
  void ShowCandidates(const QStringList& candidates);
  void Accept(const QString& candidate);

  QStringListModel* candidates;
  QCompleter* completer;
  /// Where in the text the candidates would begin.
  qsizetype start = 0;
};
