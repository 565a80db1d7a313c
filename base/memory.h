#pragma once

#include <cstddef>
#include <optional>

namespace base {

/// Lets the allocator keep freed blocks of up to 512 MiB for the next use, as far as the platform can. Every photograph
/// needs blocks of many megabytes for a moment (those of a scale space of 12 megapixels take 310 MiB), and fresh pages
/// from the system cost a quarter of the decoding.
void KeepFreedMemory();

/// Gives freed blocks that were kept back to the system, as far as the platform can.
void ReturnFreedMemory();

/// The bytes of all that the process has mapped. Nothing where the platform does not tell, or where a sanitizer's own
/// mappings would drown the rest.
std::optional<std::size_t> MappedMemory();

}  // namespace base
