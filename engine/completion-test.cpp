#include "engine/completion.h"

#include <string>
#include <vector>

#include <QApplication>
#include <QCompleter>
#include <QKeyEvent>
#include <gtest/gtest.h>

#include "tests/support/workbench.h"

namespace {

using TTexts = std::vector<std::string>;

class TCompletionTest : public testing::Test {
 protected:
  TCompletionTest() {
    MakeFile("photos/One.jpg", "");
    MakeFile("photos/one two.png", "");
    MakeFile("photos/a,b.jpg", "");
    MakeFile("photos/.hidden", "");
    MakeFile("phone.txt", "");
    workbench.Run("c = createclassifier(\"neural\")");
    workbench.Run("color = createclassifier(\"svm\")");
  }

  TTexts Candidates(const std::string& before) { return workbench.window.OnComplete(before).candidates; }

  TWorkbench workbench;
};

TEST_F(TCompletionTest, OffersCommandsAndVariablesOutsideOfQuotes) {
  EXPECT_EQ(Candidates("DisplayIm"), TTexts{"displayimage("});
  EXPECT_EQ(Candidates("a = loadi"), TTexts{"loadimage("});
  EXPECT_EQ(Candidates("c"), (TTexts{"c", "color", "createclassifier("}));
  EXPECT_EQ(Candidates("getclassifiersetting( c"), (TTexts{"c", "color"}));
  EXPECT_EQ(Candidates("he"), TTexts{"help"});
  EXPECT_EQ(Candidates("help loadm"), TTexts{"loadmirflickrtags"});
  EXPECT_EQ(Candidates("nothing"), TTexts());
  EXPECT_EQ(workbench.window.OnComplete("x = co").start, 4u);
  EXPECT_EQ(workbench.window.OnComplete("search(a,co").start, 9u);
}

TEST_F(TCompletionTest, OffersWhatTheCommandTakesInsideOfQuotes) {
  EXPECT_EQ(Candidates("UpdateFeature(db, \""), (TTexts{"hsv", "lbp"}));
  EXPECT_EQ(Candidates("segmentimage(a,\"S"), TTexts{"sift"});
  EXPECT_EQ(Candidates("x = createclassifier(\"ne"), (TTexts{"nearest", "neural"}));
  EXPECT_EQ(Candidates("setclassifiersetting(color, \""), TTexts{"kernel"});
  EXPECT_EQ(Candidates("setclassifiersetting(none, \""), TTexts());
  EXPECT_EQ(Candidates("setclassifiersetting(color, \"kernel\", \""), TTexts());
}

TEST_F(TCompletionTest, OffersFilesThatTheLanguageCanSay) {
  EXPECT_EQ(Candidates("a = loadimage(\"pho"), (TTexts{"phone.txt", "photos/"}));
  EXPECT_EQ(Candidates("d = loaddatabase(\"pho"), TTexts{"photos/"});
  EXPECT_EQ(Candidates("a = loadimage(\"photos/"), (TTexts{"photos/One.jpg", "photos/one two.png"}));
  EXPECT_EQ(Candidates("a = loadimage(\"Photos\\one "), TTexts{"Photos\\one two.png"});
  EXPECT_EQ(Candidates("a = loadimage(\"photos/."), TTexts{"photos/.hidden"});
  EXPECT_EQ(Candidates("a = loadimage(\"none/"), TTexts());
}

TEST_F(TCompletionTest, TabPutsASingleCandidateInAndShowsSeveral) {
  auto* line = workbench.window.findChild<TCommandLine*>("leCommand");
  const auto press = [&](QWidget* widget, int key, const QString& text = QString()) {
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, text);
    QApplication::sendEvent(widget, &event);
  };
  QWidget* popup = line->findChild<QCompleter*>()->popup();
  workbench.window.show();

  workbench.window.SetCommandText("displayim(\xc3\xa4)");
  line->setCursorPosition(9);
  press(line, Qt::Key_Tab);
  EXPECT_EQ(workbench.window.GetCommandText(), "displayimage((\xc3\xa4)");
  EXPECT_FALSE(line->ShowsCandidates());

  workbench.window.SetCommandText("\xc3\xa4 = create");
  press(line, Qt::Key_Tab);
  EXPECT_EQ(workbench.window.GetCommandText(), "\xc3\xa4 = createclassifier(");

  workbench.window.SetCommandText("reset(c");
  press(line, Qt::Key_Tab);
  ASSERT_TRUE(line->ShowsCandidates());
  press(popup, Qt::Key_Escape);
  EXPECT_FALSE(line->ShowsCandidates());
  EXPECT_EQ(workbench.window.GetCommandText(), "reset(c") << "Escape takes away the candidates only";
  press(line, Qt::Key_Tab);
  press(popup, Qt::Key_Down);
  press(popup, Qt::Key_Return);
  EXPECT_FALSE(line->ShowsCandidates());
  EXPECT_EQ(workbench.window.GetCommandText(), "reset(color");

  workbench.window.SetCommandText("reset(c");
  press(line, Qt::Key_Tab);
  press(popup, Qt::Key_O, "o");
  EXPECT_EQ(workbench.window.GetCommandText(), "reset(co");
  press(popup, Qt::Key_Tab);
  EXPECT_EQ(workbench.window.GetCommandText(), "reset(color");

  workbench.window.SetCommandText("nothing");
  press(line, Qt::Key_Tab);
  EXPECT_EQ(workbench.window.GetCommandText(), "nothing");
  EXPECT_EQ(workbench.GetOutput().find("reset"), std::string::npos) << "nothing ran";
}

}  // namespace
