#include <morvaai.h>

int main() {
  HString first;
  HString second;
  HFileDNA::get_file_centent_dna(L"A short text about harbours", L"a", first, nullptr, 32);
  HFileDNA::get_file_centent_dna(L"A short text about harbours", L"b", second, nullptr, 32);
  *HStdOutStream::ins() << first << L"\n";
  return HFileMatchDNA::get_dna_similarity(first, second) == 100.0 ? 0 : 1;
}
