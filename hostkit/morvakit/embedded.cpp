#include "morvakit/embedded.h"

#include <exception>
#include <functional>
#include <new>
#include <string>

#include "host/utf8.h"
#include "morvakit/formats.h"
#include "morvakit/ole/ole_object.h"

#include "tessarine/ole_types.h"

namespace morvakit {

namespace {

using Orlec::ParseOutcome;

constexpr std::string_view no_reader = "there is no reader for this type";

/// Runs a format's reader on a document whose type is known.
void read_guarded(tessarine::Recognition const& recognition, ReadContext& context,
                  std::function<void()> const& read) {
  if (recognition.encrypted) {
    context.end(ParseOutcome::encrypted, "the document needs a password");
    return;
  }
  try {
    read();
  } catch (std::bad_alloc const&) {
    throw;
  } catch (std::exception const&) {
    context.end(ParseOutcome::failed, "the reader of this type failed");
  }
}

/// What is wrong with the directory of a container.
void note_directory(tessarine::OleStorage const& root, ReadContext& context) {
  if (!root.fault().empty()) {
    context.note(root.is_over_bound() ? ParseOutcome::limit_reached : ParseOutcome::damaged,
                 root.fault());
  }
}

/// A directory that is damaged leaves what can be reached, one that is lost what the type allows to
/// find without it.
void read_compound_file(Orlec::Reader const& reader, tessarine::Recognition const& recognition,
                        StorageReadFunction read, ReadContext& context) {
  tessarine::OleStorage const root(reader);
  note_directory(root, context);
  if (root.is_open()) {
    read(root, context);
  } else if (auto const read_remains = find_format(recognition.type).remains;
             read_remains != nullptr) {
    read_remains(reader, recognition, context);
  }
}

/// What became of an embedded file, told to the document that it is embedded in. That most types,
/// such as pictures, have no text to be read is no fault.
void note_fault(ReadContext const& inner, std::string const& name, ReadContext& context) {
  auto const outcome = inner.outcome();
  bool const is_without_reader =
      outcome == ParseOutcome::not_supported && inner.reason() == no_reader;
  if (outcome == ParseOutcome::text || outcome == ParseOutcome::no_text || is_without_reader) {
    return;
  }
  auto reason = name.empty() ? "an embedded file" : "\"" + name + "\"";
  reason += outcome == ParseOutcome::encrypted ? " needs a password" : ": " + inner.reason();
  context.note(outcome == ParseOutcome::limit_reached ? outcome : ParseOutcome::incomplete, reason);
}

/// Counts the file and reads it in a context of its own, unless it lies too deep.
bool read_inner(std::string const& name, ReadContext& context,
                std::function<void(ReadContext&)> const& read) {
  if (!context.keep_going()) {
    return false;
  }
  context.count_embedded();
  if (context.depth() >= context.limits().i_nesting) {
    context.note(ParseOutcome::limit_reached, "files embedded in each other over " +
                                                  std::to_string(context.limits().i_nesting) +
                                                  " deep");
    return true;
  }
  auto inner = context.for_embedded();
  read(inner);
  note_fault(inner, name, context);
  return context.keep_going();
}

}  // namespace

void read_document(Orlec::Reader const& reader, tessarine::Recognition const& recognition,
                   ReadContext& context) {
  auto const most = context.limits().i_input_bytes;
  if (reader.GetSize() > most && !recognition.encrypted) {
    context.end(ParseOutcome::limit_reached, "the file is over " + std::to_string(most) + " bytes");
    return;
  }
  read_guarded(recognition, context, [&] {
    if (auto const read_file = find_format(recognition.type).file; read_file != nullptr) {
      read_file(reader, recognition, context);
    } else if (auto const read_storage = find_format(recognition.type).storage;
               read_storage != nullptr) {
      read_compound_file(reader, recognition, read_storage, context);
    } else {
      context.end(ParseOutcome::not_supported, no_reader);
    }
  });
}

namespace {

/// Reads the document that the storage is; a file that it wraps within its own wrapping counts as
/// embedded in it.
void read_storage(tessarine::OleStorage const& storage, std::string_view name,
                  ReadContext& context) {
  auto const recognition = tessarine::recognize_ole_storage(storage, {});
  read_guarded(recognition, context, [&] {
    if (auto const read = find_format(recognition.type).storage; read != nullptr) {
      read(storage, context);
    } else if (auto const wrapped = open_wrapped_file(storage, name); wrapped != nullptr) {
      read_embedded(*wrapped, context);
    }
  });
}

/// Whether its bytes are there at all: the chain of an embedded stream may lead nowhere.
bool is_readable(Orlec::Reader const& file) {
  char first = 0;
  return file.GetSize() <= 0 || file.ReadAt(0, &first, 1) == 1;
}

bool read_file(Orlec::Reader const& file, tessarine::Recognition const& recognition,
               ReadContext& context) {
  auto const name = morvabs::to_utf8(file.GetPath().get_ws());
  return read_inner(name, context, [&](ReadContext& inner) {
    if (!is_readable(file)) {
      inner.end(ParseOutcome::damaged, "the file cannot be read");
    } else if (recognition.type == tessarine::FileType::ole_other) {
      tessarine::OleStorage const root(file);
      note_directory(root, inner);
      read_storage(root, name, inner);
    } else {
      read_document(file, recognition, inner);
    }
  });
}

/// The file that the storage wraps, unless the storage is a document itself.
std::unique_ptr<Orlec::Reader> unwrap(tessarine::OleStorage const& storage, std::string_view name) {
  auto const recognition = tessarine::recognize_ole_storage(storage, {});
  bool const is_document =
      recognition.encrypted || find_format(recognition.type).storage != nullptr;
  return is_document ? nullptr : open_wrapped_file(storage, name);
}

}  // namespace

bool read_embedded(Orlec::Reader const& file, ReadContext& context) {
  auto const recognition = tessarine::recognize(file);
  if (recognition.type == tessarine::FileType::ole_other) {
    tessarine::OleStorage const storage(file);
    if (auto const wrapped = unwrap(storage, morvabs::to_utf8(file.GetPath().get_ws()));
        wrapped != nullptr) {
      return read_file(*wrapped, tessarine::recognize(*wrapped), context);
    }
  }
  return read_file(file, recognition, context);
}

bool read_embedded(tessarine::OleStorage const& storage, std::string_view name,
                   ReadContext& context) {
  if (auto const wrapped = unwrap(storage, name); wrapped != nullptr) {
    return read_file(*wrapped, tessarine::recognize(*wrapped), context);
  }
  return read_inner(std::string(name), context,
                    [&](ReadContext& inner) { read_storage(storage, name, inner); });
}

bool read_embedded(std::string_view name, ReadContext& context,
                   std::function<void(ReadContext&)> const& read) {
  return read_inner(std::string(name), context, read);
}

}  // namespace morvakit
