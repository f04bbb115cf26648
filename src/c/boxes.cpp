#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "box/HFileClusterBoxIni.h"
#include "box/HFileClusterBoxMgr.h"
#include "classify/HFileMatchClassifyMgr.h"
#include "cluster/cluster_type.h"
#include "host/HFile.h"
#include "host/HIniFileHelper.h"
#include "host/Orlec/LocateMgr.h"
#include "host/native_path.h"
#include "host/utf8.h"
#include "morvaai_c.h"

#include "c/internal/call.h"
#include "c/internal/document.h"
#include "c/internal/shown.h"

using morva::c::Failure;
using morva::c::needed;
using morva::c::shown;

namespace {

constexpr int kmeans_type = 0;
constexpr wchar_t const* suffix = L".box";

// The boxes of all handles. The classifiers ask the manager of the process, which stays as the host
// has it: this one stands in its place while they work for a handle. So does the kind of center,
// which they set.
class OwnManager {
 public:
  OwnManager()
      : former_(std::exchange(HFileClusterBoxMgr::pbox, &own())), former_type_(gi_K_ClusterType) {}
  ~OwnManager() {
    HFileClusterBoxMgr::pbox = former_;
    gi_K_ClusterType = former_type_;
  }
  OwnManager(OwnManager const&) = delete;
  OwnManager& operator=(OwnManager const&) = delete;

  HFileClusterBoxMgr* operator->() const { return &own(); }

 private:
  static HFileClusterBoxMgr& own() {
    static auto* const manager = [] {
      auto made = std::make_unique<HFileClusterBoxMgr>();
      // It has no index of its own.
      made->mb_init = true;
      return made.release();
    }();
    return *manager;
  }

  HFileClusterBoxMgr* former_;
  int former_type_;
};

// The index that is read, for one scope.
class IndexPath {
 public:
  explicit IndexPath(HString path)
      : former_(std::exchange(HFileClusterBoxIni::mstr_box_ini, std::move(path))) {}
  ~IndexPath() { HFileClusterBoxIni::mstr_box_ini = former_; }
  IndexPath(IndexPath const&) = delete;
  IndexPath& operator=(IndexPath const&) = delete;

 private:
  HString former_;
};

struct Class {
  std::string box_id;
  std::string id;
  std::string name;
  // Of its box in the manager; no other handle has it.
  HString key;
  HString wide_id;
};

// The class that reads the index takes one that it cannot read for an empty one.
void check_index(HString const& path) {
  HIniFileHelper index;
  index.mb_utf8 = true;
  index.setFile(path);
  if (!index.read_all()) {
    std::string const reason = std::system_category().message(errno);
    throw Failure(MORVA_BAD_BOX, shown(path) + ": the index of boxes cannot be read: " + reason);
  }
}

std::vector<HClusterBoxLocalNode> read_index(HString const& directory) {
  HString const index = HString(directory).dir_fit(true) + L"box.ini";
  if (!HFile::IsFileExistFile(index)) {
    throw Failure(MORVA_CANNOT_OPEN, shown(index) + ": there is no index of boxes", ENOENT);
  }
  check_index(index);
  IndexPath const in_force(index);
  std::vector<HClusterBoxLocalNode> entries;
  HFileClusterBoxIni::read_local_box_node(entries);
  return entries;
}

QXPPolicyMorvaClustBox read_box(HString const& path) {
  QXPPolicyMorvaClustBox box;
  int const error = -box.from_file(path);
  if (error == ENOENT || error == EACCES) {
    throw Failure(MORVA_CANNOT_OPEN, shown(path) + ": " + std::system_category().message(error),
                  error);
  }
  if (error == EBADMSG) {
    throw Failure(MORVA_BAD_BOX, shown(path) + ": it is no box file, or it is damaged");
  }
  if (error != 0) {
    throw Failure(MORVA_BAD_BOX, shown(path) + ": " + std::system_category().message(error));
  }
  return box;
}

// Of several classes with one id, the one that decides.
HString name_of(QXPPolicyMorvaClustBox const& box, HString const& id) {
  auto const is_class = [&id](auto const& node) { return node.str_class_id == id; };
  if (box.i_cluster_type == kmeans_type) {
    auto const& classes = box.vt_kmeans_node;
    auto const last = std::find_if(classes.rbegin(), classes.rend(), is_class);
    return last == classes.rend() ? HString() : last->str_class_name;
  }
  auto const& classes = box.vt_dbscan_node;
  auto const first = std::find_if(classes.begin(), classes.end(), is_class);
  return first == classes.end() ? HString() : first->str_class_name;
}

// Whether documents are compared with its classes by their fingerprints.
bool is_by_fingerprint(QXPPolicyMorvaClustBox const& box) {
  return box.i_cluster_type == kmeans_type && box.vt_kmeans_node.size() > 1 &&
         box.vt_kmeans_node.front().str_dna.not_empty();
}

}  // namespace

/// Boxes in the manager, and the classes that are asked.
struct morva_boxes {
 public:
  morva_boxes() = default;
  ~morva_boxes() {
    if (keys_.empty()) {
      return;
    }
    OwnManager const manager;
    for (HString const& key : keys_) {
      manager->map_box.erase(key);
    }
    std::erase_if(manager->vt_local_box, [this](HClusterBoxLocalNode const& node) {
      return std::find(keys_.begin(), keys_.end(), node.str_box_id) != keys_.end();
    });
  }
  morva_boxes(morva_boxes const&) = delete;
  morva_boxes& operator=(morva_boxes const&) = delete;

  void add_file(HString const& path) {
    QXPPolicyMorvaClustBox box = read_box(path);
    std::vector<HString> ids;
    OwnManager()->get_vt_class_id(box, ids);
    add(path.get_short_name_no_suffix(), ids, std::move(box));
  }

  void add_directory(HString const& directory) {
    for (HClusterBoxLocalNode const& entry : read_index(directory)) {
      HString const& id = entry.str_box_id;
      auto const name = morvabs::to_path(id);
      if (!name || name->empty() || name->find('/') != std::string::npos) {
        throw Failure(MORVA_BAD_BOX, shown(directory) + ": its index names the box " + shown(id) +
                                         ", which is no file name");
      }
      add(id, entry.vt_class_id, read_box(HString(directory).dir_fit(true) + id + suffix));
    }
  }

  unsigned wants() const { return wants_; }
  std::size_t size() const { return classes_.size(); }
  Class const* at(std::size_t position) const {
    return position < classes_.size() ? &classes_[position] : nullptr;
  }

  // The position of the first class that takes the document; SIZE_MAX for none.
  std::size_t match(HFeatureNode const& document) const {
    OwnManager const manager;
    HFileMatchClassifyMgr const* const classifiers = HFileMatchClassifyMgr::pins();
    HString name;
    for (HClusterBoxLocalNode const& entry : entries_) {
      if (!classifiers->match(document, entry.vt_class_id, entry.str_box_id, name)) {
        continue;
      }
      // It tells the name; the class is the first that says yes by itself.
      for (std::size_t i = 0; i < classes_.size(); ++i) {
        if (classes_[i].key == entry.str_box_id && is_in_class(document, i)) {
          return i;
        }
      }
    }
    return SIZE_MAX;
  }

  bool is_in_class(HFeatureNode const& document, std::size_t position) const {
    OwnManager const manager;
    HString name;
    Class const& asked = classes_[position];
    return HFileMatchClassifyMgr::pins()->match(document, asked.wide_id, asked.key, name);
  }

 private:
  void add(HString const& id, std::vector<HString> const& class_ids, QXPPolicyMorvaClustBox box) {
    static std::uint64_t made = 0;
    // No file has this name, so that none is ever looked for.
    HString const key = HString(std::to_string(++made).c_str()) + L"/" + id;
    keys_.push_back(key);
    for (HString const& class_id : class_ids) {
      classes_.push_back({morvabs::to_utf8(text_view(id)), morvabs::to_utf8(text_view(class_id)),
                          morvabs::to_utf8(text_view(name_of(box, class_id))), key, class_id});
    }
    wants_ |= is_by_fingerprint(box) ? unsigned{MORVA_WANT_WIDE_DNA} : 0U;
    HClusterBoxLocalNode entry;
    entry.str_box_id = key;
    entry.vt_class_id = class_ids;
    entries_.push_back(entry);
    OwnManager const manager;
    manager->vt_local_box.push_back(entry);
    manager->map_box.emplace(key, std::move(box));
  }

  std::vector<HString> keys_;
  std::vector<HClusterBoxLocalNode> entries_;
  std::vector<Class> classes_;
  unsigned wants_ = MORVA_WANT_WORDS;
};

namespace {

// What a document is matched by; a failure where it was not read for that.
HFeatureNode record_for(morva_boxes const* boxes, morva_document const* document) {
  unsigned const wants = needed(boxes, "boxes")->wants();
  unsigned const has = needed(document, "document")->wants().flags;
  if ((wants & ~has) != 0) {
    throw Failure(MORVA_NOT_ASKED, (has & MORVA_WANT_WORDS) == 0
                                       ? "the document was read without MORVA_WANT_WORDS"
                                       : "the document was read without MORVA_WANT_WIDE_DNA");
  }
  return document->record();
}

char const* field_of(morva_boxes const* boxes, std::size_t position, std::string Class::*field) {
  Class const* const found = boxes == nullptr ? nullptr : boxes->at(position);
  return found == nullptr ? nullptr : (found->*field).c_str();
}

}  // namespace

morva_status morva_boxes_open(char const* path, morva_boxes** boxes) {
  return morva::c::locked_status_of([&] {
    morva_boxes*& result = morva::c::emptied(boxes, "boxes");
    HString const place =
        path == nullptr ? Orlec::LocateMgr::pins()->get_box_path(false) : morvabs::from_path(path);
    auto opened = std::make_unique<morva_boxes>();
    if (path == nullptr || HFile::IsFileExistDir(place)) {
      opened->add_directory(place);
    } else {
      opened->add_file(place);
    }
    result = opened.release();
  });
}

void morva_boxes_close(morva_boxes* boxes) {
  morva::c::locked_status_of([boxes] { std::unique_ptr<morva_boxes> const ended(boxes); });
}

unsigned morva_boxes_wants(morva_boxes const* boxes) {
  return boxes == nullptr ? 0 : boxes->wants();
}

size_t morva_boxes_class_count(morva_boxes const* boxes) {
  return boxes == nullptr ? 0 : boxes->size();
}

char const* morva_boxes_box_id(morva_boxes const* boxes, size_t position) {
  return field_of(boxes, position, &Class::box_id);
}

char const* morva_boxes_class_id(morva_boxes const* boxes, size_t position) {
  return field_of(boxes, position, &Class::id);
}

char const* morva_boxes_class_name(morva_boxes const* boxes, size_t position) {
  return field_of(boxes, position, &Class::name);
}

morva_status morva_boxes_match(morva_boxes const* boxes, morva_document const* document,
                               size_t* position) {
  return morva::c::locked_status_of([&] {
    std::size_t& result = *needed(position, "position");
    result = SIZE_MAX;
    HFeatureNode const record = record_for(boxes, document);
    result = boxes->match(record);
  });
}

morva_status morva_boxes_is_in_class(morva_boxes const* boxes, morva_document const* document,
                                     size_t position, int* is_in_class) {
  return morva::c::locked_status_of([&] {
    int& result = morva::c::emptied(is_in_class, "is_in_class");
    HFeatureNode const record = record_for(boxes, document);
    if (boxes->at(position) == nullptr) {
      throw Failure(MORVA_INVALID_ARGUMENT, "there is no class at that position");
    }
    result = boxes->is_in_class(record, position) ? 1 : 0;
  });
}
