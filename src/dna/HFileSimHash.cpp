#include "dna/HFileSimHash.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "dna/HFileDNA.h"

namespace {

constexpr std::size_t positions = 128;
constexpr int bits_per_digit = 4;
constexpr int wide_length = 1024;

// A word's hash as digit values. Their order is that of the bit vectors that they stand for: a
// digit's bits come most significant first, and a shorter hash comes before a longer one that it
// begins.
struct Vote {
  std::string digits;
  double weight;
};

std::vector<Vote> hash_words(std::map<HString, double> const& words) {
  std::vector<Vote> votes;
  votes.reserve(words.size());
  HString const reserved;
  for (auto const& [word, weight] : words) {
    HString const hash = word.get_md5_std_format(reserved);
    Vote& vote = votes.emplace_back(Vote{{}, weight});
    for (wchar_t const digit : hash.get_ws()) {
      vote.digits.push_back(static_cast<char>(HFileSimHash::hex2dec(digit)));
    }
  }
  return votes;
}

// Of several votes with one hash only the last stays.
void sort_by_hash(std::vector<Vote>& votes) {
  std::stable_sort(votes.begin(), votes.end(),
                   [](Vote const& a, Vote const& b) { return a.digits < b.digits; });
  std::size_t kept = 0;
  for (std::size_t i = 0; i < votes.size(); ++i) {
    if (i + 1 == votes.size() || votes[i].digits != votes[i + 1].digits) {
      std::swap(votes[kept++], votes[i]);
    }
  }
  votes.resize(kept);
}

void add_vote(Vote const& vote, std::vector<double>& sums) {
  double const by_bit[2] = {0.0 - vote.weight, vote.weight};
  std::size_t position = 0;
  for (char const digit : vote.digits) {
    for (int bit = bits_per_digit - 1; bit >= 0; --bit) {
      double const addend = by_bit[(digit >> bit) & 1];
      if (position < sums.size()) {
        sums[position] += addend;
      } else {
        sums.push_back(addend);
      }
      ++position;
    }
  }
}

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

}  // namespace

HFileSimHash::HFileSimHash() = default;
HFileSimHash::~HFileSimHash() = default;

void HFileSimHash::simhashDNA(std::map<HString, double> const& words, HString& output) {
  output.clear();
  if (words.empty()) {
    return;
  }
  std::vector<Vote> votes = hash_words(words);
  sort_by_hash(votes);
  std::vector<double> sums(votes.front().digits.size() * bits_per_digit, 0.0);
  for (Vote const& vote : votes) {
    add_vote(vote, sums);
  }
  if (HFileDNA::get_dna_length() == wide_length) {
    simhashDowndimension1024(sums, output);
  } else {
    simhashDowndimension32(sums, output);
  }
}

void HFileSimHash::simhashTobinary(HString const& hex, std::vector<int>& bits) {
  bits.reserve(bits.size() + hex.size() * bits_per_digit);
  for (wchar_t const character : hex.get_ws()) {
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
  for (double const sum : sums) {
    output += DecIntToHexStr(wide_value(sum));
  }
}

HString HFileSimHash::DecIntToHexStr(unsigned int n) {
  wchar_t digits[2 * sizeof n];
  std::size_t first = std::size(digits);
  do {
    digits[--first] = dec2hex(static_cast<int>(n & 15U));
    n >>= 4U;
  } while (n != 0);
  return {digits + first, static_cast<int>(std::size(digits) - first)};
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
