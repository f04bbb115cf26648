#include <cstdlib>
#include <vector>

#include "host/HJieba.h"
#include "host/HString.h"
#include "host/HStutterDict.h"

#include "first_word.h"

char const* const candidate_name = "morvaai";

std::size_t count_first_tokens(std::string const& text) {
  char const* const directory = std::getenv("MORVA_DICT_PATH");
  HStutterDict::pins()->set_dict_path(directory != nullptr ? directory : MORVA_BENCH_DICT_PATH);
  std::vector<HString> tokens;
  HJieba::pins()->cut(HString(text.c_str()), tokens);
  return tokens.size();
}
