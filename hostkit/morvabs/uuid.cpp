#include "morvabs/uuid.h"

#include <uuid/uuid.h>

namespace morvabs {

std::string make_uuid() {
  uuid_t id;
  uuid_generate_random(id);
  char text[UUID_STR_LEN] = {};
  uuid_unparse_lower(id, text);
  return text;
}

std::string make_short_uuid() {
  std::string text = make_uuid();
  std::erase(text, '-');
  return text;
}

}  // namespace morvabs
