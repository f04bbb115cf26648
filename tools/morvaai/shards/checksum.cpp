#include "shards/checksum.h"

#include <xxhash.h>

namespace tool {

struct Checksum::State {
  XXH3_state_t of_library;
};

std::uint64_t checksum_of(std::string_view bytes) {
  return XXH3_64bits(bytes.data(), bytes.size());
}

Checksum::Checksum() : state_(std::make_unique<State>()) {
  XXH3_64bits_reset(&state_->of_library);
}

Checksum::~Checksum() = default;

void Checksum::add(std::string_view bytes) {
  XXH3_64bits_update(&state_->of_library, bytes.data(), bytes.size());
}

std::uint64_t Checksum::value() const {
  return XXH3_64bits_digest(&state_->of_library);
}

}  // namespace tool
