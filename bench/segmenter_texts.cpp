#include "segmenter_texts.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

#include "host/utf8.h"
#include "morvajieba/characters.h"

namespace bench {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t most_documents = 100;
constexpr std::uintmax_t least_document_bytes = 300;
constexpr std::uintmax_t most_document_bytes = 12'000;

/// Common words, single characters, numbers and English in a row, always the same for a seed.
std::wstring generate_text(std::size_t characters, std::uint32_t seed) {
  constexpr std::array<std::wstring_view, 35> pieces = {
      L"数据",  L"安全",   L"系统", L"中国", L"我们", L"的",     L"了",     L"在",   L"公司",
      L"研究",  L"生命",   L"科学", L"技术", L"发展", L"经济",   L"社会",   L"，",   L"。",
      L"12.5%", L"2023年", L"龘",   L"靐",   L"the ", L"system", L"张三丰", L"提出", L"并",
      L"不仅",  L"而且",   L"问题", L"解决", L"方案", L"文件",   L"指纹",   L"\n"};
  std::wstring text;
  while (text.size() < characters) {
    seed = seed * 1664525u + 1013904223u;
    text += pieces[(seed >> 8) % pieces.size()];
  }
  return text;
}

std::wstring read(fs::path const& path) {
  std::ifstream in(path, std::ios::binary);
  return morvabs::from_utf8(
      std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>()));
}

template <typename Iterator>
std::vector<fs::path> sorted_paths(fs::path const& directory) {
  std::vector<fs::path> paths;
  for (fs::directory_entry const& entry : Iterator(directory)) paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());
  return paths;
}

bool is_short_document(fs::path const& path) {
  if (!fs::is_regular_file(path)) return false;
  auto const bytes = fs::file_size(path);
  return bytes >= least_document_bytes && bytes <= most_document_bytes;
}

}  // namespace

SegmenterText::SegmenterText(std::wstring text)
    : wide(std::move(text)), utf8(morvabs::to_utf8(wide)) {}

std::int64_t NamedTexts::bytes() const {
  std::int64_t sum = 0;
  for (SegmenterText const& text : texts) sum += static_cast<std::int64_t>(text.utf8.size());
  return sum;
}

std::vector<NamedTexts> load_novels() {
  char const* const corpus = std::getenv("MORVA_CORPUS");
  if (corpus == nullptr) return {{"generated", {SegmenterText(generate_text(2'000'000, 1))}}};
  std::vector<NamedTexts> novels;
  for (fs::path const& path : sorted_paths<fs::directory_iterator>(fs::path(corpus) / "long")) {
    novels.push_back({path.stem().string(), {SegmenterText(read(path))}});
  }
  return novels;
}

std::vector<NamedTexts> load_short_documents() {
  char const* const corpus = std::getenv("MORVA_CORPUS");
  if (corpus == nullptr) {
    NamedTexts generated{"generated", {}};
    for (std::uint32_t i = 0; i < most_documents; ++i) {
      generated.texts.emplace_back(generate_text(500 + 25 * i, i));
    }
    return {generated};
  }
  std::vector<NamedTexts> folders;
  for (fs::path const& folder : sorted_paths<fs::directory_iterator>(fs::path(corpus) / "text")) {
    NamedTexts& documents = folders.emplace_back();
    documents.name = folder.filename().string();
    for (fs::path const& path : sorted_paths<fs::recursive_directory_iterator>(folder)) {
      if (documents.texts.size() == most_documents) break;
      if (is_short_document(path)) documents.texts.emplace_back(read(path));
    }
  }
  return folders;
}

std::wstring keep_han(std::wstring_view text) {
  std::wstring han;
  std::copy_if(text.begin(), text.end(), std::back_inserter(han), morvajieba::is_han);
  return han;
}

}  // namespace bench
