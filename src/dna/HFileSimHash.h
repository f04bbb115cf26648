#pragma once

#include <map>
#include <vector>

#include "host/HString.h"
#include "host/export.h"

/// The SimHash fingerprint of a set of weighted words (Charikar, 2002): each word's MD5 votes with
/// the word's weight, plus for a set bit and minus for a clear one, and the sums per bit position
/// make the fingerprint. Documents that share many heavy words agree in most bits.
///
/// Two output forms, chosen by `HFileDNA::mi_dna_length`: 1024 gives the wide form, 128 hexadecimal
/// fields that hold the sums; any other length the narrow form, 32 hexadecimal digits that hold
/// their signs. Nothing here logs; a failure is an empty output.
class MORVA_EXPORT HFileSimHash {
 public:
  HFileSimHash();
  ~HFileSimHash();

  /// The fingerprint of the words; empty for an empty map. The sums are formed in the order of the
  /// words' hashes, so that they round the same way on every run; of two words with one hash the
  /// later one in map order counts alone.
  static void simhashDNA(std::map<HString, double> const& words, HString& output);

  /// Appends four values for each character, taken as a hexadecimal digit by `hex2dec`: the digit
  /// masked with 8, 4, 2 and 1.
  static void simhashTobinary(HString const& hex, std::vector<int>& bits);
  /// Replaces `values` by the ints as doubles.
  static void simhashBinaryToDouble(std::vector<int> const& bits, std::vector<double>& values);
  /// Each element that is 0.0 becomes 0.0 - weight, every other one weight.
  static void simhashAddweight(double const& weight, std::vector<double>& values);
  /// Adds element by element; elements behind the end of `sum` are appended to it.
  static void simhashCombine(std::vector<double> const& addend, std::vector<double>& sum);
  /// The narrow form of 128 sums: bit 1 for a sum above 0.0, most significant bit first. Empty for
  /// any other number of sums.
  static void simhashDowndimension32(std::vector<double> const& sums, HString& output);
  /// The wide form of 128 sums: for each the number 2147483647 + sum * 1000000, truncated, from 0
  /// to FFFFFFFE, in hexadecimal without leading zeros and without separators. A sum of 0.0 reads
  /// 7FFFFFFF; one below about -1879.048191 gives fewer than 8 digits, and the text is then shorter
  /// than 1024. A sum that is NaN reads 0. Empty for any other number of sums.
  static void simhashDowndimension1024(std::vector<double> const& sums, HString& output);

  /// Upper-case hexadecimal text without leading zeros.
  static HString DecIntToHexStr(unsigned int n);
  /// The value of an upper-case hexadecimal digit; 0 for every other character, lower case
  /// included.
  static int hex2dec(wchar_t const& c);
  /// The upper-case hexadecimal digit of 0 to 15; '0' for every other value.
  static wchar_t dec2hex(int const& n);
};
