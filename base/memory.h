#pragma once

namespace base {

/// Lets the allocator keep freed blocks of up to 256 MiB for the next use, as far as the platform can. Every photograph
/// needs two blocks of many megabytes for a moment, and fresh pages from the system cost a quarter of the decoding.
void KeepFreedMemory();

}  // namespace base
