#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace base {

/// A file that is written piece by piece beside the one of its name, and takes its place at the end. Without that end
/// what was written goes again, and an earlier file of the name stays as it was.
class TFileReplacement {
 public:
  /// Begins to write PATH with ".new" behind it.
  explicit TFileReplacement(const std::string& path);
  ~TFileReplacement();
  TFileReplacement(const TFileReplacement&) = delete;
  TFileReplacement& operator=(const TFileReplacement&) = delete;

  const std::string& GetPath() const { return path; }

  /// Writes the bytes behind the others. Failures show in Finish.
  void Write(std::string_view bytes);

  /// Brings all bytes to the file. False if any write failed, as on a full disk.
  bool Finish();

  /// Puts the finished file in its place. False if that fails.
  bool Commit();

 private:
  struct TCloser {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
  };

  std::string path;
  std::unique_ptr<std::FILE, TCloser> file;
  bool failed = false;
  bool isBeside = false;
};

}  // namespace base
