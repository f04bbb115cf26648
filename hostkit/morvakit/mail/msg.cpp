#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <string_view>

#include "morvakit/embedded.h"
#include "morvakit/formats.h"
#include "morvakit/mail/mail_mapi.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

using tessarine::OleStorage;

constexpr std::string_view fixed_properties = "__properties_version1.0";
constexpr std::string_view variable_property = "__substg1.0_";
constexpr std::int64_t most_fixed_bytes = std::int64_t{64} << 10;
constexpr std::size_t fixed_property_size = 16;

std::string hexadecimal(std::uint32_t value) {
  std::array<char, 9> digits{};
  std::snprintf(digits.data(), digits.size(), "%08X", value);
  return digits.data();
}

std::string stream_name(MapiTag tag) {
  return std::string(variable_property) +
         hexadecimal(std::uint32_t{tag.id} << 16U | static_cast<std::uint32_t>(tag.type));
}

/// An item that is a storage: each property of variable size is a stream of its own, those of fixed
/// size stand together in one.
class StoredItem final : public MapiItem {
 public:
  /// `outer_code_page`: what the message says of its recipients and attachments.
  explicit StoredItem(OleStorage const& storage, int outer_code_page = 0)
      : storage_(storage),
        fixed_(storage.content(fixed_properties, most_fixed_bytes)),
        code_page_(outer_code_page) {
    for (auto const id : {MapiId::internet_code_page, MapiId::message_code_page}) {
      auto const page = number({static_cast<std::uint16_t>(id), MapiType::integer}).value_or(0);
      bool const is_wide = page == 1200 || page == 1201;
      code_page_ = page != 0 && page <= 0xffff && !is_wide ? static_cast<int>(page) : code_page_;
    }
  }

  int code_page() const override { return code_page_; }

  std::unique_ptr<Orlec::Reader> bytes(MapiTag tag) const override {
    return storage_.stream(stream_name(tag));
  }

  std::optional<std::uint64_t> number(MapiTag tag) const override {
    auto const wanted = std::uint32_t{tag.id} << 16U | static_cast<std::uint32_t>(tag.type);
    // The header in front has 32, 24 or 8 bytes by the kind of item, the entries have 16.
    for (auto at = fixed_.size() % fixed_property_size; at + fixed_property_size <= fixed_.size();
         at += fixed_property_size) {
      if (tessarine::little32(fixed_, at) == wanted) {
        return tessarine::little64(fixed_, at + 8);
      }
    }
    return std::nullopt;
  }

  void visit_named_texts(MapiType type, TextConsumer const& consumer) const override {
    auto const many = type == MapiType::text_16 ? MapiType::many_text_16 : MapiType::many_text_8;
    auto const one_suffix = hexadecimal(static_cast<std::uint32_t>(type)).substr(4);
    auto const many_suffix = hexadecimal(static_cast<std::uint32_t>(many)).substr(4) + "-";
    constexpr std::size_t id_length = 4;
    for (auto const& entry : storage_.entries()) {
      auto name = std::string_view(entry.name);
      if (entry.is_storage || !name.starts_with(variable_property)) {
        continue;
      }
      name.remove_prefix(variable_property.size());
      bool const is_named = name.size() > id_length && name.front() >= '8';
      auto const rest = name.substr(std::min(id_length, name.size()));
      bool const is_wanted = is_named && (rest == one_suffix || rest.starts_with(many_suffix));
      auto const text = is_wanted ? storage_.stream(entry.name) : nullptr;
      if (text != nullptr && !consumer(*text)) {
        return;
      }
    }
  }

 private:
  OleStorage const& storage_;
  std::string fixed_;
  int code_page_;
};

/// A message or an OLE object that is attached as a storage.
constexpr std::string_view attached_storage = "__substg1.0_3701000D";

void read_attachment(OleStorage const& storage, int code_page, bool is_of_envelope,
                     ReadContext& context) {
  StoredItem const item(storage, code_page);
  auto const inner = storage.storage(attached_storage);
  if (!inner.is_open()) {
    read_mapi_attachment(item, is_of_envelope, context);
    return;
  }
  auto const name = item.text(MapiId::display_name, context);
  read_embedded(inner, name.empty() ? "message" : name, context);
}

}  // namespace

void read_msg(OleStorage const& storage, ReadContext& context) {
  StoredItem const message(storage);
  read_mapi_message(message, context);
  auto const entries = storage.entries();
  for (auto const& entry : entries) {
    if (entry.is_storage && entry.name.starts_with("__recip_version1.0_") && context.keep_going()) {
      read_mapi_recipient(StoredItem(storage.storage(entry.name), message.code_page()), context);
    }
  }
  bool const is_envelope = is_mapi_envelope(message, context);
  for (auto const& entry : entries) {
    if (entry.is_storage && entry.name.starts_with("__attach_version1.0_") &&
        context.keep_going()) {
      read_attachment(storage.storage(entry.name), message.code_page(), is_envelope, context);
    }
  }
}

}  // namespace morvakit
