#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

/// An empty directory that is the working directory as long as the object lives. It and all in it go with the object.
class TScratchDirectory {
 public:
  TScratchDirectory();
  ~TScratchDirectory();
  TScratchDirectory(const TScratchDirectory&) = delete;
  TScratchDirectory& operator=(const TScratchDirectory&) = delete;

  const std::filesystem::path& GetPath() const { return path; }

 private:
  std::filesystem::path before;
  std::filesystem::path path;
};

struct TFileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using TFile = std::unique_ptr<std::FILE, TFileCloser>;

/// Writes a file below the working directory, and the directories on the way to it.
void MakeFile(const std::filesystem::path& path, const std::string& bytes);

/// The bytes of a file; "(no file)" if it cannot be read.
std::string FileBytes(const std::filesystem::path& path);
