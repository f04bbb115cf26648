#include "morvajieba/trie_builder.h"

#include <algorithm>
#include <numeric>
#include <span>

namespace morvajieba {

namespace {

/// A node of the tree before it has a place in the array; its children stand side by side.
struct TreeNode {
  std::uint16_t label = no_code;
  std::uint16_t frequency = 0;
  std::uint8_t tag = 0;
  std::uint32_t first_child = 0;
  std::uint32_t child_count = 0;
};

/// Words [begin, end) share the path to one node.
struct Range {
  std::size_t begin;
  std::size_t end;
  std::size_t depth;
};

/// Level by level, so that all children of a node are neighbours.
std::vector<TreeNode> build_tree(std::vector<TrieWord> const& words) {
  std::vector<TreeNode> tree(1);
  std::vector<Range> ranges{{0, words.size(), 0}};
  for (std::size_t number = 0; number < tree.size(); ++number) {
    auto [begin, end, depth] = ranges[number];
    if (begin < end && words[begin].codes.size() == depth) {
      tree[number].frequency = words[begin].frequency;
      tree[number].tag = words[begin].tag;
      ++begin;
    }
    tree[number].first_child = static_cast<std::uint32_t>(tree.size());
    while (begin < end) {
      std::uint16_t const label = words[begin].codes[depth];
      std::size_t const first = begin;
      while (begin < end && words[begin].codes[depth] == label) ++begin;
      tree.push_back({.label = label});
      ranges.push_back({first, begin, depth + 1});
    }
    tree[number].child_count = static_cast<std::uint32_t>(tree.size()) - tree[number].first_child;
  }
  return tree;
}

/// The array while it is filled: which slots are free, as a list, and which bases are taken.
class Slots {
 public:
  explicit Slots(std::uint32_t reserve) { grow(reserve); }

  /// Finds a base where all labels (ascending) fall on free slots, and takes these slots.
  std::uint32_t place(std::span<TreeNode const> children) {
    std::uint32_t const lowest = children.front().label;
    for (std::uint32_t slot = next_free(0);; slot = next_free(slot + 1)) {
      // Base 0 is the root's.
      if (slot <= lowest || is_base_taken(slot - lowest) || !fits(children, slot - lowest))
        continue;
      take(children, slot - lowest);
      return slot - lowest;
    }
  }

  void take(std::span<TreeNode const> children, std::uint32_t base) {
    grow(base + children.back().label + 1u);
    for (TreeNode const& child : children) next_[base + child.label] = base + child.label + 1u;
    base_taken_[base] = true;
    used_ = std::max(used_, base + children.back().label + 1u);
  }

  /// Slots up to the last one in use.
  std::uint32_t used() const { return used_; }

 private:
  void grow(std::uint32_t size) {
    std::size_t const old = next_.size();
    if (size <= old) return;
    next_.resize(size);
    base_taken_.resize(size);
    for (std::size_t i = old; i < size; ++i) next_[i] = static_cast<std::uint32_t>(i);
  }

  /// The first free slot at or behind `slot`; a taken one points to a slot behind it, and the way
  /// is shortened for the next search. Everything behind the end is free.
  std::uint32_t next_free(std::uint32_t slot) {
    while (slot < next_.size() && next_[slot] != slot) {
      std::uint32_t const following = next_[slot];
      if (following < next_.size()) next_[slot] = next_[following];
      slot = following;
    }
    return slot;
  }

  bool is_base_taken(std::uint32_t base) const {
    return base < base_taken_.size() && base_taken_[base];
  }
  bool fits(std::span<TreeNode const> children, std::uint32_t base) const {
    return std::all_of(children.begin(), children.end(), [&](TreeNode const& child) {
      std::size_t const slot = base + child.label;
      return slot >= next_.size() || next_[slot] == slot;
    });
  }

  std::vector<std::uint32_t> next_;
  std::vector<bool> base_taken_;
  std::uint32_t used_ = 0;
};

}  // namespace

std::vector<Node> build_double_array(std::vector<TrieWord> const& words, std::uint32_t code_count) {
  std::vector<TreeNode> const tree = build_tree(words);
  // Large families first, while there is room; single children then fill the gaps.
  std::vector<std::uint32_t> order(tree.size());
  std::iota(order.begin(), order.end(), 0u);
  std::stable_sort(order.begin() + 1, order.end(), [&tree](std::uint32_t a, std::uint32_t b) {
    return tree[a].child_count > tree[b].child_count;
  });
  Slots slots(code_count);
  std::vector<std::uint32_t> bases(tree.size(), Node::no_children);
  for (std::uint32_t const number : order) {
    TreeNode const& node = tree[number];
    if (node.child_count == 0) continue;
    std::span const children(&tree[node.first_child], node.child_count);
    if (number == 0) {
      slots.take(children, 0);
      bases[0] = 0;
    } else {
      bases[number] = slots.place(children);
    }
  }
  std::vector<Node> array(std::max(code_count, slots.used()),
                          Node::make(no_code, 0, Node::no_children, 0));
  for (std::size_t number = 0; number < tree.size(); ++number) {
    TreeNode const& node = tree[number];
    for (std::uint32_t i = node.first_child; i < node.first_child + node.child_count; ++i) {
      array[bases[number] + tree[i].label] =
          Node::make(tree[i].label, tree[i].frequency, bases[i], tree[i].tag);
    }
  }
  return array;
}

}  // namespace morvajieba
