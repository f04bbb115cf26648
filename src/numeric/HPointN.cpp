#include "numeric/HPointN.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>
#include <utility>

#include "host/HFile.h"
#include "host/internal/log_line.h"
#include "numeric/internal/no_distance.h"

namespace {

constexpr wchar_t const* tag = L"../HPointN";

long long size_of(std::vector<double> const& data) {
  return static_cast<long long>(data.size());
}

// The coordinates that take part in a measure: the first `n`, as far as there are so many.
std::span<double const> stated(HPointN const& point) {
  auto const count = std::clamp(point.n, 0LL, size_of(point.vt_data));
  return {point.vt_data.data(), static_cast<std::size_t>(count)};
}

double square(double x) {
  return x * x;
}

}  // namespace

HPointN::HPointN() = default;

HPointN::HPointN(std::vector<double> const& data) : vt_data(data), n(size_of(data)) {}

HPointN::HPointN(HString const& label, std::vector<double> const& data)
    : str_label(label), vt_data(data), n(size_of(data)) {}

HPointN::HPointN(HPointN const& other)
    : str_label(other.str_label), vt_data(other.vt_data), n(size_of(other.vt_data)) {}

HPointN::HPointN(HPointN&& other) noexcept
    : str_label(std::move(other.str_label)),
      vt_data(std::move(other.vt_data)),
      n(size_of(vt_data)) {
  other.n = 0;
}

HPointN::~HPointN() = default;

long long HPointN::get_n() const {
  return n;
}

double HPointN::coordinate(long long i) const {
  return i < size_of(vt_data) ? vt_data[static_cast<std::size_t>(i)] : 0.0;
}

double HPointN::at(int const& i) const {
  return i < 0 || i >= n ? 0.0 : coordinate(i);
}

double& HPointN::operator[](int i) {
  return vt_data[static_cast<std::size_t>(i)];
}

void HPointN::get_vt_data(std::vector<double>& out) const {
  out = vt_data;
}

void HPointN::resize(long long const& size) {
  n = size;
  vt_data.resize(static_cast<std::size_t>(std::max(n, 0LL)));
}

void HPointN::clear() {
  n = 0;
  vt_data.clear();
}

double HPointN::distance(HPointN const& other) const {
  if (other.n != n) {
    return morva::no_distance;
  }
  std::span<double const> const mine = stated(*this);
  std::span<double const> const theirs = stated(other);
  std::size_t const common = std::min(mine.size(), theirs.size());
  double sum = 0.0;
  for (std::size_t i = 0; i < common; ++i) {
    sum += square(mine[i] - theirs[i]);
  }
  // One of the two is shorter only where a file stated more dimensions than it held.
  for (double const x : (mine.size() > common ? mine : theirs).subspan(common)) {
    sum += square(x);
  }
  return std::sqrt(sum);
}

double HPointN::get_distance(HPointN const& a, HPointN const& b) {
  return a.distance(b);
}

double HPointN::cos_similarity(HPointN const& other) const {
  if (other.n != n || n <= 1) {
    return 0.0;
  }
  double dot = 0.0;
  double mine = 0.0;
  double theirs = 0.0;
  auto const stored = static_cast<long long>(std::max(stated(*this).size(), stated(other).size()));
  for (long long i = 0; i < stored; ++i) {
    double const x = coordinate(i);
    double const y = other.coordinate(i);
    dot += x * y;
    mine += x * x;
    theirs += y * y;
  }
  return dot / (std::sqrt(mine) * std::sqrt(theirs));
}

double HPointN::get_cos_similarity(HPointN const& a, HPointN const& b) {
  return a.cos_similarity(b);
}

HPointN& HPointN::operator+=(HPointN const& other) {
  if (other.n != n) {
    return *this;
  }
  auto const count = static_cast<long long>(stated(*this).size());
  for (long long i = 0; i < count; ++i) {
    vt_data[static_cast<std::size_t>(i)] += other.coordinate(i);
  }
  return *this;
}

bool HPointN::operator==(HPointN const& other) {
  if (other.n != n) {
    return false;
  }
  auto const stored = static_cast<long long>(std::max(stated(*this).size(), stated(other).size()));
  for (long long i = 0; i < stored; ++i) {
    if (!(coordinate(i) == other.coordinate(i))) {
      return false;
    }
  }
  return true;
}

HPointN& HPointN::divide(double divisor) {
  if (divisor == 0.0) {
    morva::log_line(1, tag, __LINE__, L"HPointN::operator /= parameter can't be 0 !");
    return *this;
  }
  std::size_t const count = stated(*this).size();
  for (std::size_t i = 0; i < count; ++i) {
    vt_data[i] /= divisor;
  }
  return *this;
}

HPointN& HPointN::operator/=(int const& divisor) {
  return divide(divisor);
}

HPointN& HPointN::operator/=(unsigned long const& divisor) {
  return divide(static_cast<double>(divisor));
}

HString HPointN::to_str() const {
  HString text;
  text << L"Label: " << str_label << L"\n";
  text << L"N: " << HString(n, false) << L"\n";
  text << L"(";
  bool first = true;
  for (double const x : stated(*this)) {
    if (!first) {
      text << L", ";
    }
    first = false;
    text << HString(x);
  }
  text << L")\n";
  return text;
}

void HPointN::to_file(HString const& path) const {
  HFile::write_to_file(path, to_str(), false, false);
}

void HPointN::from_file(HString const& path) {
  HString text;
  HFile::GetFileContentAny(path, text);
  std::vector<HString> lines;
  text.get_vt_str_by_sep2(lines, L"\n");
  if (lines.size() != 3) {
    return;
  }
  str_label = lines[0];
  str_label.cut_first(HString(L"Label: ").length());
  HString dimensions = lines[1];
  dimensions.cut_first(HString(L"N: ").length());
  n = dimensions.to_int();
  HString coordinates = lines[2];
  coordinates.cut_first(1);
  coordinates.cut_last(1);
  std::vector<HString> numbers;
  coordinates.get_vt_str_by_sep2(numbers, L", ");
  vt_data.clear();
  vt_data.reserve(numbers.size());
  for (HString const& number : numbers) {
    vt_data.push_back(number.to_double());
  }
}
