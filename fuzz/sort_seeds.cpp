// For each path on standard input a line with the suffix of the type that the file has by its
// content, a tab, and the path.

#include <iostream>
#include <string>

#include "host/HTessarineResult.h"
#include "host/utf8.h"

int main() {
  for (std::string path; std::getline(std::cin, path);) {
    HTessarineResult recognised;
    if (HTessarine::recognize(HString(path.c_str()), recognised)) {
      std::cout << morvabs::to_utf8(recognised.str_suffix.get_ws()) << '\t' << path << '\n';
    }
  }
}
