#include "tests/support/workbench.h"

#include <QDialog>
#include <QTableWidget>

#include "gui/eight-bit-text.h"

TWorkbench::TWorkbench()
    : view(window), scope([this](QDialog& dialog) { dialogs.push_back(dialog.grab().toImage()); }), controller(view) {}

std::string TWorkbench::Run(const std::string& line) {
  const std::string& output = view.output;
  const std::size_t start = output.size() + line.size() + 3;
  controller.ExecuteCommand(line);
  std::string answer;
  for (std::size_t position = start; position < output.size();) {
    const std::size_t end = output.find('\n', position);
    answer += output.substr(position + 2, end - position - 1);
    position = end + 1;
  }
  return answer;
}

std::vector<std::string> TWorkbench::GetColumn(int column) const {
  const auto* table = window.findChild<QTableWidget*>("twVariables");
  std::vector<std::string> texts;
  texts.reserve(static_cast<std::size_t>(table->rowCount()));
  for (int row = 0; row < table->rowCount(); ++row) {
    texts.push_back(FromQString(table->item(row, column)->text()));
  }
  return texts;
}
