// What authors of plug-ins get: an installed tree, a template, and a doctor, used as they would.

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <QProcess>
#include <gtest/gtest.h>

#include "base/text.h"
#include "tests/support/workbench.h"

namespace filesystem = std::filesystem;

namespace {

class TKit : public testing::Test {
 protected:
  TKit() {
    // As packagers install it: what it says of its own place must be right wherever it is moved to.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("DESTDIR", QString::fromStdString(directory.GetPath()));
    process.setProcessEnvironment(environment);
    EXPECT_EQ(Run(CMAKE_PROGRAM, {"--install", BUILD_DIRECTORY, "--prefix", "/opt/my tools"}), 0) << errors;
    environment.remove("DESTDIR");
    environment.insert("PKG_CONFIG_PATH", QString::fromStdString(installed / "share/pkgconfig"));
    process.setProcessEnvironment(environment);
    filesystem::copy(installed / "share/tessimar/template", "mine");
  }

  int Run(const QString& program, const QStringList& arguments, const std::string& input = std::string()) {
    process.start(program, arguments);
    process.write(input.data(), static_cast<qint64>(input.size()));
    process.closeWriteChannel();
    EXPECT_TRUE(process.waitForFinished(120000)) << program.toStdString();
    output = process.readAllStandardOutput().toStdString();
    errors = process.readAllStandardError().toStdString();
    return process.exitCode();
  }

  int RunBatch(const QStringList& arguments, const std::string& input = std::string()) {
    return Run(QString::fromStdString(installed / "bin/tessimar-batch"), arguments, input);
  }

  const TScratchDirectory directory;
  const filesystem::path installed = directory.GetPath() / "opt/my tools";
  QProcess process;
  std::string output;
  std::string errors;
};

TEST_F(TKit, TheTemplateBuildsAgainstAnInstalledTreeAndRuns) {
  const std::string prefix = "-DCMAKE_PREFIX_PATH=" + installed.string();
  ASSERT_EQ(Run(CMAKE_PROGRAM, {"-S", "mine", "-B", "mine/build", QString::fromStdString(prefix),
                                QStringLiteral("-DCMAKE_C_COMPILER=") + C_COMPILER}),
            0)
      << errors;
  ASSERT_EQ(Run(CMAKE_PROGRAM, {"--build", "mine/build"}), 0) << output << errors;
  EXPECT_EQ(RunBatch({"--check-plugin", "mine/build/FeatureMeanColor.so"}), 0) << output << errors;
  EXPECT_TRUE(output.ends_with("FeatureMeanColor.so is sound\n")) << output;
  MakePicture("q.png", 6, 4, qRgb(255, 0, 51));
  EXPECT_EQ(RunBatch({"--plugins", "mine/build", "--variables", "v.tsv"},
                     "q = loadimage(\"q.png\")\nupdatefeature(q, \"meancolor\")\n"),
            0)
      << output << errors;
  EXPECT_EQ(FileBytes("v.tsv"), "name\ttype\tdescription\nq\timage\tFilename: \"q.png\", features: meancolor\n");
}

TEST_F(TKit, TheTemplateBuildsWithPkgConfigAlone) {
  ASSERT_EQ(Run("pkg-config", {"--cflags", "tessimar"}), 0) << errors;
  const char* const build = "eval \"$0\" -shared -fPIC $(pkg-config --cflags tessimar) -o FeatureMine.so mine/*.c";
  ASSERT_EQ(Run("/bin/sh", {"-c", build, C_COMPILER}), 0) << errors;
  EXPECT_EQ(RunBatch({"--check-plugin", "FeatureMine.so"}), 0) << output << errors;
}

TEST_F(TKit, TheDescriptorsRunWhereTheyAreInstalledAndFromLinks) {
  const filesystem::path features = installed / "lib/tessimar/features";
  const std::vector<std::string> names = {"cedd", "colorlayout", "correlogram", "edgehistogram",
                                          "gist", "moments",     "phog",        "tamura"};
  const auto table = [](const std::vector<std::string>& found) {
    return "name\ttype\tdescription\nq\timage\tFilename: \"q.png\", features: " + base::Join(found, ", ") + "\n";
  };
  MakePicture("q.png", 6, 4, qRgb(255, 0, 51));
  std::string lines = "q = loadimage(\"q.png\")\n";
  for (const std::string& name : names) {
    lines += "updatefeature(q, \"" + name + "\")\n";
  }
  EXPECT_EQ(RunBatch({"--plugins", QString::fromStdString(features), "--variables", "v.tsv"}, lines), 0) << output;
  EXPECT_EQ(FileBytes("v.tsv"), table(names));
  filesystem::create_symlink(features / "FeatureGist.so", "FeatureGist.so");
  filesystem::create_symlink(features / "FeatureCedd.so", "FeatureCedd.so");
  EXPECT_EQ(RunBatch({"--variables", "v.tsv"}, lines), 1) << "six are not there";
  EXPECT_EQ(FileBytes("v.tsv"), table({"cedd", "gist"}));
}

TEST_F(TKit, TheTemplateIsReadInAMinute) {
  std::ptrdiff_t lines = 0;
  for (const auto& file : filesystem::directory_iterator("mine")) {
    const std::string bytes = FileBytes(file.path());
    lines += std::count(bytes.begin(), bytes.end(), '\n');
  }
  EXPECT_GT(lines, 0);
  EXPECT_LT(lines, 60);
}

}  // namespace
