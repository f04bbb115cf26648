#include "features/HFileWordNode.h"

#include <map>

#include "host/HFile.h"
#include "host/HFileLog.h"
#include "host/HJieba.h"
#include "host/HStutterDict.h"
#include "host/Orlec/LocateMgr.h"
#include "host/internal/log_line.h"
#include "host/process_memory.h"

namespace {

constexpr wchar_t const* tag = L"../HFileWordNode";
constexpr int verbose_level = 4;

// The directory is set before every extraction, so that one set by other means does not last.
bool prepare_dictionary() {
  HStutterDict* const dictionary = HStutterDict::pins();
  dictionary->set_dict_path(Orlec::LocateMgr::pins()->get_dict_path(false));
  if (dictionary->is_exist_dict()) {
    return true;
  }
  morva::log_line(1, tag, __LINE__, L"not exist jieba dict:", dictionary->mstr_dict_path);
  return false;
}

unsigned long words_to_ask_for(int top) {
  return top < 1 ? 100000 : static_cast<unsigned long>(top);
}

void log_memory(wchar_t const* moment) {
  if (HFileLog::ins()->mi_level == verbose_level) {
    morva::log_line(verbose_level, tag, __LINE__, L"jieba  textrank_extractor ", moment,
                    L" memory:", HString(get_process_use_memory_total(0), false));
  }
}

}  // namespace

HFileWordNode::HFileWordNode() = default;
HFileWordNode::~HFileWordNode() = default;

bool HFileWordNode::get_file_word_node(HString const& text, HString const& name,
                                       std::vector<WordNode>& words, int top) {
  words.clear();
  log_memory(L"bengin");
  if (!prepare_dictionary()) {
    return false;
  }
  HJieba::pins()->textrank_extractor(text, name, words, words_to_ask_for(top), true);
  log_memory(L"end");
  return true;
}

bool HFileWordNode::get_file_word_node(HString const& file, std::vector<WordNode>& words, int top) {
  words.clear();
  if (!prepare_dictionary()) {
    return false;
  }
  HJieba::pins()->textrank_extractor(file, words, words_to_ask_for(top), true);
  return true;
}

bool HFileWordNode::get_file_word_node(std::vector<HString> const& files,
                                       std::vector<WordNode>& words, int top) {
  words.clear();
  if (!prepare_dictionary()) {
    return false;
  }
  std::vector<std::vector<WordNode>> lists;
  for (HString const& file : files) {
    if (HFile::IsFileExistFile(file)) {
      HJieba::pins()->textrank_extractor(file, lists.emplace_back(), words_to_ask_for(top), true);
    }
  }
  get_vt_word_node(lists, words);
  return true;
}

unsigned int HFileWordNode::get_vt_word_node(std::vector<std::vector<WordNode>> const& lists,
                                             std::vector<WordNode>& merged) {
  // How often each word was met; 0 for one that was there before.
  std::map<HString, int> times_met;
  for (WordNode const& node : merged) {
    times_met.try_emplace(node.word, 0);
  }
  for (std::vector<WordNode> const& list : lists) {
    for (WordNode const& node : list) {
      auto const [entry, is_new] = times_met.try_emplace(node.word, 1);
      if (is_new) {
        merged.push_back(node);
      } else if (entry->second > 0) {
        ++entry->second;
      }
    }
  }
  for (WordNode& node : merged) {
    if (int const times = times_met[node.word]; times > 0) {
      node.weight /= static_cast<double>(times);
    }
  }
  return static_cast<unsigned int>(merged.size());
}
