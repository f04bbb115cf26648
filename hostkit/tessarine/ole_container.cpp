#include "tessarine/ole_container.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include <gsf/gsf-infile-msole.h>
#include <gsf/gsf-infile.h>
#include <gsf/gsf-input-impl.h>
#include <gsf/gsf-input.h>
#include <gsf/gsf-utils.h>

namespace tessarine {
namespace {

// GObject lays a derived instance out as the parent's structure followed by its own fields.
struct ReaderInput {
  GsfInput parent;
  Orlec::Reader const* reader;
  std::vector<guint8>* buffer;
};

GType reader_input_type();

GsfInput* make_input(Orlec::Reader const& reader) {
  auto* const object = g_object_new(reader_input_type(), nullptr);
  auto* const input = static_cast<ReaderInput*>(object);
  input->reader = &reader;
  auto* const base = static_cast<GsfInput*>(object);
  gsf_input_set_size(base, static_cast<gsf_off_t>(reader.GetSize()));
  return base;
}

GsfInput* duplicate(GsfInput* input, GError** /*error*/) {
  return make_input(*reinterpret_cast<ReaderInput*>(input)->reader);
}

guint8 const* read_input(GsfInput* input, std::size_t count, guint8* optional_buffer) {
  auto* const self = reinterpret_cast<ReaderInput*>(input);
  auto* target = optional_buffer;
  if (target == nullptr) {
    if (self->buffer->size() < count) {
      self->buffer->resize(count);
    }
    target = self->buffer->data();
  }
  std::size_t filled = 0;
  while (filled < count) {
    auto const got =
        self->reader->ReadAt(gsf_input_tell(input) + static_cast<gsf_off_t>(filled),
                             target + filled, static_cast<std::int64_t>(count - filled));
    if (got <= 0) {
      return nullptr;
    }
    filled += static_cast<std::size_t>(got);
  }
  return target;
}

gboolean seek_input(GsfInput* /*input*/, gsf_off_t /*offset*/, GSeekType /*whence*/) {
  return FALSE;  // the base class keeps the position, `read_input` asks it
}

void init_input(GTypeInstance* instance, gpointer /*type_class*/) {
  auto* const self = reinterpret_cast<ReaderInput*>(instance);
  self->reader = nullptr;
  self->buffer = new std::vector<guint8>();
}

void finalize_input(GObject* object) {
  auto* const self = reinterpret_cast<ReaderInput*>(object);
  delete self->buffer;
  self->buffer = nullptr;
  static_cast<GObjectClass*>(g_type_class_peek(gsf_input_get_type()))->finalize(object);
}

void init_input_class(gpointer type_class, gpointer /*data*/) {
  auto* const input_class = static_cast<GsfInputClass*>(type_class);
  input_class->Dup = duplicate;
  input_class->Read = read_input;
  input_class->Seek = seek_input;
  input_class->g_object_class.finalize = finalize_input;
}

void ignore_message(gchar const* /*domain*/, GLogLevelFlags /*level*/, gchar const* /*message*/,
                    gpointer /*data*/) {}

GType register_input_type() {
  gsf_init();
  // A damaged file is told by the result; the library's chatter about it belongs to nobody's
  // console.
  auto const all_levels = static_cast<GLogLevelFlags>(static_cast<int>(G_LOG_LEVEL_MASK) &
                                                      ~static_cast<int>(G_LOG_LEVEL_ERROR));
  for (auto const* const domain : {"libgsf:msole", "libgsf"}) {
    g_log_set_handler(domain, all_levels, ignore_message, nullptr);
  }
  GTypeInfo info{};
  info.class_size = sizeof(GsfInputClass);
  info.class_init = init_input_class;
  info.instance_size = sizeof(ReaderInput);
  info.instance_init = init_input;
  return g_type_register_static(gsf_input_get_type(), "MorvaReaderInput", &info,
                                static_cast<GTypeFlags>(0));
}

GType reader_input_type() {
  static GType const type = register_input_type();
  return type;
}

struct Unreference {
  void operator()(gpointer object) const { g_object_unref(object); }
};

}  // namespace

struct OleContainer::State {
  std::unique_ptr<GsfInfile, Unreference> root;

  std::unique_ptr<GsfInput, Unreference> child(std::string_view name) const {
    return std::unique_ptr<GsfInput, Unreference>(
        root == nullptr ? nullptr
                        : gsf_infile_child_by_name(root.get(), std::string(name).c_str()));
  }
};

OleContainer::OleContainer(Orlec::Reader const& reader) : state_(std::make_unique<State>()) {
  std::unique_ptr<GsfInput, Unreference> const input(make_input(reader));
  state_->root.reset(gsf_infile_msole_new(input.get(), nullptr));
}

OleContainer::~OleContainer() = default;

bool OleContainer::is_open() const {
  return state_->root != nullptr;
}

bool OleContainer::has(std::string_view name) const {
  return state_->child(name) != nullptr;
}

std::string OleContainer::content(std::string_view name, std::int64_t limit) const {
  auto const stream = state_->child(name);
  if (stream == nullptr) {
    return {};
  }
  auto const size = std::clamp<std::int64_t>(gsf_input_size(stream.get()), 0, limit);
  std::string content(static_cast<std::size_t>(size), '\0');
  auto* const bytes = reinterpret_cast<guint8*>(content.data());
  if (size == 0 || gsf_input_read(stream.get(), content.size(), bytes) == nullptr) {
    return {};
  }
  return content;
}

}  // namespace tessarine
