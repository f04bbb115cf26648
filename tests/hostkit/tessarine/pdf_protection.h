#pragma once

#include <array>
#include <numeric>
#include <string>
#include <utility>

#include <md5.h>

namespace test {

/// The standard security handler of PDF in its first revision: RC4 with a key of 40 bits.
class PdfProtection {
 public:
  PdfProtection(std::string const& user_password, std::string const& owner_password)
      : owner_entry_(rc4(md5(padded(owner_password)).substr(0, key_size), padded(user_password))),
        key_(md5(padded(user_password) + owner_entry_ + permissions + identity)
                 .substr(0, key_size)) {}

  /// The dictionary of the handler.
  std::string dictionary() const {
    return "<</Filter/Standard/V 1/R 2/O<" + hex(owner_entry_) + ">/U<" +
           hex(rc4(key_, padded(""))) + ">/P -4>>";
  }
  /// What the trailer says of a document whose handler is that object.
  static std::string trailer_entries(std::string const& reference) {
    return "/Encrypt " + reference + "/ID[<" + hex(identity) + "><" + hex(identity) + ">]";
  }
  /// The content of a string or stream in the object of that number.
  std::string encrypted(int object, std::string const& content) const {
    auto const number = std::string{static_cast<char>(object), '\0', '\0', '\0', '\0'};
    return rc4(md5(key_ + number).substr(0, key_size + 5), content);
  }

 private:
  static constexpr std::size_t key_size = 5;
  static inline std::string const permissions = "\xfc\xff\xff\xff";
  static inline std::string const identity = "0123456789abcdef";

  static std::string padded(std::string const& password) {
    using std::string_literals::operator""s;
    static auto const padding =
        "\x28\xbf\x4e\x5e\x4e\x75\x8a\x41\x64\x00\x4e\x56\xff\xfa\x01\x08"
        "\x2e\x2e\x00\xb6\xd0\x68\x3e\x80\x2f\x0c\xa9\xfe\x64\x53\x69\x7a"s;
    return (password + padding).substr(0, padding.size());
  }

  static std::string md5(std::string const& bytes) {
    std::array<unsigned char, MD5_DIGEST_LENGTH> digest{};
    MD5_CTX context;
    MD5Init(&context);
    MD5Update(&context, reinterpret_cast<unsigned char const*>(bytes.data()), bytes.size());
    MD5Final(digest.data(), &context);
    return {digest.begin(), digest.end()};
  }

  static std::string rc4(std::string const& key, std::string bytes) {
    std::array<unsigned char, 256> state{};
    std::iota(state.begin(), state.end(), static_cast<unsigned char>(0));
    for (unsigned i = 0, j = 0; i < 256; ++i) {
      j = (j + state[i] + static_cast<unsigned char>(key[i % key.size()])) % 256;
      std::swap(state[i], state[j]);
    }
    unsigned i = 0;
    unsigned j = 0;
    for (auto& byte : bytes) {
      i = (i + 1) % 256;
      j = (j + state[i]) % 256;
      std::swap(state[i], state[j]);
      byte =
          static_cast<char>(static_cast<unsigned char>(byte) ^ state[(state[i] + state[j]) % 256U]);
    }
    return bytes;
  }

  static std::string hex(std::string const& bytes) {
    std::string digits;
    for (auto const byte : bytes) {
      digits += "0123456789abcdef"[static_cast<unsigned char>(byte) / 16U];
      digits += "0123456789abcdef"[static_cast<unsigned char>(byte) % 16U];
    }
    return digits;
  }

  std::string owner_entry_;
  std::string key_;
};

}  // namespace test
