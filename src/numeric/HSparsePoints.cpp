#include "numeric/HSparsePoints.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <string>
#include <utility>

#include "numeric/HProcessGroup.h"
#include "numeric/internal/center_finder.h"
#include "numeric/internal/distance_table.h"
#include "numeric/internal/divided_search.h"
#include "numeric/internal/radius.h"
#include "numeric/internal/sparse_point.h"
#include "numeric/internal/valid_members.h"

namespace {

bool is_kept(double x) {
  return std::bit_cast<std::uint64_t>(x) != 0;
}

// Brings a row to the form in which points are measured: in place, as all rows together are large.
morva::SparsePoint compress(HSparsePoints::Row row) {
  std::size_t const count = std::min(row.indices.size(), row.values.size());
  std::size_t kept = 0;
  long long next = 0;
  for (std::size_t k = 0; k < count; ++k) {
    std::uint32_t const index = row.indices[k];
    double const value = row.values[k];
    if (index < next || index >= row.n) {
      continue;
    }
    next = index + 1LL;
    if (is_kept(value)) {
      row.indices[kept] = index;
      row.values[kept++] = value;
    }
  }
  row.indices.resize(kept);
  row.values.resize(kept);
  return {std::max(row.n, 0LL), std::move(row.indices), std::move(row.values)};
}

// Mean of the members that are points; none where there are no points or no members.
morva::SparsePoint center_of(std::vector<morva::SparsePoint> const& points,
                             std::vector<int> const& members) {
  if (points.empty() || members.empty()) {
    return {};
  }
  std::vector<morva::SparsePoint const*> const valid = morva::valid_members(points, members);
  return morva::CenterFinder().mean(points.front().n, valid, static_cast<double>(valid.size()));
}

// What other points do not have by chance, for processes to compare.
std::string digest_of(std::vector<morva::SparsePoint> const& points) {
  std::uint64_t digest = 0;
  auto const mix = [&digest](std::uint64_t bits) {
    // The finalizer of splitmix64 (Steele, Lea, Flood: Fast splittable pseudorandom number
    // generators, OOPSLA 2014).
    digest = (digest ^ bits) + 0x9e3779b97f4a7c15;
    digest = (digest ^ (digest >> 30)) * 0xbf58476d1ce4e5b9;
    digest = (digest ^ (digest >> 27)) * 0x94d049bb133111eb;
    digest ^= digest >> 31;
  };
  for (morva::SparsePoint const& point : points) {
    mix(static_cast<std::uint64_t>(point.n));
    mix(point.values.size());
    for (std::size_t k = 0; k < point.values.size(); ++k) {
      mix(point.columns[k]);
      mix(std::bit_cast<std::uint64_t>(point.values[k]));
    }
  }
  return std::to_string(points.size()) + " " + std::to_string(digest);
}

}  // namespace

struct HSparsePoints::Content {
  std::vector<HString> labels;
  std::shared_ptr<morva::DistanceTable const> table;
};

HSparsePoints::HSparsePoints() = default;

HSparsePoints::HSparsePoints(std::vector<HPointN> const& points) {
  Content content;
  content.labels.reserve(points.size());
  for (HPointN const& point : points) {
    content.labels.push_back(point.str_label);
  }
  content.table = std::make_shared<morva::DistanceTable const>(
      morva::compress(points, morva::Dimension::stored));
  content_ = std::make_shared<Content const>(std::move(content));
}

HSparsePoints::HSparsePoints(std::vector<Row> rows) {
  Content content;
  std::vector<morva::SparsePoint> points;
  content.labels.reserve(rows.size());
  points.reserve(rows.size());
  for (Row& row : rows) {
    content.labels.push_back(std::move(row.str_label));
    points.push_back(compress(std::move(row)));
  }
  content.table = std::make_shared<morva::DistanceTable const>(std::move(points));
  content_ = std::make_shared<Content const>(std::move(content));
}

HSparsePoints::HSparsePoints(HSparsePoints const& other) = default;
HSparsePoints::HSparsePoints(HSparsePoints&& other) noexcept = default;
HSparsePoints& HSparsePoints::operator=(HSparsePoints const& other) = default;
HSparsePoints& HSparsePoints::operator=(HSparsePoints&& other) noexcept = default;
HSparsePoints::~HSparsePoints() = default;

std::shared_ptr<morva::DistanceTable const> HSparsePoints::table() const {
  return content_ ? content_->table
                  : std::make_shared<morva::DistanceTable const>(std::vector<morva::SparsePoint>());
}

std::size_t HSparsePoints::size() const {
  return content_ ? content_->labels.size() : 0;
}

bool HSparsePoints::empty() const {
  return size() == 0;
}

HPointN HSparsePoints::at(int const& i) const {
  if (i < 0 || static_cast<std::size_t>(i) >= size()) {
    return {};
  }
  auto const position = static_cast<std::size_t>(i);
  HPointN point = morva::expand((*content_->table)[position]);
  point.str_label = content_->labels[position];
  return point;
}

HPointN HSparsePoints::get_center_point(std::vector<int> const& members) const {
  return morva::expand(center_of(table()->points(), members));
}

double HSparsePoints::get_max_radius(std::vector<int> const& members) const {
  auto const held = table();
  std::vector<morva::SparsePoint> const& points = held->points();
  return morva::radius(center_of(points, members), morva::valid_members(points, members));
}

double HSparsePoints::get_avg_distance() const {
  return morva::divided::average_distance(*table());
}

bool HSparsePoints::share_work(std::shared_ptr<HProcessGroup> const& group) {
  std::shared_ptr<morva::DistanceTable const> const shared = table();
  if (group) {
    std::string const digest = digest_of(shared->points());
    std::vector<std::string> const all = group->all_gather(digest);
    bool const is_same = std::all_of(all.begin(), all.end(),
                                     [&digest](std::string const& one) { return one == digest; });
    if (!is_same) {
      return false;
    }
  }
  shared->set_group(group);
  return true;
}
