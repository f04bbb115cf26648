#pragma once

#include <cstddef>
#include <cstdint>

#include "morvabs/file_access.h"

namespace morvabs {

/// What a worker is sent; a descriptor may travel beside it.
struct Message {
  enum class Kind : std::uint64_t {
    /// To do a task. Beside it is its file.
    task = 1,
    /// The file without a name that the worker asked for is beside it, if there is one.
    unnamed_file,
  };
  Kind kind = Kind::task;
  std::uint64_t task = 0;
  /// There is a file, which `error` kept from being opened, or sent, if that is not 0.
  std::int32_t has_file = 0;
  std::int32_t error = 0;
};

/// What a worker answers; the task that it is at and a value stand beside it.
enum class AnswerKind : std::uint64_t {
  /// The value is the number of bytes that follow.
  result = 1,
  /// The value is the number of bytes that there would be.
  too_large,
  out_of_memory,
  /// The value is the number of a system call.
  refused_call,
  /// The value is the position of a component that is not loaded.
  missing_component,
  /// The value is the system's error number.
  not_shut_in,
  /// No answer yet: the task needs a file without a name, and waits for the message.
  unnamed_file_wanted,
  /// The task threw something that is not for want of memory.
  exception,
};

struct Answer {
  AnswerKind kind{};
  std::uint64_t task = 0;
  std::uint64_t value = 0;
};

/// The two ends, neither of which takes the place of a standard stream that is closed. False, with
/// errno set, on failure.
bool open_channel(FileDescriptor& one, FileDescriptor& other);

/// Both ends are blocking stream sockets. False when the other end is gone.
bool send_all(int socket, void const* data, std::size_t size);
bool receive_message(int socket, Message& message, FileDescriptor& file);
/// Does not wait. False, with errno set, also when the other end takes nothing any more (EAGAIN),
/// or no file for now.
bool send_message(int socket, Message const& message, FileDescriptor const& file);

}  // namespace morvabs
