// Helper of compare_with_jieba.py: cuts the texts on standard input, each ended by a NUL, with the
// dictionary directory given, and prints the tokens of each text, each ended by U+001F, and a NUL
// behind them.

#include <cstdio>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "host/HJieba.h"
#include "host/HStutterDict.h"
#include "host/native_path.h"
#include "host/utf8.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: print_tokens DICTIONARY_DIRECTORY\n", stderr);
    return 2;
  }
  HStutterDict::pins()->set_dict_path(morvabs::from_path(argv[1]));
  if (HJieba::pins()->Init() != 0) {
    std::fputs("no dictionary\n", stderr);
    return 1;
  }
  std::string const input((std::istreambuf_iterator<char>(std::cin)),
                          std::istreambuf_iterator<char>());
  std::string output;
  std::vector<HString> tokens;
  for (std::size_t start = 0; start < input.size();) {
    std::size_t const end = std::min(input.find('\0', start), input.size());
    std::wstring const text =
        morvabs::from_utf8(std::string_view(input).substr(start, end - start));
    HJieba::pins()->cut(HString(text.data(), static_cast<int>(text.size())), tokens);
    for (HString const& token : tokens) {
      morvabs::append_utf8(output, token.get_ws());
      output += '\x1f';
    }
    output += '\0';
    start = end + 1;
  }
  std::cout << output;
  return 0;
}
