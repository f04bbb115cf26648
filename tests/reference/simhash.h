#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "host/HString.h"

namespace reference {

/// The fingerprint in its plainest form: a bit vector of doubles for each word, kept in a map, and
/// the sum formed vector by vector. `HFileSimHash::simhashDNA` is compared with it bit for bit.
inline std::wstring simhash(std::map<HString, double> const& words, bool wide) {
  if (words.empty()) {
    return {};
  }
  std::map<std::vector<double>, double> weight_of_hash;
  for (auto const& [word, weight] : words) {
    std::wstring const hash = word.get_md5_std_format(HString()).get_ws();
    std::vector<double> bits;
    for (wchar_t const digit : hash) {
      int const value = static_cast<int>(digit >= L'A' ? digit - L'A' + 10 : digit - L'0');
      for (int i = 0; i < 4; ++i) {
        bits.push_back((8 >> i) & value);
      }
    }
    weight_of_hash[bits] = weight;
  }
  std::vector<double> sums(128, 0.0);
  for (auto const& [bits, weight] : weight_of_hash) {
    for (std::size_t i = 0; i < sums.size(); ++i) {
      sums[i] += bits[i] == 0.0 ? 0.0 - weight : weight;
    }
  }
  std::wstring text;
  auto const append_hex = [&text](std::uint32_t value) {
    std::wstring digits;
    for (; value != 0 || digits.empty(); value /= 16) {
      digits.insert(digits.begin(), L"0123456789ABCDEF"[value % 16]);
    }
    text += digits;
  };
  if (wide) {
    for (double const sum : sums) {
      double const y = sum * 1000000.0;
      if (y > 2147483647.0) {
        append_hex(0xFFFFFFFE);
      } else {
        auto const value = static_cast<std::int64_t>(y + 2147483647.0);
        append_hex(value < 0 ? 0 : static_cast<std::uint32_t>(value));
      }
    }
    return text;
  }
  for (std::size_t i = 0; i < sums.size(); i += 4) {
    append_hex((sums[i] > 0.0 ? 8U : 0U) | (sums[i + 1] > 0.0 ? 4U : 0U) |
               (sums[i + 2] > 0.0 ? 2U : 0U) | (sums[i + 3] > 0.0 ? 1U : 0U));
  }
  return text;
}

}  // namespace reference
