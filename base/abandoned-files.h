#pragma once

#include <string>

namespace base {

/// Removes the files that writes which never ended have left in a directory: a program that is killed while it writes
/// leaves what it wrote beside the file that was to be replaced. Those of the last hour stay, since another program may
/// be at it.
void RemoveAbandonedFiles(const std::string& directory);

}  // namespace base
