#include "numeric/HSparsePoints.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "numeric/internal/center_finder.h"
#include "numeric/internal/distance_table.h"
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
  morva::SparsePoint const center = center_of(points, members);
  double radius = 0.0;
  for (morva::SparsePoint const* member : morva::valid_members(points, members)) {
    double const distance = morva::distance(center, *member);
    radius = distance > radius ? distance : radius;
  }
  return radius;
}

double HSparsePoints::get_avg_distance() const {
  return table()->average_distance();
}
