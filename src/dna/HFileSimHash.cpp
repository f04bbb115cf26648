#include "dna/HFileSimHash.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "dna/internal/fingerprint.h"

namespace {

constexpr std::size_t positions = 128;
constexpr int bits_per_digit = 4;

unsigned int wide_value(double sum) {
  constexpr double offset = 2147483647.0;
  constexpr double scale = 1000000.0;
  double const scaled = sum * scale;
  if (scaled > offset) {
    return 0xFFFFFFFE;
  }
  double const value = scaled + offset;
  return value > 0.0 ? static_cast<unsigned int>(value) : 0;
}

// Without leading zeros.
void append_hex(unsigned int n, std::wstring& text) {
  wchar_t digits[2 * sizeof n];
  std::size_t first = std::size(digits);
  do {
    digits[--first] = HFileSimHash::dec2hex(static_cast<int>(n & 15U));
    n >>= 4U;
  } while (n != 0);
  text.append(digits + first, std::size(digits) - first);
}

}  // namespace

HFileSimHash::HFileSimHash() = default;
HFileSimHash::~HFileSimHash() = default;

void HFileSimHash::simhashDNA(std::map<HString, double> const& words, HString& output) {
  // From both ends: the way to the next word leads through memory, and so two ways are walked in
  // the time of one.
  std::vector<morva::WeightedWord> list(words.size());
  auto from_front = words.begin();
  auto from_back = words.rbegin();
  for (std::size_t i = 0; 2 * i < list.size(); ++i, ++from_front, ++from_back) {
    list[i] = {&from_front->first, from_front->second};
    list[list.size() - 1 - i] = {&from_back->first, from_back->second};
  }
  output = morva::fingerprint(list);
}

void HFileSimHash::simhashTobinary(HString const& hex, std::vector<int>& bits) {
  bits.reserve(bits.size() + hex.size() * bits_per_digit);
  for (wchar_t const character : text_view(hex)) {
    int const digit = hex2dec(character);
    for (int i = 0; i < bits_per_digit; ++i) {
      bits.push_back((8 >> i) & digit);
    }
  }
}

void HFileSimHash::simhashBinaryToDouble(std::vector<int> const& bits,
                                         std::vector<double>& values) {
  values.assign(bits.begin(), bits.end());
}

void HFileSimHash::simhashAddweight(double const& weight, std::vector<double>& values) {
  // The reference may lead into the vector itself.
  double const set = weight;
  double const clear = 0.0 - set;
  for (double& value : values) {
    value = value == 0.0 ? clear : set;
  }
}

void HFileSimHash::simhashCombine(std::vector<double> const& addend, std::vector<double>& sum) {
  std::size_t const common = std::min(addend.size(), sum.size());
  for (std::size_t i = 0; i < common; ++i) {
    sum[i] += addend[i];
  }
  for (std::size_t i = common; i < addend.size(); ++i) {
    sum.push_back(addend[i]);
  }
}

void HFileSimHash::simhashDowndimension32(std::vector<double> const& sums, HString& output) {
  output.clear();
  if (sums.size() != positions) {
    return;
  }
  std::wstring digits;
  for (std::size_t i = 0; i < positions; i += bits_per_digit) {
    int digit = 0;
    for (std::size_t j = i; j < i + bits_per_digit; ++j) {
      digit = digit * 2 + (sums[j] > 0.0 ? 1 : 0);
    }
    digits.push_back(dec2hex(digit));
  }
  output = HString(digits.data(), static_cast<int>(digits.size()));
}

void HFileSimHash::simhashDowndimension1024(std::vector<double> const& sums, HString& output) {
  output.clear();
  if (sums.size() != positions) {
    return;
  }
  std::wstring digits;
  for (double const sum : sums) {
    append_hex(wide_value(sum), digits);
  }
  output = HString(digits.data(), static_cast<int>(digits.size()));
}

HString HFileSimHash::DecIntToHexStr(unsigned int n) {
  std::wstring digits;
  append_hex(n, digits);
  return digits.c_str();
}

int HFileSimHash::hex2dec(wchar_t const& c) {
  if (c >= L'0' && c <= L'9') {
    return static_cast<int>(c - L'0');
  }
  if (c >= L'A' && c <= L'F') {
    return static_cast<int>(c - L'A') + 10;
  }
  return 0;
}

wchar_t HFileSimHash::dec2hex(int const& n) {
  return n < 0 || n > 15 ? L'0' : L"0123456789ABCDEF"[n];
}
