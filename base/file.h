#pragma once

#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>

/// Whole files, byte for byte.
namespace base {

struct TFileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

/// An open file that is closed with its owner.
using TFilePointer = std::unique_ptr<std::FILE, TFileCloser>;

/// Opens the file of exactly this name for reading. Null if there is none, or something else than a regular file.
TFilePointer OpenRegularFile(const std::string& path);

/// The bytes of the file that base::NativePath finds; nothing if it cannot be opened or read.
std::optional<std::string> ReadFile(const std::string& path);

/// Replaces the contents of the file of exactly this name: overwriting a file that is only spelt like it would lose
/// another's data. False if it cannot be opened or not all bytes could be written.
bool WriteFile(const std::string& path, const std::string& bytes);

/// The same with contents that `write` puts into the open file, and with an earlier file whole until the new one is: it
/// is written beside the earlier one and then takes its place. False, and nothing left behind, if any step or `write`
/// fails.
bool ReplaceFile(const std::string& path, const std::function<bool(std::FILE*)>& write);

}  // namespace base
