#pragma once

#include <optional>
#include <string>

/// Whole files, byte for byte.
namespace base {

/// The bytes of the file that base::NativePath finds; nothing if it cannot be opened or read.
std::optional<std::string> ReadFile(const std::string& path);

/// Replaces the contents of the file of exactly this name: overwriting a file that is only spelt like it would lose
/// another's data. False if it cannot be opened or not all bytes could be written.
bool WriteFile(const std::string& path, const std::string& bytes);

}  // namespace base
