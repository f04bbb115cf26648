#include "tessarine/ole_storage.h"

#include <algorithm>
#include <utility>
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

using Input = std::unique_ptr<GsfInput, Unreference>;

class StreamReader final : public Orlec::Reader {
 public:
  StreamReader(Input input, std::string_view name)
      : input_(std::move(input)), name_(std::string(name).c_str()) {}

  std::int64_t ReadAt(std::int64_t offset, void* buffer, std::int64_t size) const override {
    auto const count = std::min(size, GetSize() - offset);
    if (offset < 0 || count <= 0) {
      return 0;
    }
    bool const is_read = gsf_input_seek(input_.get(), offset, G_SEEK_SET) == FALSE &&
                         gsf_input_read(input_.get(), static_cast<std::size_t>(count),
                                        static_cast<guint8*>(buffer)) != nullptr;
    return is_read ? count : -1;
  }
  std::int64_t GetSize() const override { return gsf_input_size(input_.get()); }
  HString const& GetPath() const override { return name_; }

 private:
  Input input_;
  HString name_;
};

}  // namespace

struct OleStorage::State {
  std::unique_ptr<GsfInfile, Unreference> infile;

  Input child(std::string_view name) const {
    return Input(infile == nullptr
                     ? nullptr
                     : gsf_infile_child_by_name(infile.get(), std::string(name).c_str()));
  }
};

OleStorage::OleStorage(Orlec::Reader const& file) : state_(std::make_unique<State>()) {
  Input const input(make_input(file));
  state_->infile.reset(gsf_infile_msole_new(input.get(), nullptr));
}

OleStorage::OleStorage(std::unique_ptr<State> state) : state_(std::move(state)) {}
OleStorage::~OleStorage() = default;
OleStorage::OleStorage(OleStorage&& other) noexcept = default;
OleStorage& OleStorage::operator=(OleStorage&& other) noexcept = default;

bool OleStorage::is_open() const {
  return state_->infile != nullptr;
}

std::vector<OleEntry> OleStorage::entries() const {
  std::vector<OleEntry> entries;
  auto const count = is_open() ? gsf_infile_num_children(state_->infile.get()) : 0;
  for (int i = 0; i < count; ++i) {
    Input const child(gsf_infile_child_by_index(state_->infile.get(), i));
    auto const* const name = gsf_infile_name_by_index(state_->infile.get(), i);
    if (child == nullptr || name == nullptr) {
      continue;
    }
    bool const is_storage =
        GSF_IS_INFILE(child.get()) && gsf_infile_num_children(GSF_INFILE(child.get())) >= 0;
    entries.push_back({name, is_storage, is_storage ? 0 : gsf_input_size(child.get())});
  }
  return entries;
}

bool OleStorage::has(std::string_view name) const {
  return state_->child(name) != nullptr;
}

OleStorage OleStorage::storage(std::string_view name) const {
  auto state = std::make_unique<State>();
  if (auto child = state_->child(name); child != nullptr && GSF_IS_INFILE(child.get()) &&
                                        gsf_infile_num_children(GSF_INFILE(child.get())) >= 0) {
    state->infile.reset(GSF_INFILE(child.release()));
  }
  return OleStorage(std::move(state));
}

std::unique_ptr<Orlec::Reader> OleStorage::stream(std::string_view name) const {
  auto child = state_->child(name);
  if (child == nullptr) {
    return nullptr;
  }
  return std::make_unique<StreamReader>(std::move(child), name);
}

std::string OleStorage::content(std::string_view name, std::int64_t limit) const {
  auto const found = stream(name);
  if (found == nullptr) {
    return {};
  }
  std::string content(
      static_cast<std::size_t>(std::clamp<std::int64_t>(found->GetSize(), 0, limit)), '\0');
  auto const got = found->ReadAt(0, content.data(), static_cast<std::int64_t>(content.size()));
  content.resize(static_cast<std::size_t>(std::max<std::int64_t>(got, 0)));
  return content;
}

}  // namespace tessarine
