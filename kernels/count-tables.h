// How the histogram kernels count: bins are worked out a block at a time into bytes, and the bytes are counted here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kernels {

/// Counts bytes into 256 bins. A counter that has just been written takes a few cycles until it can be raised again,
/// and pictures are full of neighbors that fall into one bin; so that these do not wait for each other, eight
/// neighbors go to eight tables, added up at the end. 17 KiB, for the stack of a kernel.
class TCountTables {
 public:
  TCountTables() { std::memset(tables, 0, sizeof(tables)); }

  void Add(const std::uint8_t* bins, std::size_t count) {
    std::size_t i = 0;
    for (; i + 8 <= count; i += 8) {
      std::uint64_t eight;
      std::memcpy(&eight, bins + i, 8);
      for (auto& table : tables) {
        ++table[eight & 0xFF];
        eight >>= 8;
      }
    }
    for (; i < count; ++i) {
      ++tables[0][bins[i]];
    }
  }

  /// Overwrites `counts` with what has been counted so far.
  void Sum(std::uint64_t counts[256]) const {
    for (std::size_t bin = 0; bin < 256; ++bin) {
      counts[bin] = 0;
      for (const auto& table : tables) {
        counts[bin] += table[bin];
      }
    }
  }

 private:
  /// Eight entries more than needed: tables of 2 KiB would give the same bin of different tables addresses that agree
  /// in their last twelve bits, and processors take such addresses for the same at first, and wait.
  alignas(64) std::uint64_t tables[8][256 + 8];
};

}  // namespace kernels
