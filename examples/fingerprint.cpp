// Which of these files are versions of each other?
//
//     fingerprint FILE...
//
// A file's DNA is a text of 32 hexadecimal digits, made of all its words. Files that share most of
// their words agree in most of its 128 bits, whatever their formats; files that have nothing in
// common agree in about half of them. So a likeness above 90 % tells versions, one of 50 % nothing.
#include <cstddef>
#include <iomanip>
#include <iostream>
#include <vector>

#include <morvaai.h>

namespace {

constexpr int narrow_dna = 32;  // the other length is 1024, for clustering by fingerprints

struct Fingerprint {
  char const* path;
  HString dna;
};

// A line of the table: how like the file is to each, then its name.
void print_line(Fingerprint const& file, std::vector<Fingerprint> const& all) {
  for (Fingerprint const& other : all) {
    std::cout << std::setw(7) << HFileMatchDNA::get_dna_similarity(file.dna, other.dna);
  }
  std::cout << "  " << file.path << '\n';
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<Fingerprint> files;
  for (int i = 1; i < argc; ++i) {
    // Paths are bytes and the library's texts are characters: `from_path` keeps every path.
    HString dna;
    if (HFileDNA::get_file_dna(morvabs::from_path(argv[i]), dna, nullptr, narrow_dna)) {
      files.push_back({argv[i], dna});
    } else {
      std::cerr << argv[i] << ": no text to make a fingerprint of\n";
    }
  }

  std::cout << std::fixed << std::setprecision(1);
  for (Fingerprint const& file : files) {
    print_line(file, files);
  }
  return files.size() + 1 == static_cast<std::size_t>(argc) ? 0 : 1;
}
