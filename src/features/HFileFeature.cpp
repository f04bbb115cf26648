#include "features/HFileFeature.h"

#include <memory>
#include <optional>

#include "features/HFileWordNode.h"
#include "features/internal/text_files.h"
#include "host/Orlec/IFile.h"
#include "host/Orlec/TextCallback.h"
#include "host/internal/log_line.h"
#include "host/internal/main_text.h"

namespace {

constexpr wchar_t const* tag = L"../HFileFeature";
constexpr int most_words = 100;

void fill(HFeatureNode& node, std::vector<WordNode> const& words) {
  for (WordNode const& word : words) {
    node.vt_words.push_back(word.word);
    node.vt_counts.push_back(word.count);
    node.vt_weight.push_back(word.weight);
    node.map_word_weight[word.word] = word.weight;
  }
}

// Objects that may never be released are made in these two, so that leak checkers can tell them
// from all others by the name.
[[gnu::noinline]] std::unique_ptr<Orlec::ParseFile> make_leavable_parser(Orlec::IFile& file) {
  return std::unique_ptr<Orlec::ParseFile>(Orlec::GetParser(&file, false));
}

[[gnu::noinline]] std::unique_ptr<Orlec::TextLineCallback> make_leavable_callback() {
  // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks)
  return std::make_unique<Orlec::TextLineCallback>();
}

}  // namespace

HFileFeature::HFileFeature() = default;
HFileFeature::~HFileFeature() = default;

bool HFileFeature::get_vt_file_feature(std::vector<HString> const& files, HFeatureNode& node) {
  node.clear();
  if (node.str_file_name.empty() && !files.empty()) {
    node.str_file_name = files.front().get_short_name_no_suffix();
  }
  std::vector<WordNode> words;
  if (!HFileWordNode::get_file_word_node(files, words, most_words)) {
    return false;
  }
  fill(node, words);
  return true;
}

bool HFileFeature::get_file_feature(std::vector<HString> const& files, HFeatureNode& node,
                                    bool parse_first) {
  node.clear();
  if (!parse_first) {
    return get_vt_file_feature(files, node);
  }
  morva::TextFiles texts;
  for (HString const& file : files) {
    texts.add(file);
  }
  return get_vt_file_feature(texts.files(), node);
}

bool HFileFeature::get_file_centent_feature(HString const& text, HString const& name,
                                            HFeatureNode& node) {
  node.clear();
  node.str_file_name = name.get_short_name_no_suffix();
  std::vector<WordNode> words;
  if (!HFileWordNode::get_file_word_node(text, name, words, most_words)) {
    return false;
  }
  fill(node, words);
  return true;
}

bool HFileFeature::get_file_feature(Orlec::ParseFile* parser, HFeatureNode& node) {
  node.clear();
  std::optional<HString> const text = morva::collected_main_text(parser, tag, L"get_file_feature");
  if (!text) {
    return false;
  }
  bool const done =
      get_file_centent_feature(*text, parser->GetFileAlias().get_short_name_no_suffix(), node);
  morva::log_line(3, tag, __LINE__, L"vt_words:", HString(node.vt_words.size()), L",vt_weight:",
                  HString(node.vt_weight.size()), L",vt_counts:", HString(node.vt_counts.size()));
  return done;
}

bool HFileFeature::get_file_feature(HString const& path, HFeatureNode& node, bool /*reserved*/) {
  Orlec::IFile file(path, false);
  auto parser = make_leavable_parser(file);
  if (parser == nullptr) {
    morva::log_assertion(tag, L"get_file_feature", __LINE__, L"ASSERT_NULL");
    return false;
  }
  parser->SetFileAlias(node.str_file_name);
  // The first of two callbacks is never used nor released; what this operation leaves is fixed.
  static_cast<void>(make_leavable_callback().release());
  auto callback = make_leavable_callback();
  parser->SetCallBack(callback.get(), false);
  parser->SetMask(1);
  if (!parser->InitFile()) {
    morva::log_assertion(tag, L"get_file_feature", __LINE__, L"ASSERT_FALSE");
    // Neither object is released on this way, so at least the text that was read goes.
    callback.release()->OnBegin();
    static_cast<void>(parser.release());
    return false;
  }
  bool const done = get_file_feature(parser.get(), node);
  callback.reset();
  parser.reset();
  return done;
}
