// Annotation files, as the command line and as an experiment reads them, and the tags and rankings that come of them.

#include "experiments/truth.h"
#include "fuzz/input.h"
#include "fuzz/workshop.h"

void FillWorkshop() {
  MakeTinyPictures();
  // Tags with a backtick are not drawn, so that no process is started for a chart.
  MakeFile("run", R"(db = loaddatabase("photos")
loadmirflickrtags(db, "tree`.txt")
loadmirflickrtags(db, "house`.r1.txt")
index = searchtags(db, "tree`")
evaluateindex(index, "tree`")
evaluateindex(index, "house`")
other = searchtags(db, "house`")
displayindex(other)
)");
}

void TryInput(const std::uint8_t* data, std::size_t size) {
  const auto parts = PartsOf(data, size, 4);
  MakeFile("tree`.txt", parts[0]);
  MakeFile("house`.r1.txt", parts[1]);
  RunSession("run");

  MakeFile("photos.tsv", parts[2]);
  MakeFile("queries", parts[3]);
  std::string reason;
  const auto collection = ReadCollection("photos", reason);
  Require(collection.has_value());
  TDamageList damage;
  const auto truth = ReadTruth(*collection, {"tree`.txt", "house`.r1.txt", "photos.tsv"}, damage, reason);
  Require(truth.has_value());
  for (const auto& [tag, carriers] : truth->carriers) {
    Require(!carriers.empty() && carriers.back() < collection->names.size());
  }
  const auto queries = ReadQueries(*collection, "queries", damage, reason);
  Require(queries.has_value() && (queries->empty() || queries->back() < collection->names.size()));
}
