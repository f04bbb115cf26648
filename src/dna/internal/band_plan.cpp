#include "dna/internal/band_plan.h"

#include <algorithm>
#include <bit>

namespace morva {

namespace {

constexpr std::size_t widest = 20;

// Of looking up all pairs of the rows, in comparisons.
double cost(BandPlan const& plan, std::size_t rows, std::size_t most) {
  auto const count = static_cast<double>(rows);
  auto const bands = static_cast<double>(plan.bands);
  auto const keys = static_cast<double>(std::size_t{1} << plan.width);
  double const lookups = plan.lookups(most);
  // A pair is compared from one of its sides.
  double const candidates = lookups * count / keys / 2.0;
  return count * (lookups * band_cost::lookup + candidates * band_cost::candidate) +
         bands * (count + keys) * band_cost::entry;
}

}  // namespace

double BandPlan::lookups(std::size_t most) const {
  double sum = 0.0;
  for (std::size_t band = 0; band < bands; ++band) {
    double keys = 1.0;
    for (std::size_t bits = 0; bits <= std::min(radius(band, most), width); ++bits) {
      sum += keys;
      keys = keys * static_cast<double>(width - bits) / static_cast<double>(bits + 1);
    }
  }
  return sum;
}

BandPlan best_plan(std::size_t rows, std::size_t most) {
  BandPlan best;
  double least = static_cast<double>(rows) * static_cast<double>(rows) / 2.0;
  std::size_t const most_bands = std::min(most + 1, BandPlan::row_bits);
  auto const useful_width = static_cast<std::size_t>(std::bit_width(rows)) + 1;
  for (std::size_t bands = 1; bands <= most_bands; ++bands) {
    std::size_t const widest_here = std::min({widest, useful_width, BandPlan::row_bits / bands});
    for (std::size_t width = 1; width <= widest_here; ++width) {
      BandPlan const plan{bands, width};
      if (double const here = cost(plan, rows, most); here < least) {
        least = here;
        best = plan;
      }
    }
  }
  return best;
}

}  // namespace morva
