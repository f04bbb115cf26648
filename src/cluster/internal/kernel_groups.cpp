#include "cluster/internal/kernel_groups.h"

#include <cstddef>
#include <optional>

namespace morva {

namespace {

// Groups are told by their kernel points.
class KernelGroups {
 public:
  KernelGroups(NeighbourMatrix const& neighbours, std::vector<int> const& kernels,
               std::size_t point_count)
      : neighbours_(neighbours),
        kernels_(kernels),
        point_count_(point_count),
        is_kernel_(point_count),
        alive_(point_count) {
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
    IndexSet members(point_count_);
    IndexSet met(point_count_);
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
  std::size_t point_count_;
  IndexSet is_kernel_;
  IndexSet alive_;
};

}  // namespace

std::vector<std::vector<int>> merge_kernel_groups(NeighbourMatrix const& neighbours,
                                                  std::vector<int> const& kernels,
                                                  std::size_t point_count) {
  return KernelGroups(neighbours, kernels, point_count).merge();
}

}  // namespace morva
