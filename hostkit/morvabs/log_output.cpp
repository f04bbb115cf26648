#include "morvabs/log_output.h"

#include <memory>

#include <spdlog/logger.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>

#include "host/HFile.h"
#include "host/native_path.h"
#include "morvabs/locate.h"

namespace morvabs {

namespace {

spdlog::sink_ptr open_sink() {
  HString const file = environment_path("MORVA_LOG_FILE");
  auto const path = to_path(file);
  if (path && !path->empty()) {
    // The package would have everyone write to a new file where the umask does.
    HFile::touch(file);
    try {
      return std::make_shared<spdlog::sinks::basic_file_sink_mt>(*path);
    } catch (spdlog::spdlog_ex const&) {
      // A log that cannot be kept where it should be is still better on standard error than
      // nowhere.
    }
  }
  return std::make_shared<spdlog::sinks::stderr_sink_mt>();
}

spdlog::logger* make_logger() {
  auto* const logger = new spdlog::logger("morva", open_sink());
  logger->set_pattern("%Y-%m-%dT%H:%M:%S.%e%z [%P] %v");
  logger->set_level(spdlog::level::trace);
  logger->flush_on(spdlog::level::trace);
  // A full disk is no reason to fill standard error too.
  logger->set_error_handler([](std::string const&) {});
  return logger;
}

/// Never freed: other static objects may still log while the process ends.
spdlog::logger*& current_logger() {
  static spdlog::logger* logger = make_logger();
  return logger;
}

}  // namespace

void write_log_line(int level, std::string_view tag, int line, std::string_view text) {
  current_logger()->info("{} {}:{} {}", level, tag, line, text);
}

void reopen_log() {
  current_logger() = make_logger();
}

}  // namespace morvabs
