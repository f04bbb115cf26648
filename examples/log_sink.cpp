// Sends what the library logs to the host's own logger.
//
//     log_sink FILE
//
// Without a sink, records go to the file that MORVA_LOG_FILE names, else to standard error.
#include <iostream>
#include <string>

#include <morvaai.h>

namespace {

// Stands for the logger that a host has already.
void host_log(char const* severity, std::string const& message) {
  std::cout << severity << ": " << message << '\n';
}

// A record: its level, the source file and line that it comes from, and its text. Paths and words
// of documents stand in it as they are: what would end the line or steer a terminal is made
// harmless.
void take_record(int level, HString const& tag, int line, HString const& text) {
  constexpr char const* severities[] = {"off", "error", "warning", "info", "debug"};
  std::wstring harmless = text.get_ws();
  for (wchar_t& c : harmless) {
    bool const is_control = c < L' ' || (c >= 0x7F && c < 0xA0);
    // Ends the line, or has it read from the other side.
    bool const turns_line = (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
    c = is_control || turns_line ? L'?' : c;
  }
  std::string const source =
      morvabs::to_utf8(tag.get_short_name().get_ws()) + ":" + std::to_string(line);
  host_log(severities[level], morvabs::to_utf8(harmless) + " [" + source + "]");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: log_sink FILE\n";
    return 2;
  }
  // Before any work, while no other thread logs. Level 3: failures, warnings and information.
  HFileLog::pins()->mi_level = 3;
  HFileLog::pins()->set_sink(take_record);

  // Something to be told of: a fingerprint of a document, through a text file,
  HTessarineResult result;
  HString dna;
  HFileDNA::get_file_dna(morvabs::from_path(argv[1]), dna, result, true);
  // and a failure: a point with more or fewer dimensions than fingerprints have is none.
  HFileDNA::get_dna(HPointN({1.0, 2.0}));
  return 0;
}
