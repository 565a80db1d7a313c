// The report of tessimar-experiment, as a reader and a screen reader meet it.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <QProcess>
#include <QXmlStreamReader>
#include <gtest/gtest.h>

#include "tests/support/experiment-flow.h"

namespace {

namespace filesystem = std::filesystem;

/// What a reader, or a program that reads aloud, meets in a report.
struct TPage {
  std::string error;
  std::vector<int> headingLevels;
  std::size_t pictures = 0;
  std::size_t tables = 0;
  std::size_t captions = 0;
  std::size_t marksOfRelevant = 0;
  std::size_t marksOfOthers = 0;
  std::size_t svgs = 0;
  /// All that is wrong with it.
  std::vector<std::string> faults;
  /// The text without markup.
  std::string text;
};

TPage ReadPage(const std::string& html) {
  TPage page;
  QXmlStreamReader reader(QByteArray::fromStdString(html));
  std::set<std::string> ids;
  bool isStyle = false;
  while (!reader.atEnd()) {
    reader.readNext();
    isStyle = reader.isStartElement() ? reader.name() == u"style" : isStyle && !reader.isEndElement();
    if (reader.isCharacters() && !isStyle) {
      page.text += reader.text().toString().toStdString();
    }
    if (!reader.isStartElement()) {
      continue;
    }
    const std::string name = reader.name().toString().toStdString();
    const auto attributes = reader.attributes();
    if (name.size() == 2 && name[0] == 'h' && name[1] >= '1' && name[1] <= '6') {
      page.headingLevels.push_back(name[1] - '0');
    }
    page.tables += name == "table" ? 1 : 0;
    page.captions += name == "caption" ? 1 : 0;
    page.svgs += name == "svg" ? 1 : 0;
    page.marksOfRelevant += name == "li" && attributes.value("class") == u"yes" ? 1 : 0;
    page.marksOfOthers += name == "li" && attributes.value("class") == u"no" ? 1 : 0;
    if (name == "img") {
      ++page.pictures;
      if (attributes.value("alt").isEmpty() || !attributes.value("src").startsWith(u"data:image/jpeg;base64,/9j/")) {
        page.faults.emplace_back("a picture without its text or its bytes");
      }
    }
    if (name == "th" && !attributes.hasAttribute("scope")) {
      page.faults.emplace_back("a heading of a table without its scope");
    }
    for (const auto& attribute : attributes) {
      const std::string value = attribute.value().toString().toStdString();
      if (attribute.name() == u"id" && !ids.insert(value).second) {
        page.faults.push_back("two elements " + value);
      }
      if ((attribute.name() == u"href" || attribute.name() == u"src") && !value.starts_with("#") &&
          !value.starts_with("data:")) {
        page.faults.push_back("an address outside: " + value);
      }
    }
  }
  page.error = reader.errorString().toStdString();
  return page;
}

/// Expects that a page is well-formed, needs nothing else, and can be found one's way about in.
void ExpectGoodPage(const std::string& html, const TPage& page) {
  EXPECT_EQ(page.error, "");
  EXPECT_EQ(page.faults, std::vector<std::string>());
  EXPECT_EQ(page.captions, page.tables);
  EXPECT_EQ(html.find("http"), std::string::npos);
  EXPECT_EQ(html.find("url("), std::string::npos);
  EXPECT_EQ(html.find("GNUPLOT"), std::string::npos);
  int before = 0;
  for (const int level : page.headingLevels) {
    EXPECT_LE(level, before + 1);
    before = level;
  }
  EXPECT_EQ(std::count(page.headingLevels.begin(), page.headingLevels.end(), 1), 1);
}

TEST_F(TExperimentFlow, TheReportShowsWhatWasBestAndWorst) {
  MakeSixPictures();
  ASSERT_EQ(Run({"photos", "--truth", "tags", "--features", "hsv,hsv+lbp", "--out", "result"}).status, 0);
  const std::string html = FileBytes("result/report.html");
  const TPage page = ReadPage(html);
  ExpectGoodPage(html, page);
  // For each set seven topics with five results each, 3 * 2 + 4 * 3 of them relevant, and seven queries.
  EXPECT_EQ(page.pictures, 2U * 7 * 6);
  EXPECT_EQ(page.marksOfRelevant, 2U * 18);
  EXPECT_EQ(page.marksOfOthers, 2U * 17);
  // Measures, curves and tags; ten measures of two sets as bars, and the curves.
  EXPECT_EQ(page.tables, 3U);
  EXPECT_EQ(page.svgs, 2U * 10 + 1);
  // Ranks, marks and distances as on paper in the first test.
  EXPECT_NE(page.text.find("a: im4.jpg, average precision 0.833\n\nquery im4.jpg\n"
                           "1 \u2713relevant, distance 1.0000 im3.jpg\n"
                           "2 \u2717not relevant, distance 1.5000 im2.jpg\n"
                           "3 \u2713relevant, distance 2.0000 im1.jpg\n"
                           "4 \u2717not relevant, distance 2.0000 im5.jpg\n"
                           "5 \u2717not relevant, distance 2.0000 im6.jpg\n"),
            std::string::npos)
      << page.text;
  // Seven topics are shared among both lists: the best first, and the worst first.
  std::size_t at = page.text.find("hsv: the 4 best queries");
  for (const char* next : {"a: im4.jpg, average precision 0.833", "b: im5.jpg, average precision 0.806",
                           "b: im3.jpg, average precision 0.700", "b: im6.jpg, average precision 0.639",
                           "hsv: the 3 worst queries", "a: im1.jpg, average precision 0.500",
                           "a: im3.jpg, average precision 0.583", "b: im2.jpg, average precision 0.589"}) {
    const std::size_t found = page.text.find(next, at);
    ASSERT_NE(found, std::string::npos) << next;
    at = found;
  }
  // The distances of im1 in color add up to 0.5 + 1 + 1 + 2 + 2 in whatever order the sum has its pictures.
  at = page.text.find("a: im1.jpg", page.text.find("hsv+lbp: the"));
  double total = 0.0;
  for (int i = 0; i < 5; ++i) {
    at = page.text.find("distance ", at) + 9;
    total += std::strtod(page.text.c_str() + at, nullptr);
  }
  const std::string label = "Share of the distance: hsv ";
  at = page.text.find(label, at);
  ASSERT_NE(at, std::string::npos);
  const double share = std::strtod(page.text.c_str() + at + label.size(), nullptr);
  EXPECT_GE(share, 1.0);
  EXPECT_NEAR(share, 100.0 * 6.5 / total, 0.06);
  // Only sums have shares.
  EXPECT_GT(page.text.find(label), page.text.find("hsv+lbp: the"));
}

TEST_F(TExperimentFlow, TheReportTakesAnyNameAndAnyPicture) {
  MakeSixPictures();
  MakePicture("photos/<img src=x>&\"'.jpg", 3, 200, [](int, int) { return kRed; });
  MakePicture("photos/wide \xC3\xBC\xFF\n\x01.jpg", 900, 2, [](int, int) { return kRed; });
  MakeFile("photos/im7.jpg", "no picture");
  MakeFile("more.tsv",
           "<img src=x>&\"'.jpg\t</h3><script>&amp;\nim7.jpg\t</h3><script>&amp;\nwide "
           "\xC3\xBC\xFF%0A\x01.jpg\t</h3><script>&amp;\n");
  const TOutcome outcome =
      Run({"photos", "--truth", "tags", "--truth", "more.tsv", "--features", "hsv", "--out", "result"});
  ASSERT_EQ(outcome.status, 3) << outcome.errors;
  const std::string html = FileBytes("result/report.html");
  const TPage page = ReadPage(html);
  ExpectGoodPage(html, page);
  EXPECT_EQ(html.find("<script"), std::string::npos);
  EXPECT_NE(page.text.find("</h3><script>&amp;: <img src=x>&\"'.jpg, average precision"), std::string::npos);
  EXPECT_NE(page.text.find("wide \xC3\xBC\uFFFD\u240A\u2401.jpg"), std::string::npos) << page.text;
  // The one that cannot be read leaves its frame empty, is last and relevant.
  EXPECT_NE(page.text.find("im7.jpg cannot be read8 \u2713relevant, distance \u221e im7.jpg"), std::string::npos)
      << page.text;
  EXPECT_NE(page.text.find("1 file or line was skipped;"), std::string::npos) << page.text;
  EXPECT_NE(page.text.find("There is one set only"), std::string::npos);
}

TEST_F(TExperimentFlow, TheReportSaysWhichSetIsBetter) {
  ASSERT_EQ(QProcess::execute(LAY_OUT_SAMPLES, {"."}), 0);
  ASSERT_EQ(Run({"photos", "--truth", "tags", "--out", "result"}).status, 0);
  const std::string html = FileBytes("result/report.html");
  const TPage page = ReadPage(html);
  ExpectGoodPage(html, page);
  // The numbers of samples/experiment.md, the first of them turned round.
  for (const char* sentence :
       {"hsv is better than lbp by 0.014 [-0.020, 0.048], p = 0.4183 (p = 0.4183 after Holm's correction). That may be "
        "luck: of 110 topics hsv does better on 63, as well on 0, worse on 47.",
        "hsv+lbp is better than hsv by 0.017 [-0.001, 0.034], p = 0.0506 (p = 0.1012 after",
        "hsv+lbp is better than lbp by 0.031 [0.007, 0.055], p = 0.0116 (p = 0.0349 after Holm's correction). That is "
        "more than luck: of 110 topics hsv+lbp does better on 70, as well on 0, worse on 40."}) {
    EXPECT_NE(page.text.find(sentence), std::string::npos) << sentence;
  }
  // Three sets, ten best and ten worst queries, each with its first eight results.
  EXPECT_EQ(page.pictures, 3U * 20 * 9);
  EXPECT_EQ(page.marksOfRelevant + page.marksOfOthers, 3U * 20 * 8);
  // Thumbnails and not photographs.
  EXPECT_LT(html.size(), 4U << 20);
}

TEST_F(TExperimentFlow, TheReportDoesNotDependOnTheUserAndDoesWithoutGnuplot) {
  MakeSixPictures();
  ASSERT_EQ(Run({"photos", "--truth", "tags", "--out", "result"}).status, 0);
  const std::string html = FileBytes("result/report.html");
  EXPECT_NE(html.find("<svg class=\"curves\""), std::string::npos);
  EXPECT_EQ(html.find("not drawn"), std::string::npos);
  MakeFile("home/.gnuplot", "set title 'mine'\nset grid lw 5\nset decimalsign ','\n");
  environment.insert("HOME", QString::fromStdString(filesystem::absolute("home").string()));
  environment.insert("LC_ALL", "de_DE.UTF-8");
  environment.insert("GNUTERM", "png");
  environment.insert("TZ", "Asia/Tokyo");
  ASSERT_EQ(Run({"photos", "--truth", "tags", "--out", "other"}).status, 0);
  EXPECT_EQ(FileBytes("other/report.html"), html);
  environment.insert("PATH", QString::fromStdString(filesystem::absolute("home").string()));
  const TOutcome outcome = Run({"photos", "--truth", "tags", "--out", "other"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.errors, "");
  const TPage page = ReadPage(FileBytes("other/report.html"));
  ExpectGoodPage(FileBytes("other/report.html"), page);
  EXPECT_NE(page.text.find("The curves are not drawn: gnuplot"), std::string::npos);
  EXPECT_EQ(page.svgs, 3U * 10);
}

TEST_F(TExperimentFlow, TheReportOfOtherProgramsRunsHasNoPictures) {
  MakeFile("qrels", "q1 0 d1 1\nq2 0 d1 1\n");
  MakeFile("a.run", "q1 Q0 d1 1 1 <a>\nq2 Q0 d1 1 1 <a>\n");
  MakeFile("b.run", "q1 Q0 d2 1 2 'b&\nq1 Q0 d1 2 1 'b&\nq2 Q0 d1 1 1 'b&\n");
  ASSERT_EQ(Run({"--measure", "a.run", "b.run", "--qrels", "qrels", "--out", "m"}).status, 0);
  const std::string html = FileBytes("m/report.html");
  const TPage page = ReadPage(html);
  ExpectGoodPage(html, page);
  EXPECT_EQ(page.pictures, 0U);
  EXPECT_EQ(page.marksOfRelevant, 0U);
  // Differences 1/2 and 0: of the four patterns of signs all are as large.
  EXPECT_NE(page.text.find("<a> is better than 'b& by 0.250 [0.000, 0.500], p = 1.0000. That may be luck: of 2 topics "
                           "<a> does better on 1, as well on 1, worse on 0."),
            std::string::npos)
      << page.text;
}

TEST_F(TExperimentFlow, AReportOfPicturesThatHaveChangedIsRefused) {
  MakeSixPictures();
  ASSERT_EQ(Run({"photos", "--truth", "tags", "--out", "o"}).status, 0);
  const std::map<std::string, std::string> before = Results("o");
  MakeColumns("photos/im1.jpg", {kBlue, kRed, kRed, kRed});
  const TOutcome outcome = Run({"photos", "--truth", "tags", "--out", "o", "--step", "report"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors,
            "tessimar-experiment: 'photos/im1.jpg' has changed since its features were extracted; run the step extract "
            "again\n");
  EXPECT_EQ(Results("o"), before);
}

}  // namespace
