#include "experiments/report-concepts.h"

#include <string>
#include <vector>

#include <QXmlStreamReader>
#include <gtest/gtest.h>

#include "tests/support/scratch-directory.h"
#include "tests/support/test-pictures.h"

namespace {

std::size_t CountOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t place = text.find(part); place != std::string::npos; place = text.find(part, place + 1)) {
    ++count;
  }
  return count;
}

/// A picture of 8 x 4 in two cells, of which the first so many are positive.
TAskedPicture Asked(std::uint32_t picture, bool isCarrier, int positive) {
  return {picture, isCarrier, 8, 4, {{0, 0, 4, 4, 0.5, positive > 0}, {4, 0, 4, 4, -0.5, positive > 1}}};
}

void ExpectWellFormed(const std::string& body) {
  QXmlStreamReader reader("<section>" + QByteArray::fromStdString(body) + "</section>");
  while (!reader.atEnd()) {
    reader.readNext();
  }
  EXPECT_FALSE(reader.hasError()) << reader.errorString().toStdString() << "\n" << body;
}

}  // namespace

TEST(ConceptSection, DrawsThePicturesWithTheMostAndTheFewestRightSegments) {
  const TScratchDirectory directory;
  TPictureCollection collection;
  collection.location = "photos/";
  for (int i = 0; i < 8; ++i) {
    collection.names.push_back("im" + std::to_string(i) + ".jpg");
    MakePicture("photos/" + collection.names.back(), 8, 4, [](int x, int) {
      return x < 4 ? TColor{255, 0, 0} : TColor{0, 255, 0};
    });
  }
  // Right segments: 2, 1, 0, 2 of the carriers, 2, 1, 0, 2 of the others. Ties stand in the order of the collection.
  TMeasuredConcept measured = {"<sky> & sea", "neural", 7, {}, 0.25, 0.875, 0.5};
  for (const int positive : {2, 1, 0, 2}) {
    measured.asked.push_back(Asked(static_cast<std::uint32_t>(measured.asked.size()), true, positive));
  }
  for (const int positive : {0, 1, 2, 0}) {
    measured.asked.push_back(Asked(static_cast<std::uint32_t>(measured.asked.size()), false, positive));
  }
  TMeasuredConcepts concepts = {"hsv+lbp", 1, {measured, measured}, {}};
  concepts.concepts[1].classifier = "svm";
  concepts.concepts[1].meanSquareError.reset();
  const TReportSection section = FormatConceptSection(concepts, collection);
  EXPECT_EQ(section.heading, "Concepts");
  const std::string& body = section.body;
  ExpectWellFormed(body);
  EXPECT_NE(body.find("1 of 8 pictures could not be used"), std::string::npos);
  EXPECT_EQ(CountOf(body, "<h3>&lt;sky&gt; &amp; sea</h3>"), 1u);
  EXPECT_EQ(CountOf(body, "<th scope=\"row\"><span class=\"words\">&lt;sky&gt; &amp; sea</span></th>"), 2u);
  // By hand: 5 true positives, 3 false negatives, 3 false positives, 5 true negatives.
  const std::string figures =
      "<td>7</td><td>8</td><td>5</td><td>3</td><td>5</td><td>3</td><td>0.875</td><td>0.500</td>";
  EXPECT_NE(body.find("<td>neural</td>" + figures + "<td>0.250000</td>"), std::string::npos) << body;
  EXPECT_NE(body.find("<td>svm</td>" + figures + "<td>none</td>"), std::string::npos) << body;
  std::vector<std::string> drawn;
  for (std::size_t place = body.find("aria-label=\"im"); place != std::string::npos;
       place = body.find("aria-label=\"im", place + 1)) {
    drawn.push_back(body.substr(place + 12, 3));
  }
  EXPECT_EQ(drawn, (std::vector<std::string>{"im0", "im3", "im4", "im6", "im2", "im5", "im0", "im3", "im4", "im6",
                                             "im2", "im5"}));
  EXPECT_NE(body.find("aria-label=\"im2.jpg carries &lt;sky&gt; &amp; sea; 0 of 2 segments positive, 0 right\">"),
            std::string::npos);
  EXPECT_NE(body.find("im5.jpg does not carry &lt;sky&gt; &amp; sea; 1 of 2 segments positive, 1 right\">"
                      "<use href=\"#concept-picture-5\"/><path class=\"cells-under\" d=\"M0 0h4v4h-4zM4 0h4v4h-4z\"/>"
                      "<path class=\"cells\" d=\"M0 0h4v4h-4zM4 0h4v4h-4z\"/>"
                      "<path class=\"found-under\" d=\"M2 2h0\"/><path class=\"found\" d=\"M2 2h0\"/></svg>"),
            std::string::npos)
      << body;
  // Each picture is there once, and nothing is fetched or run.
  EXPECT_EQ(CountOf(body, "href=\"data:image/jpeg;base64,/9j/"), 6u);
  EXPECT_EQ(CountOf(body, "http"), 0u);
  EXPECT_EQ(CountOf(body, "<script"), 0u);
}

TEST(ConceptSection, FewPicturesStandInOneListOnlyAndAMissingOneLeavesItsOutlines) {
  const TScratchDirectory directory;
  TPictureCollection collection;
  collection.location = "photos/";
  collection.names = {"a.jpg", "b.jpg", "c.jpg"};
  TMeasuredConcept measured = {"t", "nearest", 3, {Asked(0, true, 2), Asked(1, true, 1), Asked(2, false, 2)}, {}, 0, 0};
  const std::string body = FormatConceptSection({"hsv", 0, {measured}, {}}, collection).body;
  ExpectWellFormed(body);
  EXPECT_EQ(CountOf(body, "<figure "), 3u);
  EXPECT_EQ(CountOf(body, "<use "), 0u);
  EXPECT_EQ(CountOf(body, "class=\"cells\""), 3u);
  EXPECT_LT(body.find("b.jpg"), body.find("The fewest"));
  EXPECT_LT(body.find("The fewest"), body.find("c.jpg"));
  const std::string none = FormatConceptSection({"hsv", 2, {}, {}}, collection).body;
  ExpectWellFormed(none);
  EXPECT_NE(none.find("No tag has four pictures"), std::string::npos);
  EXPECT_NE(none.find("2 of 3 pictures"), std::string::npos);
}
