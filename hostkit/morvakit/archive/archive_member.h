#pragma once

#include <string>
#include <string_view>

#include "morvakit/read_context.h"
#include "morvakit/spool.h"

namespace morvakit {

/// A file that comes out of a container in pieces and is read as an embedded one when all of them
/// are there.
class ArchiveMember {
 public:
  /// `name`: in UTF-8, directories included.
  ArchiveMember(std::string_view name, ReadContext& context);

  /// The next piece. False when the rest is not wanted: the file shows itself as one without text,
  /// such as a film, or is over a bound, which is noted.
  bool append(std::string_view bytes);
  /// Has the file read as far as it came; one without a single byte is passed over. False when the
  /// reading of the container is to stop.
  bool finish();

 private:
  ReadContext& context_;
  Spool spool_;
  bool is_looked_at_ = false;
  bool is_wanted_ = true;
};

/// A member's name in UTF-8. One that is not stored in it is in whatever encoding its writer used:
/// `sample` is text in the same one, the name itself or better many such names.
std::string decode_member_name(std::string_view stored, std::string_view sample);

}  // namespace morvakit
