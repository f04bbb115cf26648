#include <cstdint>
#include <memory>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

#include "host/HTessarineResult.h"
#include "host/Orlec/Global.h"

#include "fuzz/require.h"

namespace {

/// A file that is in memory alone.
class MemoryFile {
 public:
  MemoryFile() : descriptor_(memfd_create("input", MFD_CLOEXEC)) {}
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(MemoryFile const&) = delete;
  MemoryFile& operator=(MemoryFile const&) = delete;

  bool fill(std::uint8_t const* data, std::size_t size) const {
    return ftruncate(descriptor_, 0) == 0 &&
           pwrite(descriptor_, data, size, 0) == static_cast<ssize_t>(size);
  }
  HString path() const { return HString(("/proc/self/fd/" + std::to_string(descriptor_)).c_str()); }

 private:
  int descriptor_;
};

void set_limits() {
  auto& limits = Orlec::Global::pins()->limits;
  limits.i_expanded_bytes = std::int64_t{64} << 20;
  limits.i_memory_chars = std::int64_t{1} << 20;
  limits.i_milliseconds = 4000;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  using fuzz::require;
  static MemoryFile const file;
  set_limits();
  require(file.fill(data, size), "there is room for the input");
  HTessarineResult recognised;
  bool const is_known = HTessarine::recognize(file.path(), recognised);
  require(recognised.str_path == file.path(), "the record names the file");
  require(is_known || (recognised.str_suffix.empty() && !recognised.b_encrypt),
          "a file of unknown type has no suffix");
  HTessarineResult read;
  bool const is_read = HTessarine::read(file.path(), read);
  require(read.str_suffix == recognised.str_suffix, "reading recognises the same");
  require(!is_read || is_known, "what is not recognised is not read");
  require(!recognised.b_encrypt || read.b_encrypt, "what is encrypted stays so");
  require(read.i_line >= 0 && read.i_page >= 0 && read.i_img >= 0 && read.i_embed >= 0,
          "counts are not negative");
  return 0;
}
