// How the histogram kernels count: bins are worked out a block at a time into bytes, and the bytes are counted here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kernels {

// Counts bytes into 256 bins. A counter that has just been written takes a few cycles until it can be raised again,
// and pictures are full of neighbours that fall into one bin; so that these do not wait for each other, eight
// neighbours go to eight tables, added up at the end. 16 KiB, for the stack of a kernel.
class CountTables {
 public:
  CountTables() { std::memset(tables_, 0, sizeof(tables_)); }

  void Add(const std::uint8_t* bins, std::size_t count) {
    std::size_t i = 0;
    for (; i + 8 <= count; i += 8) {
      for (std::size_t table = 0; table < 8; ++table) {
        ++tables_[table][bins[i + table]];
      }
    }
    for (; i < count; ++i) {
      ++tables_[0][bins[i]];
    }
  }

  // Overwrites `counts` with what has been counted so far.
  void Sum(std::uint64_t counts[256]) const {
    for (std::size_t bin = 0; bin < 256; ++bin) {
      counts[bin] = 0;
      for (const auto& table : tables_) {
        counts[bin] += table[bin];
      }
    }
  }

 private:
  alignas(64) std::uint64_t tables_[8][256 + 8];
};

}  // namespace kernels
