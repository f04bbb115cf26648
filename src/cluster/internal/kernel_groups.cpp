#include "cluster/internal/kernel_groups.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iterator>
#include <optional>
#include <set>

namespace morva {

namespace {

// The groups of ascending kernel points, each told by its kernel point. Instead of comparing groups
// with groups, each point that enters a group adds the groups that hold it to those that the group
// meets: one row of the matrix for each.
class KernelGroups {
 public:
  KernelGroups(NeighbourMatrix const& neighbours, std::vector<int> const& kernels)
      : neighbours_(neighbours),
        kernels_(kernels),
        is_kernel_(neighbours.size()),
        alive_(neighbours.size()) {
    for (int const kernel : kernels) {
      is_kernel_.insert(static_cast<std::size_t>(kernel));
      alive_.insert(static_cast<std::size_t>(kernel));
    }
  }

  std::vector<std::vector<int>> merge() {
    std::vector<std::vector<int>> groups;
    for (std::size_t i = 0; i < kernels_.size(); ++i) {
      if (alive_.contains(kernel(i))) {
        groups.push_back(grow(i));
      }
    }
    return groups;
  }

 private:
  std::size_t kernel(std::size_t position) const {
    return static_cast<std::size_t>(kernels_[position]);
  }

  std::vector<int> grow(std::size_t position) {
    IndexSet members(neighbours_.size());
    IndexSet met(neighbours_.size());
    absorb(kernel(position), members, met);
    std::size_t next = position + 1;
    while (auto const other = first_met(met, next)) {
      absorb(*other, members, met);
      alive_.erase(*other);
      next = position + 2;
    }
    std::vector<int> group;
    for_each_index(members.words(), 0,
                   [&group](std::size_t point) { group.push_back(static_cast<int>(point)); });
    return group;
  }

  // Adds the group of a kernel point: the point itself and its kernel neighbours behind it.
  void absorb(std::size_t kernel_point, IndexSet& members, IndexSet& met) const {
    add(kernel_point, members, met);
    for_each_index(neighbours_.of(kernel_point), kernel_point + 1, [&](std::size_t point) {
      if (is_kernel_.contains(point)) {
        add(point, members, met);
      }
    });
  }

  // The groups that hold a point are its own and those of its neighbours before it.
  void add(std::size_t point, IndexSet& members, IndexSet& met) const {
    if (members.contains(point)) {
      return;
    }
    members.insert(point);
    met.insert(point);
    auto const row = neighbours_.of(point);
    std::size_t const last = point / IndexSet::word_bits;
    for (std::size_t w = 0; w < last; ++w) {
      met.words()[w] |= row[w];
    }
    met.words()[last] |= row[last] & (IndexSet::bit(point) - 1);
  }

  std::optional<std::size_t> first_met(IndexSet const& met, std::size_t position) const {
    if (position >= kernels_.size()) {
      return std::nullopt;
    }
    std::size_t const from = kernel(position);
    for (std::size_t w = from / IndexSet::word_bits; w < met.words().size(); ++w) {
      std::uint64_t bits = met.words()[w] & alive_.words()[w];
      if (w == from / IndexSet::word_bits) {
        bits &= ~std::uint64_t{0} << from % IndexSet::word_bits;
      }
      if (bits != 0) {
        return w * IndexSet::word_bits + static_cast<std::size_t>(std::countr_zero(bits));
      }
    }
    return std::nullopt;
  }

  NeighbourMatrix const& neighbours_;
  std::vector<int> const& kernels_;
  IndexSet is_kernel_;
  IndexSet alive_;
};

bool shares_element(std::vector<int> const& a, std::vector<int> const& b) {
  return std::any_of(b.begin(), b.end(), [&a](int element) {
    return std::find(a.begin(), a.end(), element) != a.end();
  });
}

// The same for kernel points in any order, which only a caller makes: group by group.
std::vector<std::vector<int>> merge_unordered(NeighbourMatrix const& neighbours,
                                              std::vector<int> const& kernels) {
  std::vector<std::vector<int>> groups;
  for (auto kernel = kernels.begin(); kernel != kernels.end(); ++kernel) {
    groups.push_back({*kernel});
    std::copy_if(kernel + 1, kernels.end(), std::back_inserter(groups.back()),
                 [&](int other) { return neighbours.are_neighbours(*kernel, other); });
  }
  for (std::size_t i = 0; i < groups.size(); ++i) {
    for (std::size_t j = i + 1; j < groups.size();) {
      if (!shares_element(groups[i], groups[j])) {
        ++j;
        continue;
      }
      std::set<int> elements(groups[i].begin(), groups[i].end());
      elements.insert(groups[j].begin(), groups[j].end());
      groups[i].assign(elements.begin(), elements.end());
      groups[j].clear();
      j = i + 2;
    }
  }
  std::erase_if(groups, [](std::vector<int> const& group) { return group.empty(); });
  return groups;
}

}  // namespace

std::vector<std::vector<int>> merge_kernel_groups(NeighbourMatrix const& neighbours,
                                                  std::vector<int> const& kernels) {
  bool const is_ascending =
      std::adjacent_find(kernels.begin(), kernels.end(), std::greater_equal<>()) == kernels.end();
  return is_ascending ? KernelGroups(neighbours, kernels).merge()
                      : merge_unordered(neighbours, kernels);
}

}  // namespace morva
