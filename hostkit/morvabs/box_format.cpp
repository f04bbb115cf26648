#include "morvabs/box_format.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <span>
#include <utility>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>
#include <xxhash.h>

#include "box_format_schema.h"

namespace morvabs {

namespace {

namespace file = box_format;

using Bytes = flatbuffers::Vector<std::uint8_t>;
using Builder = flatbuffers::FlatBufferBuilder;
template <typename T>
using Offset = flatbuffers::Offset<T>;
template <typename T>
using ListOffset = Offset<flatbuffers::Vector<Offset<T>>>;

// Whole lists of numbers are taken as they stand in the file.
static_assert(std::endian::native == std::endian::little);
static_assert(sizeof(wchar_t) == sizeof(std::uint32_t));

constexpr std::string_view mark = "\211BOX\r\n\032\n";
constexpr std::uint32_t format_version = 1;
constexpr std::size_t version_at = 8;
constexpr std::size_t zero_at = 12;
constexpr std::size_t length_at = 16;
constexpr std::size_t checksum_at = 24;
constexpr std::uint64_t largest_payload = largest_box_file - box_header_size;

std::uint64_t checksum_of(std::string_view payload) {
  return XXH3_64bits(payload.data(), payload.size());
}

/// A list of numbers in the file, empty where there is none.
template <typename T>
std::span<T const> numbers(flatbuffers::Vector<T> const* list) {
  return list == nullptr ? std::span<T const>() : std::span<T const>(list->data(), list->size());
}

template <typename T>
bool is_aligned(flatbuffers::Vector<T> const* list) {
  auto const values = numbers(list);
  return values.empty() || reinterpret_cast<std::uintptr_t>(values.data()) % alignof(T) == 0;
}

// ---- Limits

/// What a stored box takes in memory once it is read, estimated from above.
class MemoryUse {
 public:
  static std::uint64_t of(file::Box const& stored) {
    return numbers(stored.reserved()).size() * number + of(stored.words()) +
           of(stored.kmeans_classes()) + of(stored.dbscan_classes());
  }

 private:
  static constexpr std::uint64_t number = 8;
  static constexpr std::uint64_t empty_text = 32;
  static constexpr std::uint64_t text_byte = 48;  // a stored byte of a text that is not empty
  static constexpr std::uint64_t class_record = 400;
  static constexpr std::uint64_t member_record = 128;

  static std::uint64_t of(Bytes const* text) { return numbers(text).size() * text_byte; }
  static std::uint64_t of(file::TextList const* texts) {
    return texts == nullptr ? 0 : texts->count() * empty_text + of(texts->bytes());
  }
  static std::uint64_t of(file::WeightList const* weights) {
    return weights == nullptr ? 0 : weights->count() * number;
  }
  static std::uint64_t of(file::KMeansClass const& stored) {
    return class_record + of(stored.id()) + of(stored.name()) + of(stored.words()) +
           of(stored.weights()) + of(stored.dna());
  }
  static std::uint64_t of(file::DbscanClass const& stored) {
    return class_record + of(stored.id()) + of(stored.name()) + of(stored.members());
  }
  static std::uint64_t of(file::Member const& stored) {
    return member_record + of(stored.id()) + of(stored.weights());
  }
  template <typename T>
  static std::uint64_t of(flatbuffers::Vector<Offset<T>> const* list) {
    std::uint64_t sum = 0;
    for (flatbuffers::uoffset_t i = 0; list != nullptr && i < list->size(); ++i) {
      sum += of(*list->Get(i));
    }
    return sum;
  }
};

// ---- Reading

/// The box of a payload that is sound as far as its structure goes, else null.
file::Box const* sound_box(std::string_view payload) {
  // A table takes at least eight bytes unless tables are named more than once, which no writer
  // does.
  constexpr std::size_t smallest_table = 8;
  constexpr flatbuffers::uoffset_t most_depth = 8;
  auto const* const bytes = reinterpret_cast<std::uint8_t const*>(payload.data());
  auto const most_tables = static_cast<flatbuffers::uoffset_t>(payload.size() / smallest_table);
  flatbuffers::Verifier verifier(bytes, payload.size(), most_depth, most_tables);
  return file::VerifyBoxBuffer(verifier) ? file::GetBox(bytes) : nullptr;
}

bool is_within_limits(std::size_t payload_size, file::Box const& stored) {
  std::uint64_t const allowed =
      std::min(largest_box_memory, memory_of_any_box + most_expansion * payload_size);
  return MemoryUse::of(stored) <= allowed;
}

/// Takes numbers in LEB128 from the front of some bytes.
class NumberReader {
 public:
  explicit NumberReader(Bytes const* bytes) : bytes_(numbers(bytes)) {}

  std::size_t left() const { return bytes_.size(); }

  bool take(std::uint32_t& number) {
    constexpr unsigned last_shift = 28;
    number = 0;
    for (unsigned shift = 0; !bytes_.empty() && shift <= last_shift; shift += 7) {
      std::uint32_t const byte = bytes_.front();
      bytes_ = bytes_.subspan(1);
      number |= (byte & 0x7FU) << shift;
      if (byte < 0x80U) {
        return shift < last_shift || byte <= 0x0FU;
      }
    }
    return false;
  }

 private:
  std::span<std::uint8_t const> bytes_;
};

/// Brings a new list to its size. The system hands over all pages of a large one at once, which
/// takes it less time than page by page at the first touch; where it cannot, that is what happens.
template <typename T>
void enlarge(std::vector<T>& list, std::size_t size) {
  static auto const page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
  list.reserve(size);
  auto const start = (reinterpret_cast<std::uintptr_t>(list.data()) + page - 1) / page * page;
  auto const end = reinterpret_cast<std::uintptr_t>(list.data() + size) / page * page;
  if (end > start) {
    ::madvise(reinterpret_cast<void*>(start), end - start, MADV_POPULATE_WRITE);
  }
  list.resize(size);
}

/// Turns what is stored into records; false where it makes no sense.
class Decoder {
 public:
  bool decode(file::Box const& stored, QXPPolicyMorvaClustBox& box) {
    box.i_box_value = stored.box_value();
    box.i_cluster_type = stored.cluster_type();
    auto const reserved = numbers(stored.reserved());
    box.vt_reserved.assign(reserved.begin(), reserved.end());
    return decode(stored.words(), box.vt_words) &&
           decode(stored.kmeans_classes(), box.vt_kmeans_node) &&
           decode(stored.dbscan_classes(), box.vt_dbscan_node);
  }

 private:
  template <typename T, typename Record>
  bool decode(flatbuffers::Vector<Offset<T>> const* list, std::vector<Record>& records) {
    records.resize(list == nullptr ? 0 : list->size());
    for (flatbuffers::uoffset_t i = 0; i < records.size(); ++i) {
      if (!decode(*list->Get(i), records[i])) {
        return false;
      }
    }
    return true;
  }

  bool decode(file::KMeansClass const& stored, QXPKMeansNode& node) {
    node.d_radius = std::bit_cast<double>(stored.radius_bits());
    node.i_reserve = stored.reserve();
    return decode(stored.id(), node.str_class_id) && decode(stored.name(), node.str_class_name) &&
           decode(stored.words(), node.vt_words) && decode(stored.weights(), node.vt_weight) &&
           decode(stored.dna(), node.str_dna);
  }

  bool decode(file::DbscanClass const& stored, QXPDBScanNode& node) {
    node.d_eps = std::bit_cast<double>(stored.eps_bits());
    node.i_minpts = stored.min_points();
    return decode(stored.id(), node.str_class_id) && decode(stored.name(), node.str_class_name) &&
           decode(stored.members(), node.vt_file_node);
  }

  bool decode(file::Member const& stored, QXPFeatureNode& node) {
    return decode(stored.id(), node.str_file_id) && decode(stored.weights(), node.vt_weight);
  }

  bool decode(Bytes const* bytes, HString& text) {
    NumberReader reader(bytes);
    characters_.clear();
    while (reader.left() > 0) {
      std::uint32_t character = 0;
      if (!reader.take(character)) {
        return false;
      }
      characters_.push_back(static_cast<wchar_t>(character));
    }
    text = HString(characters_.data(), static_cast<int>(characters_.size()));
    return true;
  }

  bool decode(file::TextList const* stored, std::vector<HString>& texts) {
    if (stored == nullptr) {
      return true;
    }
    enlarge(texts, stored->count());
    NumberReader reader(stored->bytes());
    for (std::size_t i = 0; reader.left() > 0; ++i) {
      std::uint32_t length = 0;
      // No character takes less than a byte.
      if (i == texts.size() || !reader.take(length) || length > reader.left()) {
        return false;
      }
      characters_.resize(length);
      for (wchar_t& c : characters_) {
        std::uint32_t character = 0;
        if (!reader.take(character)) {
          return false;
        }
        c = static_cast<wchar_t>(character);
      }
      texts[i] = HString(characters_.data(), static_cast<int>(length));
    }
    return true;
  }

  static bool decode(file::WeightList const* stored, std::vector<double>& weights) {
    if (stored == nullptr) {
      return true;
    }
    // That much the check of the structure leaves open.
    if (!is_aligned(stored->values())) {
      return false;
    }
    auto const values = numbers(stored->values());
    if (stored->positions() == nullptr) {
      weights.assign(values.begin(), values.end());
      return values.size() == stored->count();
    }
    auto const positions = numbers(stored->positions());
    if (positions.size() != values.size()) {
      return false;
    }
    enlarge(weights, stored->count());
    std::uint64_t lowest = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (positions[i] < lowest || positions[i] >= weights.size()) {
        return false;
      }
      weights[positions[i]] = values[i];
      lowest = std::uint64_t{positions[i]} + 1;
    }
    return true;
  }

  std::wstring characters_;
};

// ---- Writing

/// An upper bound for what the record takes in the file.
class StoredSize {
 public:
  std::uint64_t of(QXPPolicyMorvaClustBox const& box) {
    add_numbers(box.vt_reserved.size());
    add(box.vt_words);
    for (QXPKMeansNode const& node : box.vt_kmeans_node) {
      add(node.str_class_id);
      add(node.str_class_name);
      add(node.vt_words);
      add_numbers(node.vt_weight.size());
      add(node.str_dna);
    }
    for (QXPDBScanNode const& node : box.vt_dbscan_node) {
      add(node.str_class_id);
      add(node.str_class_name);
      for (QXPFeatureNode const& member : node.vt_file_node) {
        add(member.str_file_id);
        add_numbers(member.vt_weight.size());
      }
    }
    return sum_;
  }

 private:
  static constexpr std::uint64_t entry = 128;  // a table, its vtable and what refers to it
  static constexpr std::uint64_t number = 8;
  static constexpr std::uint64_t character = 5;

  void add(HString const& text) { sum_ += entry + text.size() * character; }
  void add(std::vector<HString> const& texts) {
    sum_ += entry;
    for (HString const& text : texts) {
      sum_ += (text.size() + 1) * character;
    }
  }
  void add_numbers(std::size_t count) { sum_ += entry + count * number; }

  std::uint64_t sum_ = 0;
};

class Encoder {
 public:
  /// The payload, valid for as long as this object.
  std::string_view encode(QXPPolicyMorvaClustBox const& box) {
    auto const words = encode(box.vt_words);
    auto const reserved = builder_.CreateVector(box.vt_reserved);
    auto const kmeans = encode<file::KMeansClass>(box.vt_kmeans_node);
    auto const dbscan = encode<file::DbscanClass>(box.vt_dbscan_node);
    builder_.Finish(file::CreateBox(builder_, box.i_box_value, words, reserved, kmeans, dbscan,
                                    box.i_cluster_type));
    return {reinterpret_cast<char const*>(builder_.GetBufferPointer()), builder_.GetSize()};
  }

 private:
  template <typename T, typename Record>
  ListOffset<T> encode(std::vector<Record> const& records) {
    std::vector<Offset<T>> list;
    list.reserve(records.size());
    for (Record const& record : records) {
      list.push_back(encode(record));
    }
    return builder_.CreateVector(list);
  }

  Offset<file::KMeansClass> encode(QXPKMeansNode const& node) {
    auto const id = encode(node.str_class_id);
    auto const name = encode(node.str_class_name);
    auto const words = encode(node.vt_words);
    auto const weights = encode(node.vt_weight);
    auto const dna = encode(node.str_dna);
    auto const radius = std::bit_cast<std::uint64_t>(node.d_radius);
    return file::CreateKMeansClass(builder_, id, name, radius, words, weights, dna, node.i_reserve);
  }

  Offset<file::DbscanClass> encode(QXPDBScanNode const& node) {
    auto const id = encode(node.str_class_id);
    auto const name = encode(node.str_class_name);
    auto const members = encode<file::Member>(node.vt_file_node);
    auto const eps = std::bit_cast<std::uint64_t>(node.d_eps);
    return file::CreateDbscanClass(builder_, id, name, eps, node.i_minpts, members);
  }

  Offset<file::Member> encode(QXPFeatureNode const& node) {
    auto const id = encode(node.str_file_id);
    auto const weights = encode(node.vt_weight);
    return file::CreateMember(builder_, id, weights);
  }

  Offset<Bytes> encode(HString const& text) {
    bytes_.clear();
    append_characters(text);
    return builder_.CreateVector(bytes_);
  }

  Offset<file::TextList> encode(std::vector<HString> const& texts) {
    auto const last = std::find_if(texts.rbegin(), texts.rend(),
                                   [](HString const& text) { return text.not_empty(); });
    bytes_.clear();
    for (auto text = texts.begin(); text != last.base(); ++text) {
      append_number(static_cast<std::uint32_t>(text->size()));
      append_characters(*text);
    }
    auto const bytes = builder_.CreateVector(bytes_);
    return file::CreateTextList(builder_, static_cast<std::uint32_t>(texts.size()), bytes);
  }

  Offset<file::WeightList> encode(std::vector<double> const& weights) {
    auto const is_zero = [](double weight) { return std::bit_cast<std::uint64_t>(weight) == 0; };
    positions_.clear();
    values_.clear();
    for (std::size_t i = 0; i < weights.size(); ++i) {
      if (!is_zero(weights[i])) {
        positions_.push_back(static_cast<std::uint32_t>(i));
        values_.push_back(weights[i]);
      }
    }
    std::size_t const sparse = values_.size() * (sizeof(double) + sizeof(std::uint32_t));
    bool const is_sparse = sparse < weights.size() * sizeof(double);
    auto const values = builder_.CreateVector(is_sparse ? values_ : weights);
    auto const positions = is_sparse ? builder_.CreateVector(positions_) : 0;
    return file::CreateWeightList(builder_, static_cast<std::uint32_t>(weights.size()), positions,
                                  values);
  }

  void append_characters(HString const& text) {
    for (wchar_t const c : text.get_ws()) {
      append_number(static_cast<std::uint32_t>(c));
    }
  }

  void append_number(std::uint32_t number) {
    for (; number >= 0x80U; number >>= 7U) {
      bytes_.push_back(static_cast<std::uint8_t>(number | 0x80U));
    }
    bytes_.push_back(static_cast<std::uint8_t>(number));
  }

  Builder builder_;
  std::vector<std::uint8_t> bytes_;
  std::vector<std::uint32_t> positions_;
  std::vector<double> values_;
};

}  // namespace

std::string seal_box(std::string_view payload) {
  std::string content;
  content.reserve(box_header_size + payload.size());
  content.append(mark).resize(box_header_size, '\0');
  flatbuffers::WriteScalar(&content[version_at], format_version);
  flatbuffers::WriteScalar(&content[length_at], std::uint64_t{payload.size()});
  flatbuffers::WriteScalar(&content[checksum_at], checksum_of(payload));
  return content.append(payload);
}

std::optional<std::string> encode_box(QXPPolicyMorvaClustBox const& box) {
  // FlatBuffers can address no more than twice this.
  if (StoredSize().of(box) > largest_box_memory) {
    return std::nullopt;
  }
  Encoder encoder;
  std::string_view const payload = encoder.encode(box);
  file::Box const* const stored = payload.size() > largest_payload ? nullptr : sound_box(payload);
  if (stored == nullptr || !is_within_limits(payload.size(), *stored)) {
    return std::nullopt;
  }
  return seal_box(payload);
}

int decode_box(std::string const& content, QXPPolicyMorvaClustBox& box) {
  if (content.size() < box_header_size || !content.starts_with(mark)) {
    return -EBADMSG;
  }
  std::string_view const payload = std::string_view(content).substr(box_header_size);
  if (flatbuffers::ReadScalar<std::uint32_t>(&content[version_at]) != format_version) {
    return -ENOTSUP;
  }
  if (flatbuffers::ReadScalar<std::uint32_t>(&content[zero_at]) != 0 ||
      flatbuffers::ReadScalar<std::uint64_t>(&content[length_at]) != payload.size() ||
      flatbuffers::ReadScalar<std::uint64_t>(&content[checksum_at]) != checksum_of(payload)) {
    return -EBADMSG;
  }
  if (payload.size() > largest_payload) {
    return -EFBIG;
  }
  file::Box const* const stored = sound_box(payload);
  if (stored == nullptr) {
    return -EBADMSG;
  }
  if (!is_within_limits(payload.size(), *stored)) {
    return -EFBIG;
  }
  QXPPolicyMorvaClustBox loaded;
  if (!Decoder().decode(*stored, loaded)) {
    return -EBADMSG;
  }
  box = std::move(loaded);
  return 0;
}

}  // namespace morvabs
