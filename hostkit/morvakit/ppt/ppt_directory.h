#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>

#include "morvakit/ppt/ppt_records.h"

namespace morvakit {

/// Where the objects of a presentation lie that are valid. Each time a presentation is saved, what
/// has changed may be added at its end, with a list of the objects' new places that goes before the
/// older lists; what is no longer listed, as former states of slides, is not part of it any more.
class PptDirectory {
 public:
  /// Follows the lists from the newest one, which the content of the current user's stream names.
  /// Where that leads nowhere, the last one in the presentation itself is taken. Damage is noted; a
  /// current user who names none is not.
  PptDirectory(PptStream& stream, std::string_view current_user);

  /// The presentation's own record; none where there is no list, or it does not tell.
  std::optional<PptRecord> document() const;
  /// An object by its number, if it is of that type.
  std::optional<PptRecord> find(std::uint32_t number, std::uint16_t type) const;
  /// Whether the objects cannot be read without a password.
  bool is_encrypted() const;

 private:
  std::optional<PptRecord> edit_at(std::int64_t offset) const;
  std::optional<PptRecord> last_edit() const;
  void follow(PptRecord edit);
  bool add_places(std::int64_t offset);

  PptStream& stream_;
  std::unordered_map<std::uint32_t, std::uint32_t> places_;
  std::int64_t listed_bytes_ = 0;
  std::uint32_t document_ = 0;
  std::uint32_t encryption_ = 0;
};

}  // namespace morvakit
