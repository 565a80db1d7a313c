#include "engine/command-parser.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

/// What the parser makes of a line, as one text: "call f <a> <b>", "d := call f <a>", "d := s", or "! " and the
/// message.
std::string Parsed(const std::string& line) {
  TCommandParser parser;
  std::string messages;
  parser.SetOutput([&messages](const std::string& text) { messages += "! " + text; });
  const auto command = parser.Parse(line);
  if (!command) {
    return messages;
  }
  std::string text = messages;
  if (command->Type == "assign") {
    text += command->Destination + " := " + command->Source + command->Function;
  } else {
    text += command->Type == "assignfunction" ? command->Destination + " := " : command->Destination;
    text += (command->Type == "function" || command->Type == "assignfunction" ? "call " : command->Type + "? ") +
            command->Source + command->Function;
  }
  for (const std::string& parameter : command->Parameters) {
    text += " <" + parameter + ">";
  }
  return text;
}

struct TCase {
  std::string line;
  std::string parsed;
};

void ExpectParsed(const std::vector<TCase>& cases) {
  for (const TCase& each : cases) {
    EXPECT_EQ(Parsed(each.line), each.parsed) << "of the line " << each.line.substr(0, 60);
  }
}

constexpr const char* kSyntaxError = "! Syntax error while parsing function call";
constexpr const char* kNoDestination = "! Destination variable not specified";
constexpr const char* kNoSource = "! Source variable not specified";

}  // namespace

TEST(TCommandParser, CallsHaveANameAndParameters) {
  ExpectParsed({
      {"reset()", "call reset"},
      {"reset( )", "call reset"},
      {"DisplayIndex(X, True)", "call displayindex <x> <true>"},
      {"f(a,b,c)", "call f <a> <b> <c>"},
      {"f(a,)", "call f <a> <>"},
      {"f(,a)", "call f <> <a>"},
      {"f(,)", "call f <> <>"},
      {"f(a) trailing words", "call f <a>"},
      {"f(a)(b)", "call f <a>"},
      {"f(a))", "call f <a>"},
      {"f((a)", "call f <(a>"},
      {"# no comment(a)", "call #nocomment <a>"},
      {"// f(a)", "call //f <a>"},
      {"x=loadimage(\"a.jpg\")", "x := call loadimage <\"a.jpg\">"},
      {"x=f()", "x := call f"},
      {"my.var-1/2=f(a,b)", "my.var-1/2 := call f <a> <b>"},
  });
}

TEST(TCommandParser, RightHandSideWithoutBracketIsACopy) {
  ExpectParsed({
      {"b=a", "b := a"},
      {"B = A", "b := a"},
      {"a=a", "a := a"},
      {"a=f", "a := f"},
      {"a=b=c", "a := b=c"},
      {"a==", "a := ="},
      {"a=f)", "a := f)"},
      {"f(x)=a", "f(x) := a"},
      {"a=1,2", "a := 1,2"},
  });
}

TEST(TCommandParser, LinesWithoutAFormAreRefused) {
  ExpectParsed({
      {"", kSyntaxError},       {"   \t ", kSyntaxError},     {"reset", kSyntaxError}, {"HELP", kSyntaxError},
      {"()", kSyntaxError},     {")(", kSyntaxError},         {"f(", kSyntaxError},    {"f)", kSyntaxError},
      {"f)(", kSyntaxError},    {"f)(a)", kSyntaxError},      {"(a)", kSyntaxError},   {" ( a ) ", kSyntaxError},
      {"a=f(", kSyntaxError},   {"a=(b)", kSyntaxError},      {"a=f)(", kSyntaxError}, {"a=(", kSyntaxError},
      {"=f()", kNoDestination}, {" \t= f()", kNoDestination}, {"=", kNoDestination},   {"==a", kNoDestination},
      {"a=", kNoSource},        {"a =  \t", kNoSource},       {"f(x)=", kNoSource},    {"/*", kSyntaxError},
  });
}

TEST(TCommandParser, BlanksAndTabsOutsideQuotesAndTheCaseOfLettersDoNotCount) {
  ExpectParsed({
      {"A = LoadImage( \"x y.jpg\" )", "a := call loadimage <\"x y.jpg\">"},
      {"a=loadimage(\"x y.jpg\")", "a := call loadimage <\"x y.jpg\">"},
      {"\t load image\t(\"a\tb  c\" , d e )", "call loadimage <\"a\tb  c\"> <de>"},
      {"loadimage(\"C:\\Dir\\A.JPG\")", "call loadimage <\"c:\\dir\\a.jpg\">"},
      {"loadimage(\" a \")", "call loadimage <\" a \">"},
      {"f(\"a\" \"b c\")", "call f <\"a\"\"b c\">"},
      // Parameters lose other white space at their ends; elsewhere it is text.
      {"f(\r\n a \v,\f b\vc )\r", "call f <a> <b\vc>"},
      {"a\r=b\n", "a\r := b\n"},
      {"LOAD\xc3\x84(\"\xc3\x84\xff\")", "call load\xc3\x84 <\"\xc3\x84\xff\">"},
  });
}

TEST(TCommandParser, QuotesProtectNothingButBlanks) {
  ExpectParsed({
      {"loadimage(\"a=b.jpg\")", "loadimage(\"a := b.jpg\")"},
      {"x=loadimage(\"a=b.jpg\")", "x := call loadimage <\"a=b.jpg\">"},
      {"loadimage(\"a,b.jpg\")", "call loadimage <\"a> <b.jpg\">"},
      {"loadimage(\"a, b.jpg\")", "call loadimage <\"a> <b.jpg\">"},
      {"loadimage(\"a)b.jpg\")", "call loadimage <\"a>"},
      {"loadimage(\"a(b.jpg\")", "call loadimage <\"a(b.jpg\">"},
      {"\")\"f(a)", kSyntaxError},
  });
}

TEST(TCommandParser, AnOddQuotePairsUpFromTheRight) {
  ExpectParsed({
      {"a = f(\"x)", "a  := call  f <\"x>"},
      {"f(\"x y)", "call f <\"xy>"},
      {"a b (\"c d\" , e\" f g)", "call a b  <\"cd\"> <e\"fg>"},
      {" = f(\"x)", "  := call  f <\"x>"},
      {"\"", kSyntaxError},
  });
}

TEST(TCommandParser, ALineOfAMegabyteIsALineLikeAnyOther) {
  const std::string name(1 << 20, 'x');
  EXPECT_EQ(Parsed("f(\"" + name + "\")"), "call f <\"" + name + "\">");
  EXPECT_EQ(Parsed(name), kSyntaxError);
  std::string parameters = "f(";
  std::string expected = "call f";
  for (int i = 0; i < 100000; ++i) {
    parameters += "a ,";
    expected += " <a>";
  }
  EXPECT_EQ(Parsed(parameters + ")"), expected + " <>");
}

TEST(TCommandParser, WithoutAnOutputARefusalIsSilent) {
  EXPECT_FALSE(TCommandParser().Parse("nonsense"));
}
