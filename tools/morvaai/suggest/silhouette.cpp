#include "suggest/silhouette.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace tool {

namespace {

constexpr std::size_t no_class = static_cast<std::size_t>(-1);

std::vector<std::size_t> class_of_each(std::size_t point_count,
                                       std::vector<std::vector<int>> const& classes) {
  std::vector<std::size_t> owner(point_count, no_class);
  for (std::size_t c = 0; c < classes.size(); ++c) {
    for (int const member : classes[c]) {
      std::size_t& own = owner[static_cast<std::size_t>(member)];
      own = own == no_class ? c : own;
    }
  }
  return owner;
}

// Of a point in class `own`, by its sum of distances to each class and the sizes of these.
double width_of(std::vector<double> const& sums, std::vector<std::size_t> const& sizes,
                std::size_t own) {
  if (sizes[own] < 2) {
    return 0.0;
  }
  double const inside = sums[own] / static_cast<double>(sizes[own] - 1);
  double outside = -1.0;
  for (std::size_t c = 0; c < sums.size(); ++c) {
    if (c != own && sizes[c] > 0) {
      double const mean = sums[c] / static_cast<double>(sizes[c]);
      outside = outside < 0.0 ? mean : std::min(outside, mean);
    }
  }
  double const larger = std::max(inside, outside);
  return outside < 0.0 || larger == 0.0 ? 0.0 : (outside - inside) / larger;
}

}  // namespace

std::vector<double> silhouettes(DistanceMatrix const& distances,
                                std::vector<std::vector<int>> const& classes) {
  std::vector<std::size_t> const owner = class_of_each(distances.size(), classes);
  std::vector<std::size_t> sizes(classes.size());
  for (std::size_t const c : owner) {
    if (c != no_class) {
      ++sizes[c];
    }
  }
  std::vector<double> widths(distances.size());
  std::vector<double> sums(classes.size());
  for (std::size_t i = 0; i < distances.size(); ++i) {
    if (owner[i] == no_class) {
      continue;
    }
    std::fill(sums.begin(), sums.end(), 0.0);
    for (std::size_t j = 0; j < distances.size(); ++j) {
      if (owner[j] != no_class) {
        sums[owner[j]] += distances[i][j];
      }
    }
    widths[i] = width_of(sums, sizes, owner[i]);
  }
  return widths;
}

double mean_silhouette(std::vector<double> const& silhouettes) {
  double const total = std::accumulate(silhouettes.begin(), silhouettes.end(), 0.0);
  return silhouettes.empty() ? 0.0 : total / static_cast<double>(silhouettes.size());
}

char const* structure_of(double silhouette) {
  if (silhouette > 0.70) {
    return "strong";
  }
  if (silhouette > 0.50) {
    return "reasonable";
  }
  return silhouette > 0.25 ? "weak" : "none";
}

}  // namespace tool
