#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "host/Orlec/IFile.h"
#include "morvakit/read_context.h"

namespace morvakit {

/// The numbers of the records that the reader of PowerPoint 97 to 2003 presentations knows. What is
/// drawn is in records of its own range, which other programs have too.
namespace ppt {

inline constexpr std::uint16_t document = 1000;
inline constexpr std::uint16_t slide = 1006;
inline constexpr std::uint16_t slide_atom = 1007;
inline constexpr std::uint16_t notes = 1008;
inline constexpr std::uint16_t slide_persist = 1011;
inline constexpr std::uint16_t main_master = 1016;
inline constexpr std::uint16_t newer_placeholder = 1056;
inline constexpr std::uint16_t placeholder = 3011;
inline constexpr std::uint16_t newest_placeholder = 3037;
inline constexpr std::uint16_t outline_text_ref = 3998;
inline constexpr std::uint16_t text_header = 3999;
inline constexpr std::uint16_t text_characters = 4000;
inline constexpr std::uint16_t text_bytes = 4008;
inline constexpr std::uint16_t string = 4026;
inline constexpr std::uint16_t ole_object_atom = 4035;
inline constexpr std::uint16_t ole_embedded = 4044;
inline constexpr std::uint16_t hyperlink = 4055;
inline constexpr std::uint16_t slide_number_field = 4056;
inline constexpr std::uint16_t headers_footers = 4057;
inline constexpr std::uint16_t slide_list = 4080;
inline constexpr std::uint16_t user_edit = 4085;
inline constexpr std::uint16_t date_field = 4087;
inline constexpr std::uint16_t footer_field = 4090;
inline constexpr std::uint16_t ole_storage = 4113;
inline constexpr std::uint16_t formatted_date_field = 4117;
inline constexpr std::uint16_t tag_data = 5003;
inline constexpr std::uint16_t persist_directory = 6002;
inline constexpr std::uint16_t comment = 12000;
inline constexpr std::uint16_t encryption = 12052;

inline constexpr std::uint16_t stored_picture = 0xf007;
inline constexpr std::uint16_t shape_group = 0xf003;
inline constexpr std::uint16_t shape = 0xf004;
inline constexpr std::uint16_t shape_atom = 0xf00a;
inline constexpr std::uint16_t shape_properties = 0xf00b;
inline constexpr std::uint16_t place_in_group = 0xf00f;
inline constexpr std::uint16_t more_shape_properties = 0xf122;

}  // namespace ppt

/// A record: what it is, and where its content lies in the stream.
struct PptRecord {
  std::uint16_t type = 0;
  std::uint16_t instance = 0;
  bool holds_records = false;
  /// Whether it claims to be longer than what it is in.
  bool is_cut = false;
  std::int64_t offset = 0;
  std::int64_t size = 0;

  std::int64_t end() const { return offset + size; }
};

/// Receives the records within one.
class PptHandler {
 public:
  virtual ~PptHandler() = default;
  /// A record that holds others begins; false leaves it out, without a call of `close`.
  virtual bool open(PptRecord const& record) = 0;
  virtual void close(PptRecord const& record) = 0;
  virtual void atom(PptRecord const& record) = 0;
};

/// The records of a presentation. None of them is taken into memory as a whole.
class PptStream {
 public:
  PptStream(std::unique_ptr<Orlec::Reader> bytes, ReadContext& context)
      : bytes_(std::move(bytes)), context_(context) {}

  ReadContext& context() { return context_; }
  Orlec::Reader const& bytes() const { return *bytes_; }
  std::int64_t size() const { return bytes_->GetSize(); }
  /// Whether the stream reaches as far as is said of it.
  bool is_whole() const;

  /// The record whose head is at `offset`; none where there is no room for one before `end`. Of one
  /// that reaches over `end`, what is in front of it.
  std::optional<PptRecord> record_at(std::int64_t offset, std::int64_t end) const;
  std::optional<PptRecord> record_at(std::int64_t offset) const {
    return record_at(offset, size());
  }
  /// Hands all records within `outer` to the handler, however deep they are nested. Damage is
  /// noted.
  void walk(PptRecord const& outer, PptHandler& handler);

  /// Bytes of a record's content, `limit` at most.
  std::string content(PptRecord const& record, std::int64_t offset, std::int64_t limit) const;
  /// A number in its content; 0 where that is too short.
  std::uint32_t number(PptRecord const& record, std::int64_t offset) const;

 private:
  void note_if_cut(PptRecord const& record);

  std::unique_ptr<Orlec::Reader> bytes_;
  ReadContext& context_;
};

}  // namespace morvakit
