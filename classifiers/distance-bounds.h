#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/// Lower bounds of the city-block distances of a query from many rows, out of one byte for each number of theirs
/// instead of eight: the first pass of the VA-file (Weber, Schek, Blott: A Quantitative Analysis and Performance Study
/// for Similarity-Search Methods in High-Dimensional Spaces, VLDB 1998). Numbers are rounded to 256 levels between the
/// least and the largest of all rows. By the triangle inequality the distance of rounded numbers is above the true one
/// by no more than rounding has moved the query and the row, and how far it has moved each of them is known. Pressing
/// the query's numbers into the range of the rows brings it nearer to all of them, if at all, and needs no allowance.
class TDistanceBounds {
 public:
  /// Null if the rows, all of that length, have no such form: with numbers that are not finite, or a range that cannot
  /// be divided. Also null where it would not pay: rows of less than 64 numbers, or too few of them.
  static std::unique_ptr<TDistanceBounds> Make(const std::vector<const double*>& rows, std::size_t length);

  /// Works out the bounds of a query, as long as the rows. False, with none, for a query that is not finite.
  bool SetQuery(const double* query);

  /// The row of the smallest bound, the first of several. The row `excluded` does not count; there are always others.
  std::size_t Nearest(std::size_t excluded) const;

  /// The rows, in order, that may be as near as that. For any other the sum of its differences, whatever its order and
  /// rounding, is certain to be above `distance`. Valid until the next call.
  const std::vector<std::uint32_t>& Within(double distance);

  /// The memory that all this takes, in bytes.
  std::size_t GetMemory() const;

 private:
  TDistanceBounds(const std::vector<const double*>& rows, std::size_t length, double lowest, double step);

  /// Rounds one row and returns how far that has moved it: in steps, and no less than it is.
  double Round(const double* numbers, std::uint8_t* rounded) const;

  /// The bound of a row in steps, with what the query has moved still in it.
  double Bound(std::size_t row) const { return static_cast<double>(distances[row]) - static_cast<double>(moved[row]); }

  std::size_t length;
  /// The bytes of a row.
  std::size_t pitch;
  double lowest;
  double step;
  std::vector<std::uint8_t> bytes;
  std::vector<float> moved;
  std::vector<std::uint8_t> queryBytes;
  double queryMoved = 0.0;
  /// Of the rounded query from the rounded rows, in steps.
  std::vector<std::uint32_t> distances;
  std::vector<std::uint32_t> within;
};
