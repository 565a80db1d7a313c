// Dot products and squared distances of one row with each of many, several of these at a time. Two libraries whose bits
// the classifiers keep sum in different orders, so that there are two dot products.
#pragma once

#include <cstddef>
#include <vector>

namespace kernels {

// A copy of rows of one length, eight of them interleaved: element i of all eight lies side by side, so that each has
// a lane of its own in a vector. The last eight are filled up with zeros.
class TPackedRows {
 public:
  TPackedRows() = default;
  TPackedRows(std::size_t count, std::size_t length);

  std::size_t GetCount() const { return count; }
  std::size_t GetLength() const { return length; }

  void Set(std::size_t row, std::size_t element, double value) {
    numbers[(row / kAbreast * length + element) * kAbreast + row % kAbreast] = value;
  }

  // All put a sum for each row into `sums`, which has room for RoundedCount() of them. `query` is as long as the rows:
  //
  //   sums[r] = 0 + query[0] * row[0] + query[1] * row[1] + ..
  //   sums[r] = 0 + (query[0] - row[0])^2 + (query[1] - row[1])^2 + ..
  //
  // Each sum is built by one product and one addition an element, in this order, and so is the same to the last bit on
  // every processor; a NaN stays a NaN, though its sign and payload are unspecified.
  void DotProducts(const double* query, double* sums) const;

  // The dot products by fours: first the length % 4 elements at the beginning, the last of them first, then, for each
  // four that follow, the sum of their products as one addend:
  //
  //   sums[r] = ((0 + query[1] * row[1]) + query[0] * row[0]) + (((query[2] * row[2] + query[3] * row[3]) + ..) + ..) +
  //   ..
  void DotProductsByFours(const double* query, double* sums) const;
  void SquaredDistances(const double* query, double* sums) const;

  // The count, rounded up to whole interleaved rows.
  std::size_t RoundedCount() const { return (count + kAbreast - 1) / kAbreast * kAbreast; }

  static constexpr std::size_t kAbreast = 8;

 private:
  std::vector<double> numbers;
  std::size_t count = 0;
  std::size_t length = 0;
};

}  // namespace kernels
