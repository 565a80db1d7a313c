#pragma once

#include <string>

/// What a feature plug-in's library is called on this platform, and how the loader is asked for it.
namespace base {

/// True for a file name that begins with "Feature" and contains the platform's library suffix (".so", on Windows
/// ".dll"). Case counts.
bool IsPluginFileName(const std::string& fileName);

/// The path for the loader of a library file, relative to the working directory or absolute. A bare name would be
/// sought in the system's library path instead.
std::string PluginLoadPath(const std::string& fileName);

/// Why the file cannot be a library for this program, where the loader would word it badly or crash: no library at all,
/// one for another processor, one that is cut off. Empty if nothing speaks against it, and for what the loader itself
/// explains.
std::string WhyNoPlugin(const std::string& fileName);

}  // namespace base
