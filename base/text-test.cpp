#include "base/text.h"

#include <clocale>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "base/format-string.h"
#include "base/shared-text.h"
#include "tests/support/scratch-directory.h"

namespace {

/// Another country's locale for the whole process as long as the object lives. Where the system has none, it is
/// compiled into the working directory if the system has the means.
class TForeignLocale {
 public:
  explicit TForeignLocale(const std::string& name) {
    if (std::setlocale(LC_ALL, name.c_str()) == nullptr) {
      const std::string command =
          "localedef -i " + name.substr(0, name.find('.')) + " -f UTF-8 ./" + name + " >/dev/null 2>&1";
      [[maybe_unused]] const int status = std::system(command.c_str());
      setenv("LOCPATH", ".", 1);
      isSet = std::setlocale(LC_ALL, name.c_str()) != nullptr;
      unsetenv("LOCPATH");
    }
  }
  ~TForeignLocale() { std::setlocale(LC_ALL, "C"); }
  TForeignLocale(const TForeignLocale&) = delete;
  TForeignLocale& operator=(const TForeignLocale&) = delete;

  bool isSet = true;
};

}  // namespace

TEST(FormatString, TextsOfEveryLengthComeBackWhole) {
  for (const std::size_t length : {0, 1, 15, 16, 255, 256, 1023, 1024, 4096, 1 << 20}) {
    const std::string text(length, 'x');
    EXPECT_EQ(FormatString("%s", text.c_str()), text);
    EXPECT_EQ(FormatString("<%s>%d", text.c_str(), -7), "<" + text + ">-7");
  }
}

TEST(FormatString, PercentSignsInArgumentsAreText) {
  EXPECT_EQ(FormatString("Function '%s' not found", "%n%s%d"), "Function '%n%s%d' not found");
  EXPECT_EQ(FormatString("%d%%", 50), "50%");
}

TEST(FormatString, NumbersHaveAPointInEveryCountry) {
  const TScratchDirectory scratch;
  const TForeignLocale german("de_DE.UTF-8");
  if (!german.isSet) {
    GTEST_SKIP() << "The system neither has the locale de_DE.UTF-8 nor can make it.";
  }
  ASSERT_EQ(FormatString("%.2f", 0.5), "0,50") << "the locale must be in force for this test to show anything";
  base::UseClassicNumbers();
  EXPECT_EQ(FormatString("%.2f", 0.5), "0.50");
  EXPECT_EQ(FormatString("%.17g", 1234567.25), "1234567.25");
  EXPECT_EQ(std::strtod("0.25", nullptr), 0.25);
}

TEST(FoldCase, OnlyTheLettersOfAsciiChange) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", ""},
      {"LoadImage(\"C:\\Dir\\A.JPG\")", "loadimage(\"c:\\dir\\a.jpg\")"},
      {"@AZ[`az{", "@az[`az{"},
      {"\xc3\x84PFEL", "\xc3\x84pfel"},
      {std::string("\xff\xdd\0Z", 4), std::string("\xff\xdd\0z", 4)},
  };
  for (const auto& [text, folded] : cases) {
    EXPECT_EQ(base::FoldCase(text), folded);
  }
}

TEST(FoldCase, ACapitalIKeepsItsDotAwayInTurkey) {
  const TScratchDirectory scratch;
  const TForeignLocale turkish("tr_TR.UTF-8");
  if (!turkish.isSet) {
    GTEST_SKIP() << "The system neither has the locale tr_TR.UTF-8 nor can make it.";
  }
  EXPECT_EQ(base::FoldCase("LOADIMAGE"), "loadimage");
}

TEST(Trim, WhiteSpaceGoesAtBothEndsAndNowhereElse) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", ""},
      {" \t\n\v\f\r ", ""},
      {"a", "a"},
      {"\t a b\r\n", "a b"},
      // A no-break space, in UTF-8 and as a single byte, is a letter like any other.
      {"\xc2\xa0x\xa0", "\xc2\xa0x\xa0"},
      {"\x08x\x0e", "\x08x\x0e"},
  };
  for (const auto& [text, trimmed] : cases) {
    EXPECT_EQ(base::Trim(text), trimmed);
  }
}

TEST(SkipByteOrderMark, GoesOnceAndAtTheBeginningOnly) {
  EXPECT_EQ(base::SkipByteOrderMark("\xef\xbb\xbf"
                                    "a"),
            "a");
  EXPECT_EQ(base::SkipByteOrderMark("\xef\xbb\xbf\xef\xbb\xbf"), "\xef\xbb\xbf");
  for (const char* text : {"", "a", "\xef\xbb", "a\xef\xbb\xbf"}) {
    EXPECT_EQ(base::SkipByteOrderMark(text), text);
  }
}

TEST(Join, SeparatorsStandOnlyBetweenTexts) {
  EXPECT_EQ(base::Join(std::vector<std::string>(), ", "), "");
  EXPECT_EQ(base::Join(std::vector<std::string>{"hsv"}, ", "), "hsv");
  EXPECT_EQ(base::Join(std::vector<std::string>{"", "lbp", ""}, ", "), ", lbp, ");
}

TEST(EscapeField, TabsAndLineFeedsHideAndComeBack) {
  EXPECT_EQ(base::EscapeField("a\tb\nc\\n"), "a\\tb\\nc\\\\n");
  for (const char* text : {"", "a\tb\nc\\n", "\\", "\n\n", "plain"}) {
    EXPECT_EQ(base::UnescapeField(base::EscapeField(text)), text);
  }
  // What nobody wrote gives a text all the same.
  EXPECT_EQ(base::UnescapeField("a\\qb\\"), "aqb\\");
}

TEST(TSharedText, EqualTextsAreOneThatStays) {
  base::TSharedText first;
  EXPECT_EQ(first.Get(), "");
  first = "grass";
  const std::string* const place = &first.Get();
  std::vector<base::TSharedText> others(10000);
  for (std::size_t i = 0; i < others.size(); ++i) {
    others[i] = std::to_string(i);
    EXPECT_EQ(others[i].Get(), std::to_string(i));
  }
  base::TSharedText second;
  second = std::string("gra") + "ss";
  EXPECT_EQ(&second.Get(), place);
  first = "sea";
  EXPECT_EQ(second.Get(), "grass");
  second = "";
  EXPECT_EQ(&second.Get(), &base::TSharedText().Get());
}
