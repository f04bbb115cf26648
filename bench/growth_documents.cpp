// Writes generated documents to a folder, 500 in a folder each, and those alone that are not there
// yet.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "generated_texts.h"

namespace {

constexpr std::size_t files_of_folder = 500;

/// Whether all were written. A folder has its name when it is whole.
bool write_folder(std::filesystem::path const& folder, std::size_t first, std::size_t end,
                  bench::GeneratedDocuments const& documents,
                  bench::GeneratedVocabulary const& vocabulary) {
  std::filesystem::path const unfinished = folder.string() + ".unfinished";
  std::filesystem::remove_all(unfinished);
  std::filesystem::create_directories(unfinished);
  for (std::size_t number = first; number < end; ++number) {
    bench::GeneratedFile const file = bench::generated_file(documents, number, vocabulary);
    std::ofstream out(unfinished / file.name, std::ios::binary);
    out << file.content;
    if (!out.flush()) {
      fmt::print(stderr, "{} cannot be written\n", (unfinished / file.name).string());
      return false;
    }
  }
  std::filesystem::rename(unfinished, folder);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  std::string folder;
  std::size_t count = 0;
  std::uint64_t seed = 1;
  CLI::App app{"Generated documents, the same ones for a seed."};
  app.add_option("FOLDER", folder, "where they are written to, in folders of 500")->required();
  app.add_option("COUNT", count, "how many; a multiple of 500")->required();
  app.add_option("--seed", seed, "other ones, 1 if not given");
  CLI11_PARSE(app, argc, argv);
  bench::GeneratedVocabulary const vocabulary(MORVA_BENCH_JIEBA_DIR "/dict.txt");
  if (count % files_of_folder != 0 || !vocabulary.has_chinese()) {
    fmt::print(stderr, "{}\n",
               vocabulary.has_chinese() ? "the number of documents must be a multiple of 500"
                                        : "there are no words: " MORVA_BENCH_JIEBA_DIR "/dict.txt");
    return 2;
  }
  bench::GeneratedDocuments const documents(seed);
  for (std::size_t first = 0; first < count; first += files_of_folder) {
    auto const part = std::filesystem::path(folder) / fmt::format("{:06}", first / files_of_folder);
    if (!std::filesystem::exists(part) &&
        !write_folder(part, first, first + files_of_folder, documents, vocabulary)) {
      return 1;
    }
  }
  return 0;
}
