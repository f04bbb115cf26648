#include "morvakit/archive/seven_zip_directory.h"

#include <algorithm>
#include <array>
#include <utility>

#include "morvakit/archive/archive_component.h"
#include "morvakit/spool.h"
#include "morvakit/text/code_page.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

using Orlec::ParseOutcome;

// What stands in front of each piece of the directory.
enum : std::uint64_t {
  id_end = 0x00,
  id_header = 0x01,
  id_main_streams = 0x04,
  id_files = 0x05,
  id_pack_info = 0x06,
  id_unpack_info = 0x07,
  id_sub_streams = 0x08,
  id_size = 0x09,
  id_checksum = 0x0A,
  id_folder = 0x0B,
  id_folder_size = 0x0C,
  id_stream_count = 0x0D,
  id_empty_stream = 0x0E,
  id_names = 0x11,
  id_packed_header = 0x17,
};

constexpr std::int64_t signature_size = 32;

struct KnownStep {
  std::string_view id;
  LzmaStep::Method method;
};

constexpr std::array known_steps{
    KnownStep{"\x03\x01\x01", LzmaStep::Method::lzma},
    KnownStep{"\x21", LzmaStep::Method::lzma2},
    KnownStep{"\x03", LzmaStep::Method::delta},
    KnownStep{"\x04", LzmaStep::Method::x86},
    KnownStep{"\x05", LzmaStep::Method::powerpc},
    KnownStep{"\x06", LzmaStep::Method::itanium},
    KnownStep{"\x07", LzmaStep::Method::arm},
    KnownStep{"\x08", LzmaStep::Method::arm_thumb},
    KnownStep{"\x09", LzmaStep::Method::sparc},
    KnownStep{"\x03\x03\x01\x03", LzmaStep::Method::x86},
    KnownStep{"\x03\x03\x02\x05", LzmaStep::Method::powerpc},
    KnownStep{"\x03\x03\x04\x01", LzmaStep::Method::itanium},
    KnownStep{"\x03\x03\x05\x01", LzmaStep::Method::arm},
    KnownStep{"\x03\x03\x07\x01", LzmaStep::Method::arm_thumb},
    KnownStep{"\x03\x03\x08\x05", LzmaStep::Method::sparc},
};

/// Walks through a directory. Behind the end, or behind what `fail` was told of, all is 0 and
/// empty.
class Cursor {
 public:
  explicit Cursor(std::string_view bytes) : bytes_(bytes) {}

  bool is_good() const { return is_good_; }
  void fail() {
    is_good_ = false;
    bytes_ = {};
  }

  std::string_view take(std::uint64_t count) {
    if (count > bytes_.size()) {
      fail();
      return {};
    }
    auto const taken = bytes_.substr(0, static_cast<std::size_t>(count));
    bytes_.remove_prefix(taken.size());
    return taken;
  }
  std::uint8_t byte() {
    auto const taken = take(1);
    return taken.empty() ? std::uint8_t{0} : static_cast<std::uint8_t>(taken.front());
  }
  /// The leading ones of the first byte tell how many bytes follow, its other bits are the highest.
  std::uint64_t number() {
    auto const first = byte();
    std::uint64_t value = 0;
    unsigned mask = 0x80;
    for (unsigned shift = 0; shift < 64; shift += 8, mask >>= 1U) {
      if ((first & mask) == 0) {
        return value | std::uint64_t{first & (mask - 1)} << shift;
      }
      value |= std::uint64_t{byte()} << shift;
    }
    return value;
  }
  /// Number of bytes; never so many that two of them cannot be added.
  std::int64_t size() {
    constexpr std::uint64_t most = std::uint64_t{1} << 60;
    auto const value = number();
    if (value > most) {
      fail();
      return 0;
    }
    return static_cast<std::int64_t>(value);
  }
  std::vector<bool> bits(std::uint64_t number_of_bits) {
    auto const bytes = take(number_of_bits / 8 + (number_of_bits % 8 != 0 ? 1 : 0));
    std::vector<bool> result;
    for (std::uint64_t i = 0; i < number_of_bits && is_good_; ++i) {
      result.push_back((static_cast<unsigned char>(bytes[i / 8]) & (0x80U >> (i % 8))) != 0);
    }
    return result;
  }
  /// Passes over checksums of so many things; which of them have one.
  std::vector<bool> checksums(std::uint64_t things) {
    std::vector<bool> defined;
    if (byte() != 0) {
      defined.assign(is_good_ ? things : 0, true);
    } else {
      defined = bits(things);
    }
    take(std::uint64_t{4} *
         static_cast<std::uint64_t>(std::count(defined.begin(), defined.end(), true)));
    return defined;
  }

 private:
  std::string_view bytes_;
  bool is_good_ = true;
};

/// What a list of sections has held so far.
class Sections {
 public:
  /// Whether a section comes for the first time.
  bool add(std::uint64_t id) {
    constexpr std::uint64_t most = 63;
    auto const bit = std::uint64_t{1} << std::min(id, most);
    return (std::exchange(seen_, seen_ | bit) & bit) == 0;
  }

 private:
  std::uint64_t seen_ = 0;
};

/// One step of a folder as it is stored.
struct Coder {
  std::string_view id;
  std::string_view properties;
  std::uint64_t inputs = 1;
  std::uint64_t outputs = 1;
};

class DirectoryReader {
 public:
  DirectoryReader(Orlec::Reader const& reader, ReadContext& context)
      : reader_(reader), context_(context) {}

  /// The directory proper, or where it is packed the folder with it.
  void read(std::string_view bytes, SevenZipDirectory& directory);
  bool is_packed() const { return is_packed_; }

 private:
  using Folders = std::vector<SevenZipFolder>;

  bool goes_on(Cursor const& cursor) { return cursor.is_good() && context_.keep_going(); }
  bool check_number(std::uint64_t number);
  bool charge_list(std::uint64_t number, std::size_t entry_size);
  void read_streams(Cursor& cursor, Folders& folders);
  void read_packed_sizes(Cursor& cursor);
  void read_folders(Cursor& cursor, Folders& folders);
  SevenZipFolder read_folder(Cursor& cursor);
  void read_steps(std::vector<Coder> const& coders, Cursor& cursor, SevenZipFolder& folder);
  static void order_steps(std::vector<Coder> const& coders, std::vector<std::size_t> const& next,
                          std::size_t first, SevenZipFolder& folder);
  void read_file_sizes(Cursor& cursor, Folders& folders);
  void read_files(Cursor& cursor, std::vector<SevenZipFile>& files);
  void place(Folders& folders);

  Orlec::Reader const& reader_;
  ReadContext& context_;
  bool is_packed_ = false;
  std::int64_t data_offset_ = 0;
  std::vector<std::int64_t> packed_sizes_;
  std::vector<std::size_t> streams_of_folder_;
  std::vector<std::size_t> outputs_of_folder_;
  std::vector<std::size_t> last_output_;
  std::vector<bool> has_checksum_;
};

/// Lists are as long as the directory says, which need not have anything behind it for each entry.
bool DirectoryReader::check_number(std::uint64_t number) {
  auto const most = context_.limits().i_entries;
  if (number > static_cast<std::uint64_t>(std::max<std::int64_t>(most, 0))) {
    return context_.end(ParseOutcome::limit_reached,
                        "a container of over " + std::to_string(most) + " entries");
  }
  return context_.keep_going();
}

/// Entries of a list that is kept.
bool DirectoryReader::charge_list(std::uint64_t number, std::size_t entry_size) {
  return check_number(number) &&
         context_.charge_memory(static_cast<std::size_t>(number) * entry_size);
}

void DirectoryReader::read(std::string_view bytes, SevenZipDirectory& directory) {
  Cursor cursor(bytes);
  auto const kind = cursor.number();
  is_packed_ = kind == id_packed_header;
  if (is_packed_) {
    read_streams(cursor, directory.folders);
  } else if (kind == id_header) {
    Sections sections;
    for (auto id = cursor.number(); id != id_end && goes_on(cursor); id = cursor.number()) {
      if (id == id_main_streams && sections.add(id)) {
        read_streams(cursor, directory.folders);
      } else if (id == id_files) {
        read_files(cursor, directory.files);
        break;
      } else {
        // Properties of the archive and streams beside the files': no writer makes them. Nor does
        // any section come twice.
        cursor.fail();
      }
    }
  } else {
    cursor.fail();
  }
  if (!cursor.is_good()) {
    context_.end(ParseOutcome::damaged, "the 7z directory is broken");
  }
}

void DirectoryReader::read_streams(Cursor& cursor, Folders& folders) {
  bool has_file_sizes = false;
  Sections sections;
  for (auto id = cursor.number(); id != id_end && goes_on(cursor); id = cursor.number()) {
    bool const is_first = sections.add(id);
    if (id == id_pack_info && is_first) {
      read_packed_sizes(cursor);
    } else if (id == id_unpack_info && is_first) {
      read_folders(cursor, folders);
    } else if (id == id_sub_streams && is_first) {
      read_file_sizes(cursor, folders);
      has_file_sizes = true;
    } else {
      cursor.fail();
    }
  }
  if (!has_file_sizes) {
    for (auto& folder : folders) {
      folder.files.assign(1, folder.unpacked);
    }
  }
  place(folders);
}

void DirectoryReader::read_packed_sizes(Cursor& cursor) {
  data_offset_ = cursor.size();
  auto const number = cursor.number();
  if (!charge_list(number, sizeof(std::int64_t))) {
    return;
  }
  Sections sections;
  for (auto id = cursor.number(); id != id_end && goes_on(cursor); id = cursor.number()) {
    bool const is_first = sections.add(id);
    if (id == id_size && is_first) {
      for (std::uint64_t i = 0; i < number && goes_on(cursor); ++i) {
        packed_sizes_.push_back(cursor.size());
      }
    } else if (id == id_checksum && is_first) {
      cursor.checksums(number);
    } else {
      cursor.fail();
    }
  }
}

void DirectoryReader::read_folders(Cursor& cursor, Folders& folders) {
  auto const is_folder = cursor.number() == id_folder;
  auto const number = cursor.number();
  bool const is_elsewhere = cursor.byte() != 0;
  if (!is_folder || is_elsewhere) {
    cursor.fail();
  }
  if (!charge_list(number, sizeof(SevenZipFolder))) {
    return;
  }
  for (std::uint64_t i = 0; i < number && goes_on(cursor); ++i) {
    folders.push_back(read_folder(cursor));
  }
  if (cursor.number() != id_folder_size) {
    cursor.fail();
  }
  for (std::size_t i = 0; i < folders.size() && goes_on(cursor); ++i) {
    for (std::size_t output = 0; output < outputs_of_folder_[i]; ++output) {
      auto const size = cursor.size();
      folders[i].unpacked = output == last_output_[i] ? size : folders[i].unpacked;
    }
  }
  has_checksum_.assign(folders.size(), false);
  Sections sections;
  for (auto id = cursor.number(); id != id_end && goes_on(cursor); id = cursor.number()) {
    if (id == id_checksum && sections.add(id)) {
      has_checksum_ = cursor.checksums(folders.size());
    } else {
      cursor.fail();
    }
  }
}

SevenZipFolder DirectoryReader::read_folder(Cursor& cursor) {
  constexpr unsigned is_complex = 0x10;
  constexpr unsigned has_properties = 0x20;
  constexpr std::uint64_t most_coders = 32;
  SevenZipFolder folder;
  std::vector<Coder> coders;
  auto const number = cursor.number();
  if (number == 0 || number > most_coders) {
    cursor.fail();
  }
  std::uint64_t outputs = 0;
  for (std::uint64_t i = 0; i < number && cursor.is_good(); ++i) {
    auto const flags = cursor.byte();
    Coder coder;
    coder.id = cursor.take(flags & 0x0FU);
    if ((flags & is_complex) != 0) {
      coder.inputs = cursor.number();
      coder.outputs = cursor.number();
    }
    if ((flags & has_properties) != 0) {
      coder.properties = cursor.take(cursor.number());
    }
    if ((flags & 0xC0U) != 0 || coder.inputs > most_coders || coder.outputs > most_coders) {
      cursor.fail();
    }
    outputs += coder.outputs;
    folder.is_encrypted = folder.is_encrypted || coder.id == "\x06\xF1\x07\x01";
    coders.push_back(coder);
  }
  outputs_of_folder_.push_back(outputs);
  read_steps(coders, cursor, folder);
  return folder;
}

/// Finds the order of the steps. What is fed by one stream of packed data and hands its output on
/// from step to step is understood; anything else is only passed over.
void DirectoryReader::read_steps(std::vector<Coder> const& coders, Cursor& cursor,
                                 SevenZipFolder& folder) {
  std::uint64_t inputs = 0;
  std::uint64_t outputs = 0;
  for (auto const& coder : coders) {
    folder.is_supported = folder.is_supported && coder.inputs == 1 && coder.outputs == 1;
    inputs += coder.inputs;
    outputs += coder.outputs;
  }
  auto const bonds = outputs == 0 ? 0 : outputs - 1;
  if (!cursor.is_good() || inputs < bonds || outputs == 0) {
    cursor.fail();
    return;
  }
  // By output: the input that it is bound to. By input: whether it is bound.
  constexpr auto unbound = static_cast<std::size_t>(-1);
  std::vector<std::size_t> next(outputs, unbound);
  std::vector<bool> is_bound(inputs, false);
  for (std::uint64_t i = 0; i < bonds && cursor.is_good(); ++i) {
    auto const input = cursor.number();
    auto const output = cursor.number();
    if (input >= inputs || output >= outputs) {
      cursor.fail();
      return;
    }
    next[output] = static_cast<std::size_t>(input);
    is_bound[input] = true;
  }
  last_output_.push_back(
      static_cast<std::size_t>(std::find(next.begin(), next.end(), unbound) - next.begin()));
  auto const streams = inputs - bonds;
  streams_of_folder_.push_back(streams);
  for (std::uint64_t i = 0; streams > 1 && i < streams; ++i) {
    cursor.number();
  }
  auto const first = std::find(is_bound.begin(), is_bound.end(), false) - is_bound.begin();
  if (folder.is_supported) {
    order_steps(coders, next, static_cast<std::size_t>(first), folder);
  }
}

/// `next`: by step, the one that it hands its output to.
void DirectoryReader::order_steps(std::vector<Coder> const& coders,
                                  std::vector<std::size_t> const& next, std::size_t first,
                                  SevenZipFolder& folder) {
  auto at = first;
  for (std::size_t i = 0; folder.is_supported && i < coders.size() && at < coders.size(); ++i) {
    auto const& coder = coders[at];
    auto const* const known =
        std::find_if(known_steps.begin(), known_steps.end(),
                     [&](KnownStep const& step) { return step.id == coder.id; });
    bool const is_copy = coder.id == std::string_view("\0", 1);
    if (known != known_steps.end()) {
      folder.steps.push_back({known->method, std::string(coder.properties)});
    }
    folder.is_supported = is_copy || known != known_steps.end();
    at = next[at];
  }
}

void DirectoryReader::read_file_sizes(Cursor& cursor, Folders& folders) {
  std::vector<std::uint64_t> numbers(folders.size(), 1);
  std::uint64_t sum = numbers.size();
  auto id = cursor.number();
  if (id == id_stream_count) {
    sum = 0;
    for (auto& number : numbers) {
      number = cursor.number();
      if (!check_number(number) || !check_number(sum += number)) {
        return;
      }
    }
    id = cursor.number();
  }
  if (!charge_list(sum, sizeof(std::int64_t))) {
    return;
  }
  std::uint64_t without_checksum = 0;
  for (std::size_t i = 0; i < folders.size() && goes_on(cursor); ++i) {
    auto rest = folders[i].unpacked;
    for (std::uint64_t file = 0; file < numbers[i] && goes_on(cursor); ++file) {
      bool const is_last = file + 1 == numbers[i];
      auto const size = is_last ? rest : id == id_size ? cursor.size() : 0;
      if (size > rest) {
        cursor.fail();
      }
      rest -= size;
      folders[i].files.push_back(size);
    }
    without_checksum += numbers[i] == 1 && has_checksum_[i] ? 0 : numbers[i];
  }
  id = id == id_size ? cursor.number() : id;
  if (id == id_checksum) {
    cursor.checksums(without_checksum);
    id = cursor.number();
  }
  if (id != id_end) {
    cursor.fail();
  }
}

void DirectoryReader::read_files(Cursor& cursor, std::vector<SevenZipFile>& files) {
  constexpr std::string_view terminator("\0\0", 2);
  auto const number = cursor.number();
  if (!charge_list(number, sizeof(SevenZipFile))) {
    return;
  }
  files.resize(number);
  Sections sections;
  for (auto id = cursor.number(); id != id_end && goes_on(cursor); id = cursor.number()) {
    Cursor field(cursor.take(cursor.number()));
    bool const is_kept = id == id_empty_stream || id == id_names;
    if (is_kept && !sections.add(id)) {
      cursor.fail();
    } else if (id == id_empty_stream) {
      auto const is_empty = field.bits(number);
      for (std::size_t i = 0; i < is_empty.size(); ++i) {
        files[i].has_content = !is_empty[i];
      }
    } else if (id == id_names && field.byte() == 0) {
      for (auto& file : files) {
        std::string name;
        auto character = field.take(2);
        for (; !character.empty() && character != terminator; character = field.take(2)) {
          name += character;
        }
        file.name = decode_utf16(name);
      }
    }
  }
}

/// Packed data of the folders stands in their order. A folder that lies outside of the file has
/// none.
void DirectoryReader::place(Folders& folders) {
  auto const size = reader_.GetSize();
  auto offset = signature_size + data_offset_;
  std::size_t stream = 0;
  for (std::size_t i = 0; i < folders.size() && i < streams_of_folder_.size(); ++i) {
    folders[i].offset = std::min(offset, size);
    for (std::size_t part = 0; part < streams_of_folder_[i] && stream < packed_sizes_.size();
         ++part, ++stream) {
      auto const packed = std::min(packed_sizes_[stream], size - std::min(offset, size));
      folders[i].packed = part == 0 ? packed : folders[i].packed;
      offset = std::min(offset, size) + packed;
    }
  }
}

std::string unpack_directory(Orlec::Reader const& reader, SevenZipFolder const& folder,
                             ReadContext& context) {
  if (folder.is_encrypted) {
    context.end(ParseOutcome::encrypted, "the archive needs a password");
    return {};
  }
  ReaderSlice const data(reader, {}, folder.offset, folder.packed);
  auto const unpacker = open_lzma(data, context, folder.steps, folder.unpacked);
  if (unpacker == nullptr) {
    return {};
  }
  std::string bytes;
  for (auto piece = unpacker->next(); !piece.empty(); piece = unpacker->next()) {
    auto const added = static_cast<std::int64_t>(piece.size());
    if (!context.charge_memory(piece.size()) ||
        !context.charge_expansion(folder.packed, static_cast<std::int64_t>(bytes.size()) + added,
                                  added)) {
      return {};
    }
    bytes += piece;
  }
  return bytes;
}

}  // namespace

SevenZipDirectory read_seven_zip_directory(Orlec::Reader const& reader, ReadContext& context) {
  constexpr int most_layers = 4;
  auto const start = tessarine::read_piece(reader, 0, signature_size);
  auto const offset = tessarine::little64(start, 12);
  auto const size = tessarine::little64(start, 20);
  auto const behind =
      static_cast<std::uint64_t>(std::max<std::int64_t>(reader.GetSize() - signature_size, 0));
  SevenZipDirectory directory;
  if (size == 0 && offset == 0 && start.size() == signature_size) {
    return directory;
  }
  if (offset > behind || size > behind - offset) {
    context.end(ParseOutcome::damaged, "the 7z directory is missing");
    return directory;
  }
  if (!context.charge_memory(static_cast<std::size_t>(size))) {
    return directory;
  }
  auto bytes = tessarine::read_piece(reader, signature_size + static_cast<std::int64_t>(offset),
                                     static_cast<std::int64_t>(size));
  for (int layer = 0; layer < most_layers && !context.ended(); ++layer) {
    directory = {};
    DirectoryReader reading(reader, context);
    reading.read(bytes, directory);
    if (!reading.is_packed()) {
      return directory;
    }
    if (directory.folders.empty()) {
      break;
    }
    bytes = unpack_directory(reader, directory.folders.front(), context);
  }
  context.end(ParseOutcome::damaged, "the 7z directory is broken");
  return {};
}

}  // namespace morvakit
