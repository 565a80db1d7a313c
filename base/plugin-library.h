#pragma once

#include <string>

/// What a feature plug-in's library is called on this platform, and how the loader is asked for it.
namespace base {

/// True for a file name that begins with "Feature" and contains the platform's library suffix (".so", on Windows
/// ".dll"). Case counts.
bool IsPluginFileName(const std::string& fileName);

/// The path for the loader of a library, which starts in the working directory. A bare name would be sought in the
/// system's library path instead.
std::string PluginLoadPath(const std::string& fileName);

}  // namespace base
