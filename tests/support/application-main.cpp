#include <QApplication>
#include <gtest/gtest.h>

#include "base/text.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  base::UseClassicNumbers();
  return RUN_ALL_TESTS();
}
