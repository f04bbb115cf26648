#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace morva {

/// The connected parts of a graph whose edges have levels, at each level those that the edges up to
/// it make: a forest of its own for each (union-find with path halving: Tarjan, van Leeuwen, 1984).
///
/// Four bytes for each node and level. An edge between two that are connected at its level already
/// costs two finds; the others make at most nodes times levels, in whatever order edges come.
class LinkLevels {
 public:
  LinkLevels(std::size_t nodes, std::size_t levels);

  /// An edge of that level, below `levels`.
  void link(std::size_t a, std::size_t b, std::size_t level);
  /// The least node of the part that the node is in by the edges of all levels.
  std::size_t leader(std::size_t node);
  /// The least level up to which edges are needed to connect the node with its leader; 0 for the
  /// leader itself.
  std::size_t level_to_leader(std::size_t node);

 private:
  std::uint32_t root(std::size_t level, std::uint32_t node);

  std::size_t nodes_;
  std::size_t levels_;
  // [level][node]
  std::vector<std::uint32_t> parents_;
};

}  // namespace morva
