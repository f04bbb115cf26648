#include "morvakit/mail/mail_parts.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

template <std::size_t N>
bool is_one_of(std::array<std::string_view, N> const& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

bool is_html(std::string_view type) {
  constexpr std::array<std::string_view, 5> types{
      "text/html", "application/xhtml+xml", "text/enriched", "text/richtext", "text/watch-html"};
  return is_one_of(types, type);
}

bool is_report(std::string_view type) {
  constexpr std::array<std::string_view, 7> types{
      "message/delivery-status", "message/disposition-notification",
      "message/feedback-report", "message/global-delivery-status",
      "message/tracking-status", "text/rfc822-headers",
      "message/global-headers"};
  return is_one_of(types, type);
}

/// Parts that hold no words of the mail.
bool is_machinery(std::string_view type) {
  constexpr std::array<std::string_view, 7> types{"application/pgp-signature",
                                                  "application/pkcs7-signature",
                                                  "application/x-pkcs7-signature",
                                                  "application/applefile",
                                                  "application/pgp-encrypted",
                                                  "message/external-body",
                                                  "text/x-amp-html"};
  return is_one_of(types, type);
}

/// Parts of a web page that are neither text nor picture.
bool is_page_machinery(std::string_view type) {
  constexpr std::array<std::string_view, 7> types{"text/css",
                                                  "text/javascript",
                                                  "text/xml",
                                                  "application/javascript",
                                                  "application/x-javascript",
                                                  "application/x-mso",
                                                  "application/vnd.ms-officetheme"};
  return is_one_of(types, type) || type.starts_with("font/") ||
         type.starts_with("application/font");
}

bool is_smime(MimePart const& part) {
  constexpr std::array<std::string_view, 2> types{"application/pkcs7-mime",
                                                  "application/x-pkcs7-mime"};
  auto const name = tessarine::ascii_lower(part.file_name());
  return is_one_of(types, part.type.value) ||
         (part.type.value == "application/octet-stream" && name == "smime.p7m");
}

class RoleFinder {
 public:
  RoleFinder(MimeOutline const& outline, RoleOptions const& options)
      : parts_(outline.parts), options_(options), roles_(outline.parts.size(), PartRole::silent) {}

  std::vector<PartRole> run() {
    for (std::size_t i = 0; i < parts_.size(); ++i) {
      roles_[i] = role_of(i);
    }
    find_ends();
    for (std::size_t i = 0; i < parts_.size(); ++i) {
      if (parts_[i].type.value == "multipart/alternative") {
        take_alternative(i);
      }
    }
    return std::move(roles_);
  }

 private:
  PartRole role_of(std::size_t number) {
    auto const& part = parts_[number];
    auto const& type = part.type.value;
    auto const& parent = parts_[part.parent].type.value;
    if (part.is_multipart()) {
      return type == "multipart/encrypted" ? PartRole::encrypted : PartRole::silent;
    }
    if (parent == "multipart/encrypted") {
      return PartRole::silent;
    }
    if (is_machinery(type)) {
      return part.file_name().empty() ? PartRole::silent : PartRole::machinery;
    }
    bool const is_in_page = options_.is_web_archive && parent == "multipart/related";
    if (is_in_page && is_page_machinery(type)) {
      return PartRole::silent;
    }
    if (is_smime(part)) {
      return PartRole::smime;
    }
    bool const is_attached = part.disposition.value == "attachment";
    if (type.starts_with("image/")) {
      return is_attached ? PartRole::attachment : PartRole::picture;
    }
    if (is_report(type) && !is_attached) {
      return PartRole::report;
    }
    return is_attached ? PartRole::attachment : role_of_shown(part, parent);
  }

  /// A text with a name is a file, unless nothing has been shown yet.
  PartRole role_of_shown(MimePart const& part, std::string_view parent) {
    auto const& type = part.type.value;
    auto const role = type == "text/plain"      ? PartRole::text
                      : is_html(type)           ? PartRole::html
                      : type == "text/calendar" ? PartRole::calendar
                                                : PartRole::attachment;
    bool const is_shown = part.file_name().empty() || !has_text_ ||
                          parent == "multipart/alternative" || parent == "multipart/related";
    if (role == PartRole::attachment || !is_shown) {
      return PartRole::attachment;
    }
    has_text_ = true;
    return role;
  }

  /// For each part, the position behind the last part within it.
  void find_ends() {
    ends_.resize(parts_.size());
    for (std::size_t i = parts_.size(); i-- > 0;) {
      ends_[i] = std::max(ends_[i], i + 1);
      auto& end_of_parent = ends_[parts_[i].parent];
      end_of_parent = std::max(end_of_parent, ends_[i]);
    }
  }

  bool holds(std::size_t number, PartRole role) {
    for (auto i = number; i < ends_[number]; ++i) {
      if (roles_[i] == role && (role != PartRole::text || !is_blank(i))) {
        return true;
      }
    }
    return false;
  }

  /// Asked once for each part, whatever alternatives it stands in.
  bool is_blank(std::size_t number) {
    blank_.resize(parts_.size());
    auto& known = blank_[number];
    known = known ? known : options_.is_blank(parts_[number]);
    return *known;
  }

  void take_alternative(std::size_t number) {
    auto taken = ends_[number];
    for (auto const role : {PartRole::text, PartRole::html}) {
      for (auto i = number + 1; i < ends_[number] && taken == ends_[number]; i = ends_[i]) {
        taken = holds(i, role) ? i : taken;
      }
    }
    for (auto i = number + 1; i < ends_[number]; i = ends_[i]) {
      if (i != taken) {
        silence(i);
      }
    }
  }

  void silence(std::size_t number) {
    for (auto i = number; i < ends_[number]; ++i) {
      if (roles_[i] == PartRole::text || roles_[i] == PartRole::html) {
        roles_[i] = PartRole::silent;
      }
    }
  }

  std::vector<MimePart> const& parts_;
  RoleOptions const& options_;
  std::vector<PartRole> roles_;
  std::vector<std::size_t> ends_;
  std::vector<std::optional<bool>> blank_;
  bool has_text_ = false;
};

}  // namespace

std::vector<PartRole> find_part_roles(MimeOutline const& outline, RoleOptions const& options) {
  return RoleFinder(outline, options).run();
}

std::vector<std::size_t> reading_order(MimeOutline const& outline) {
  std::vector<std::size_t> order(outline.parts.size());
  for (std::size_t i = 0; i < order.size(); ++i) {
    order[i] = i;
  }
  auto start = outline.parts.front().type.parameter("start");
  start.remove_prefix(start.starts_with('<') ? 1 : 0);
  start = start.substr(0, start.find('>'));
  auto const is_start = [&](std::size_t number) {
    return !start.empty() && outline.parts[number].content_id == start;
  };
  auto const found = std::find_if(order.begin(), order.end(), is_start);
  if (found != order.end()) {
    std::rotate(order.begin(), found, found + 1);
  }
  return order;
}

}  // namespace morvakit
