#include "dna/HFileSimilarDNA.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <numeric>
#include <optional>
#include <span>
#include <utility>

#include "dna/internal/digits.h"
#include "dna/internal/dna_shelf.h"
#include "dna/internal/link_levels.h"
#include "dna/internal/near_rows.h"

namespace {

using Near = morva::NearRows::Near;
using Take = std::function<bool(HFileDNAPair const&)>;

// Where a DNA lies: in which row of which shelf. An empty one is on none.
struct Place {
  std::size_t shelf = std::numeric_limits<std::size_t>::max();
  std::size_t row = 0;

  bool is_on_shelf() const { return shelf != Place().shelf; }
};

std::vector<Place> places(std::size_t count, std::vector<morva::DnaShelf> const& shelves) {
  std::vector<Place> all(count);
  for (std::size_t shelf = 0; shelf < shelves.size(); ++shelf) {
    for (std::size_t row = 0; row < shelves[shelf].row_count(); ++row) {
      for (std::size_t const index : shelves[shelf].dnas_of(row)) {
        all[index] = {shelf, row};
      }
    }
  }
  return all;
}

// No DNA but is similar enough to all others.
bool takes_all(double threshold) {
  return 0.0 >= threshold;
}

// The DNAs of one length behind each of them that are similar to it.
class SimilarBehind {
 public:
  // At least one DNA may be similar to one that differs from it.
  SimilarBehind(morva::DnaShelf const& shelf, std::size_t most_differing)
      : shelf_(&shelf), near_(shelf.words(), shelf.row_size(), most_differing) {}

  // DNAs have to be asked for in ascending order.
  void find(std::size_t index, std::size_t row, std::vector<HFileDNAPair>& pairs) {
    pairs.clear();
    while (shelf_->dnas_of(first_).back() < index) {
      ++first_;
    }
    near_.find(row, first_, rows_);
    for (Near const& near : rows_) {
      std::span<std::size_t const> const dnas = shelf_->dnas_of(near.row);
      double const similarity = morva::similarity(near.differing, shelf_->digits());
      for (auto at = std::upper_bound(dnas.begin(), dnas.end(), index); at != dnas.end(); ++at) {
        pairs.push_back({index, *at, similarity});
      }
    }
    std::sort(pairs.begin(), pairs.end(),
              [](HFileDNAPair const& a, HFileDNAPair const& b) { return a.second < b.second; });
  }

 private:
  morva::DnaShelf const* shelf_;
  morva::NearRows near_;
  // Of those that stand for a DNA at or behind the last index.
  std::size_t first_ = 0;
  std::vector<Near> rows_;
};

double similarity_of(Place const& a, Place const& b, std::vector<morva::DnaShelf> const& shelves) {
  if (!a.is_on_shelf() || a.shelf != b.shelf) {
    return 0.0;
  }
  morva::DnaShelf const& shelf = shelves[a.shelf];
  std::span<std::uint64_t const> const words = shelf.words();
  std::size_t differing = 0;
  morva::differing_bits(words.subspan(a.row * shelf.row_size(), shelf.row_size()),
                        words.data() + b.row * shelf.row_size(), {&differing, 1});
  return morva::similarity(differing, shelf.digits());
}

void hand_all(std::vector<Place> const& of, std::vector<morva::DnaShelf> const& shelves,
              Take const& take) {
  for (std::size_t first = 0; first < of.size(); ++first) {
    for (std::size_t second = first + 1; second < of.size(); ++second) {
      if (!take({first, second, similarity_of(of[first], of[second], shelves)})) {
        return;
      }
    }
  }
}

// How far two DNAs of a shelf may differ; nothing where not even equal ones are similar enough.
std::optional<std::size_t> most_differing(double threshold, morva::DnaShelf const& shelf) {
  std::size_t const limit = morva::too_many_differing(threshold, shelf.digits());
  return limit == 0 ? std::nullopt : std::optional(limit - 1);
}

// The parts of the rows of a shelf, and of each row how many bits it takes to reach its leader.
struct Links {
  std::vector<std::size_t> leaders;
  std::vector<std::size_t> differing;
};

Links link(morva::DnaShelf const& shelf, std::size_t most) {
  morva::NearRows const near(shelf.words(), shelf.row_size(), most);
  morva::LinkLevels levels(near.size(), most + 1);
  std::vector<Near> found;
  for (std::size_t row = 0; most > 0 && row < near.size(); ++row) {
    near.find(row, row + 1, found);
    for (Near const& other : found) {
      levels.link(row, other.row, other.differing);
    }
  }
  Links links;
  for (std::size_t row = 0; row < near.size(); ++row) {
    links.leaders.push_back(levels.leader(row));
    links.differing.push_back(levels.level_to_leader(row));
  }
  return links;
}

void add_groups(morva::DnaShelf const& shelf, std::size_t most,
                std::vector<HFileDNAGroup>& groups) {
  Links const links = link(shelf, most);
  std::vector<HFileDNAGroup> parts(links.leaders.size(), {{}, 100.0});
  for (std::size_t row = 0; row < links.leaders.size(); ++row) {
    HFileDNAGroup& part = parts[links.leaders[row]];
    std::span<std::size_t const> const dnas = shelf.dnas_of(row);
    part.members.insert(part.members.end(), dnas.begin(), dnas.end());
    part.weakest_link =
        std::min(part.weakest_link, morva::similarity(links.differing[row], shelf.digits()));
  }
  for (HFileDNAGroup& part : parts) {
    if (part.members.size() > 1) {
      std::sort(part.members.begin(), part.members.end());
      groups.push_back(std::move(part));
    }
  }
}

}  // namespace

void HFileSimilarDNA::get_pairs(std::vector<HString> const& dnas, double threshold,
                                Take const& take) {
  std::vector<morva::DnaShelf> const shelves = morva::dna_shelves(dnas);
  std::vector<Place> const of = places(dnas.size(), shelves);
  if (takes_all(threshold)) {
    hand_all(of, shelves, take);
    return;
  }
  std::vector<std::optional<SimilarBehind>> behind(shelves.size());
  for (std::size_t i = 0; i < shelves.size(); ++i) {
    if (auto const most = most_differing(threshold, shelves[i])) {
      behind[i].emplace(shelves[i], *most);
    }
  }
  std::vector<HFileDNAPair> pairs;
  for (std::size_t index = 0; index < dnas.size(); ++index) {
    if (!of[index].is_on_shelf() || !behind[of[index].shelf]) {
      continue;
    }
    behind[of[index].shelf]->find(index, of[index].row, pairs);
    if (!std::all_of(pairs.begin(), pairs.end(), std::cref(take))) {
      return;
    }
  }
}

std::vector<HFileDNAGroup> HFileSimilarDNA::get_groups(std::vector<HString> const& dnas,
                                                       double threshold) {
  std::vector<morva::DnaShelf> const shelves = morva::dna_shelves(dnas);
  bool const has_empty = std::any_of(dnas.begin(), dnas.end(), std::mem_fn(&HString::empty));
  std::vector<HFileDNAGroup> groups;
  if (takes_all(threshold) && dnas.size() > 1 && (has_empty || shelves.size() > 1)) {
    groups.push_back({std::vector<std::size_t>(dnas.size()), 0.0});
    std::iota(groups[0].members.begin(), groups[0].members.end(), std::size_t{0});
    return groups;
  }
  for (morva::DnaShelf const& shelf : shelves) {
    if (auto const most = most_differing(threshold, shelf)) {
      add_groups(shelf, *most, groups);
    }
  }
  std::sort(groups.begin(), groups.end(), [](HFileDNAGroup const& a, HFileDNAGroup const& b) {
    return a.members.front() < b.members.front();
  });
  return groups;
}
