#include "morvabs/md5.h"

#include <new>

#include <md5.h>

namespace morvabs {

namespace {

MD5_CTX* context_in(std::array<unsigned char, 128>& state) {
  static_assert(sizeof(MD5_CTX) <= sizeof state);
  return std::launder(reinterpret_cast<MD5_CTX*>(state.data()));
}

}  // namespace

Md5::Md5() {
  MD5Init(new (state_.data()) MD5_CTX);
}

void Md5::update(char const* bytes, std::size_t size) {
  MD5Update(context_in(state_), reinterpret_cast<unsigned char const*>(bytes), size);
}

std::array<wchar_t, 32> Md5::digits() {
  std::array<unsigned char, MD5_DIGEST_LENGTH> digest{};
  MD5Final(digest.data(), context_in(state_));
  constexpr wchar_t hex_digits[] = L"0123456789ABCDEF";
  std::array<wchar_t, 32> text{};
  for (std::size_t i = 0; i < digest.size(); ++i) {
    text[2 * i] = hex_digits[digest[i] >> 4U];
    text[2 * i + 1] = hex_digits[digest[i] & 0xFU];
  }
  return text;
}

}  // namespace morvabs
