#include "cluster/internal/kernel_groups.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iterator>
#include <set>

namespace morva {

namespace {

// The groups of ascending kernel points, each told by its kernel point. Instead of comparing groups
// with groups, each point that enters a group takes the groups that hold it to those that the group
// is to absorb, so that a group takes time for its members and their neighbours only. As it has
// absorbed all that hold one of its points, save the one right behind it, a point is in two groups
// at most.
class KernelGroups {
 public:
  KernelGroups(NeighbourMatrix const& neighbours, std::vector<int> const& kernels)
      : neighbours_(neighbours),
        kernels_(kernels),
        outside_(neighbours.size()),
        alive_(neighbours.size()) {
    for (int const kernel : kernels) {
      outside_.insert(static_cast<std::size_t>(kernel));
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
    std::vector<int> members;
    meet(kernel(position));
    absorb_met(members, 1);
    // The group right behind is one of those that are met at first, or is not tried again.
    std::size_t const next = position + 1;
    bool const is_passed_over = next < kernels_.size() && alive_.contains(kernel(next));
    if (is_passed_over) {
      alive_.erase(kernel(next));
    }
    absorb_met(members, kernels_.size());
    if (is_passed_over) {
      alive_.insert(kernel(next));
    }
    for (int const member : members) {
      outside_.insert(static_cast<std::size_t>(member));
    }
    std::sort(members.begin(), members.end());
    return members;
  }

  void meet(std::size_t kernel_point) {
    alive_.erase(kernel_point);
    met_.push_back(kernel_point);
  }

  // Adds groups that have been met: of each the point itself and its kernel neighbours behind it.
  void absorb_met(std::vector<int>& members, std::size_t most) {
    for (; most > 0 && !met_.empty(); --most) {
      std::size_t const kernel_point = met_.back();
      met_.pop_back();
      if (outside_.contains(kernel_point)) {
        add(kernel_point, members);
      }
      neighbours_.from_itself().for_each_in(kernel_point, outside_,
                                            [&](std::size_t point) { add(point, members); });
    }
  }

  // The groups that hold a point are its own and those of its neighbours before it.
  void add(std::size_t point, std::vector<int>& members) {
    outside_.erase(point);
    members.push_back(static_cast<int>(point));
    if (alive_.contains(point)) {
      meet(point);
    }
    neighbours_.before().for_each_in(point, alive_, [this](std::size_t other) { meet(other); });
  }

  NeighbourMatrix const& neighbours_;
  std::vector<int> const& kernels_;
  // Kernel points that are not in the group that grows.
  IndexSet outside_;
  // Groups that have been neither absorbed nor grown.
  IndexSet alive_;
  // Groups that the one that grows is to absorb.
  std::vector<std::size_t> met_;
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
