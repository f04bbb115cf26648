#include "numeric/internal/band_search.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace morva {

namespace {

// So much of what a point needs may be missing before words are left to those that reach the rest:
// more leaves out more postings, and lets more points pass.
constexpr double missing_share = 0.99;
// Looking at the sums of a whole band takes as long as looking at so many times fewer one by one.
constexpr std::size_t sums_at_once = 8;
constexpr std::size_t block_size = 32;
// Postings of a cache line, and so many at most that are asked for ahead.
constexpr std::size_t postings_in_line = 64 / sizeof(InvertedIndex::Posting);
constexpr std::size_t most_asked = 256;

// Where the sums of a band reach a bound.
struct Reach {
  float factor;
  float bound;
};

// The places from `first` on at which sum + factor * length - half is not below the bound.
#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
void list_reaching(Reach reach, std::span<float const> sums, std::span<float const> lengths,
                   std::span<float const> halves, std::uint32_t first,
                   std::vector<InvertedIndex::Posting>& out) {
  std::size_t const size = sums.size();
  for (std::size_t begin = 0; begin < size; begin += block_size) {
    std::size_t const end = std::min(size, begin + block_size);
    int any = 0;
    for (std::size_t j = begin; j < end; ++j) {
      any |= static_cast<int>(sums[j] + reach.factor * lengths[j] - halves[j] >= reach.bound);
    }
    for (std::size_t j = any == 0 ? end : begin; j < end; ++j) {
      if (sums[j] + reach.factor * lengths[j] - halves[j] >= reach.bound) {
        out.push_back({first + static_cast<std::uint32_t>(j), sums[j]});
      }
    }
  }
}

}  // namespace

BandSearch::BandSearch(std::span<SparsePoint const> points, InvertedIndex const& index)
    : points_(points),
      index_(index),
      weights_(index.levels() == 0 ? 0 : InvertedIndex::common_at(index.levels() - 1)),
      sums_(index.size()),
      plans_(index.band_count()) {
  search_all();
}

void BandSearch::search_all() {
  auto const begins = index_.slice_begins();
  heads_.assign(begins.begin(), begins.end());
  firsts_.resize(index_.band_count());
  for (std::size_t band = 0; band < firsts_.size(); ++band) {
    firsts_[band] = index_.band_begin(band);
  }
  passed_ = 0;
}

void BandSearch::search_behind(std::size_t index) {
  for (; passed_ <= index; ++passed_) {
    // By index within its slices and its band, it is the first that is left of each.
    std::size_t const band = index_.band_of(index_.place_of(passed_));
    ++firsts_[band];
    for (std::uint32_t const column : points_[passed_].columns) {
      Rank const rank = index_.rank_of(column);
      if (rank != InvertedIndex::no_rank) {
        ++heads_[rank < index_.banded_words() ? index_.slice_of(rank, band)
                                              : index_.slice_of(rank)];
      }
    }
  }
}

void BandSearch::begin(std::size_t index) {
  SparsePoint const& point = points_[index];
  // A sum of m products, each of rounded values, is off by less than m + 3 roundings of |x| |y|,
  // which half of |x|^2 + |y|^2 bounds; what is more is for the comparisons, and for the exact
  // sums.
  double const count = static_cast<double>(point.values.size() + 32);
  double const all = static_cast<double>(point.values.size() + index_.longest() + 32);
  row_.room = count * std::numeric_limits<float>::epsilon() +
              4.0 * all * std::numeric_limits<double>::epsilon();
  row_.place = index_.place_of(index);
  row_.square = index_.square(row_.place);
  row_.length = std::sqrt(row_.square);
  row_.has_walked_rare = false;
  for (InvertedIndex::Term const& term : index_.common_terms(row_.place)) {
    weights_[term.rank] = term.weight;
  }
  banded_terms_.clear();
  rare_terms_.clear();
  rare_walks_.clear();
  for (std::size_t i = 0; i < point.columns.size(); ++i) {
    Rank const rank = index_.rank_of(point.columns[i]);
    if (rank == InvertedIndex::no_rank || rank < weights_.size()) {
      continue;
    }
    bool const is_banded = rank < index_.banded_words();
    (is_banded ? banded_terms_ : rare_terms_)
        .push_back({rank, static_cast<float>(point.values[i] * index_.scale())});
  }
}

double BandSearch::least_square(std::size_t band) const {
  double const least = index_.least_square(band);
  double const greatest = index_.greatest_square(band);
  double const nearest = std::clamp(row_.length, std::sqrt(least), std::sqrt(greatest));
  double const apart = row_.length - nearest;
  return apart * apart - row_.room * (row_.square + greatest) - least_room;
}

double BandSearch::greatest_square(std::size_t band) const {
  return greatest_square_to(index_.greatest_square(band));
}

double BandSearch::greatest_square_to(double square) const {
  double const squares = row_.square + square;
  double const products = index_.is_positive() ? 0.0 : row_.length * std::sqrt(square);
  return squares + 2.0 * products + row_.room * squares + least_room;
}

BandSearch::Plan BandSearch::plan_for(std::size_t band, double limit) const {
  double const room = row_.room * (row_.square + index_.greatest_square(band)) + least_room;
  Plan plan;
  plan.lengths = index_.halves();
  plan.limit = limit;
  plan.bound = static_cast<float>(0.5 * (row_.square - limit - room));
  double const needed = 0.5 * (row_.square + index_.least_square(band) - limit - room);
  plan.needs_word = needed > 0.0;
  for (std::size_t level = index_.levels(); level-- > 0;) {
    float const length = index_.lengths(level)[row_.place];
    if (double{length} * index_.greatest_length(level, band) <= missing_share * needed) {
      plan.first = InvertedIndex::common_at(level);
      plan.factor = length;
      plan.lengths = index_.lengths(level);
      break;
    }
  }
  return plan;
}

std::span<BandSearch::Posting const> BandSearch::postings_of(std::size_t slice) const {
  return index_.postings().subspan(heads_[slice], index_.slice_begins()[slice + 1] - heads_[slice]);
}

void BandSearch::add_products(Walk const& walk) {
  for (Posting const& posting : walk.postings) {
    sums_[posting.place] += walk.weight * posting.weight;
  }
}

void BandSearch::walk_rare() {
  for (Term const& term : rare_terms_) {
    rare_walks_.push_back({postings_of(index_.slice_of(term.rank)), term.weight});
    add_products(rare_walks_.back());
  }
  row_.has_walked_rare = true;
}

// Asks memory for the slice behind another one, that of the same word and the next band, which is
// mostly as large and walked next.
void BandSearch::ask_for(Posting const* next, std::size_t count) const {
  Posting const* const end = index_.postings().data() + index_.postings().size();
  std::size_t const wanted =
      std::min({count + postings_in_line, most_asked, static_cast<std::size_t>(end - next)});
  for (std::size_t k = 0; k < wanted; k += postings_in_line) {
    __builtin_prefetch(next + k);
  }
}

// Number of the postings walked.
std::size_t BandSearch::walk(std::size_t band, Plan const& plan) {
  walks_.clear();
  std::size_t count = 0;
  auto const walk_term = [&](Term const& term) {
    auto const postings = postings_of(index_.slice_of(term.rank, band));
    if (!postings.empty()) {
      ask_for(postings.data() + postings.size(), postings.size());
      walks_.push_back({postings, term.weight});
      add_products(walks_.back());
      count += postings.size();
    }
  };
  for (Term const& term : banded_terms_) {
    walk_term(term);
  }
  auto const common = index_.common_terms(row_.place);
  for (std::size_t k = common.size(); k-- > 0 && common[k].rank >= plan.first;) {
    walk_term(common[k]);
  }
  return count;
}

// Adds what the sum of a point lacks, and lists it if it may still be within the limit.
void BandSearch::take(Plan const& plan, Place place, float sum) {
  if (plan.first != 0) {
    for (Term const& term : index_.common_terms(place)) {
      if (term.rank >= plan.first) {
        break;
      }
      sum += weights_[term.rank] * term.weight;
    }
  }
  double const squares = row_.square + index_.square(place);
  double const square = squares - 2.0 * double{sum};
  double const room = row_.room * squares + least_room;
  if (square - room <= plan.limit) {
    near_.push_back({place, square - room, square + room});
  }
}

// Looks at what a word of the row has touched, once.
void BandSearch::take_touched(Plan const& plan, Walk const& walk) {
  auto const halves = index_.halves();
  for (Posting const& posting : walk.postings) {
    float const sum = sums_[posting.place];
    sums_[posting.place] = 0.0F;
    if (sum != 0.0F &&
        sum + plan.factor * plan.lengths[posting.place] - halves[posting.place] >= plan.bound) {
      take(plan, posting.place, sum);
    }
  }
}

std::span<BandSearch::Near const> BandSearch::search(std::size_t band, double limit) {
  near_.clear();
  Place const first = firsts_[band];
  std::size_t const size = index_.band_end(band) - first;
  if (size == 0 || least_square(band) > limit) {
    return near_;
  }
  if (!row_.has_walked_rare) {
    walk_rare();
  }
  Plan plan = plan_for(band, limit);
  std::size_t const walked = walk(band, plan);
  if (plan.needs_word && walked < size / sums_at_once) {
    for (Walk const& each : walks_) {
      take_touched(plan, each);
    }
    plan.has_rest = true;
    plans_[band] = plan;
    return near_;
  }
  reached_.clear();
  auto const sums = std::span(sums_).subspan(first, size);
  list_reaching({plan.factor, plan.bound}, sums, plan.lengths.subspan(first, size),
                index_.halves().subspan(first, size), first, reached_);
  for (Posting const& reached : reached_) {
    take(plan, reached.place, reached.weight);
  }
  std::fill(sums.begin(), sums.end(), 0.0F);
  return near_;
}

std::span<BandSearch::Near const> BandSearch::search_rest() {
  near_.clear();
  for (Walk const& walk : rare_walks_) {
    for (Posting const& posting : walk.postings) {
      float const sum = sums_[posting.place];
      sums_[posting.place] = 0.0F;
      Plan const& plan = plans_[index_.band_of(posting.place)];
      if (sum != 0.0F && plan.has_rest) {
        take(plan, posting.place, sum);
      }
    }
  }
  for (Term const& term : index_.common_terms(row_.place)) {
    weights_[term.rank] = 0.0F;
  }
  for (Plan& plan : plans_) {
    plan.has_rest = false;
  }
  return near_;
}

}  // namespace morva
