#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "classify/internal/vocabulary.h"
#include "host/HString.h"

namespace morva {

enum class Occurrence { first, last };

/// Where in a box the classes stand that are asked for: of classes with one id the first or the
/// last. One walk over the classes.
class ClassPositions {
 public:
  template <typename Class>
  ClassPositions(std::span<HString const> ids, std::vector<Class> const& classes,
                 Occurrence occurrence)
      : ids_(ids), positions_(ids_.positions().size()) {
    for (std::size_t i = 0; i < classes.size(); ++i) {
      Vocabulary::Place const place = ids_.place_of(classes[i].str_class_id, 0);
      if (place.is_word && (!positions_[place.rank] || occurrence == Occurrence::last)) {
        positions_[place.rank] = i;
      }
    }
  }

  /// Of one of the ids; none where no class has it.
  std::optional<std::size_t> of(HString const& id) const {
    return positions_[ids_.place_of(id, 0).rank];
  }

 private:
  Vocabulary ids_;
  std::vector<std::optional<std::size_t>> positions_;
};

}  // namespace morva
