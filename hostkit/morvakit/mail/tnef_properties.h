#pragma once

#include <cstdint>
#include <vector>

#include "host/Orlec/IFile.h"
#include "morvakit/mail/mail_mapi.h"
#include "morvakit/read_context.h"

namespace morvakit {

/// One value of a property within a file.
struct TnefProperty {
  MapiTag tag;
  std::int64_t offset = 0;
  std::int64_t size = 0;
  bool is_named = false;
};

/// The properties of one item, as TNEF writes them in a row ([MS-OXTNEF]): where their values
/// stand.
class TnefItem final : public MapiItem {
 public:
  explicit TnefItem(Orlec::Reader const& file) : file_(file) {}

  void set_code_page(int code_page) { code_page_ = code_page; }
  void add(TnefProperty const& property) { properties_.push_back(property); }
  /// Adds the properties between two offsets; several rows in one block, as recipients have them,
  /// come one by one. Returns where the row ended, which is always behind its beginning. Ends at
  /// the first property that makes no sense.
  std::int64_t add_row(std::int64_t begin, std::int64_t end, ReadContext& context);
  /// The value of an attached object; null where there is none.
  TnefProperty const* find(MapiTag tag) const;

  std::unique_ptr<Orlec::Reader> bytes(MapiTag tag) const override;
  std::optional<std::uint64_t> number(MapiTag tag) const override;
  void visit_named_texts(MapiType type, TextConsumer const& consumer) const override;
  int code_page() const override { return code_page_; }

 private:
  Orlec::Reader const& file_;
  std::vector<TnefProperty> properties_;
  int code_page_ = 0;
};

}  // namespace morvakit
