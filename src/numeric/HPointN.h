#pragma once

#include <vector>

#include "host/HString.h"
#include "host/export.h"

/// A labelled n-dimensional vector of doubles: the value that every measure and every clustering
/// engine of the system works on.
///
/// `n` equals the number of coordinates after every operation but `from_file`, which stores the
/// number that the file states, and assignment, which copies it; copying and moving into a new
/// point set it right again. All size comparisons go by `n`. Where `n` and the coordinates differ,
/// a coordinate that is missing reads as 0.0 and nothing outside the data is touched. The label
/// takes no part in comparison or arithmetic. A plain value without shared state: concurrent reads
/// of one point are safe.
class MORVA_EXPORT HPointN {
 public:
  /// What the point stands for, as the id of a file.
  HString str_label;
  /// The coordinates.
  std::vector<double> vt_data;
  /// Number of the coordinates; see above.
  long long n = 0;

  HPointN();
  /// A point of these coordinates, without a label.
  HPointN(std::vector<double> const& data);
  /// A point of these coordinates.
  HPointN(HString const& label, std::vector<double> const& data);
  /// Sets `n` to the number of coordinates.
  HPointN(HPointN const& other);
  /// Sets `n` to the number of coordinates; leaves `other` without any.
  HPointN(HPointN&& other) noexcept;
  /// Copies `n` as it is.
  HPointN& operator=(HPointN const& other) = default;
  /// Copies `n` as it is, and leaves that of `other`.
  HPointN& operator=(HPointN&& other) noexcept = default;
  ~HPointN();

  /// `n`.
  long long get_n() const;
  /// Coordinate `i`; 0.0 for an `i` that is negative, or not below `n`.
  double at(int const& i) const;
  /// Coordinate `i`, which must exist.
  double& operator[](int i);
  /// Replaces `out` by the coordinates.
  void get_vt_data(std::vector<double>& out) const;
  /// Sets `n` and brings the data to that size: new coordinates are 0.0, surplus ones are dropped.
  /// A negative size leaves no data.
  void resize(long long const& size);
  /// No coordinates and `n` 0; the label stays.
  void clear();

  /// Euclidean distance: the squares of the differences summed from index 0 up, then the square
  /// root. 9223372036854775808.0 for points of different `n`, 0.0 for points without dimensions.
  /// Allocates nothing; linear in `n`.
  double distance(HPointN const& other) const;
  /// `a.distance(b)`.
  static double get_distance(HPointN const& a, HPointN const& b);
  /// Cosine of the angle between the points. 0.0 where the `n` differ or are 1 or less: a point of
  /// one dimension is like nothing, itself included. NaN where a point is all zeros.
  double cos_similarity(HPointN const& other) const;
  /// `a.cos_similarity(b)`.
  static double get_cos_similarity(HPointN const& a, HPointN const& b);

  /// Adds coordinate by coordinate; a point of another `n` changes nothing.
  HPointN& operator+=(HPointN const& other);
  /// Exact equality of all coordinates, so that a NaN is unlike itself. Not const: to compare under
  /// C++20's rules without ambiguity, give it a const right operand.
  bool operator==(HPointN const& other);
  /// Divides every coordinate. By 0 the point stays as it is and one line is logged at level 1.
  HPointN& operator/=(int const& divisor);
  /// The same for a size.
  HPointN& operator/=(unsigned long const& divisor);

  /// Three lines, each ended by a line feed: "Label: " and the label, "N: " and `n`, and the
  /// coordinates in parentheses, joined by ", ".
  HString to_str() const;
  /// Replaces the file by the text form; a failed write is not reported.
  void to_file(HString const& path) const;
  /// Reads the text form. A text that is not exactly three lines leaves the point as it was; an
  /// empty pair of parentheses gives no coordinates. `n` is the stated number, whatever the third
  /// line holds.
  void from_file(HString const& path);

 private:
  double coordinate(long long i) const;
  HPointN& divide(double divisor);
};
