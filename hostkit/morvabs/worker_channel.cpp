#include "morvabs/worker_channel.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace morvabs {

namespace {

/// A message with room for one descriptor beside it.
class Envelope {
 public:
  explicit Envelope(Message& message) : part_{&message, sizeof message} {
    header_.msg_iov = &part_;
    header_.msg_iovlen = 1;
    header_.msg_control = control_.data();
    header_.msg_controllen = control_.size();
  }
  Envelope(Envelope const&) = delete;
  Envelope& operator=(Envelope const&) = delete;

  msghdr* header() { return &header_; }

  void enclose(int descriptor) {
    cmsghdr* const control = CMSG_FIRSTHDR(&header_);
    control->cmsg_level = SOL_SOCKET;
    control->cmsg_type = SCM_RIGHTS;
    control->cmsg_len = CMSG_LEN(sizeof descriptor);
    std::memcpy(CMSG_DATA(control), &descriptor, sizeof descriptor);
  }
  void enclose_nothing() { header_.msg_controllen = 0; }

  FileDescriptor take_out() {
    cmsghdr* const control = CMSG_FIRSTHDR(&header_);
    int descriptor = -1;
    if (control != nullptr && control->cmsg_type == SCM_RIGHTS &&
        control->cmsg_len == CMSG_LEN(sizeof descriptor)) {
      std::memcpy(&descriptor, CMSG_DATA(control), sizeof descriptor);
    }
    return FileDescriptor(descriptor);
  }

 private:
  iovec part_;
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control_{};
  msghdr header_{};
};

FileDescriptor beyond_standard_streams(FileDescriptor descriptor) {
  if (descriptor.get() > STDERR_FILENO) {
    return descriptor;
  }
  return FileDescriptor(::fcntl(descriptor.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

}  // namespace

bool open_channel(FileDescriptor& one, FileDescriptor& other) {
  int pair[2];
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair) != 0) {
    return false;
  }
  FileDescriptor first(pair[0]);
  FileDescriptor second(pair[1]);
  one = beyond_standard_streams(std::move(first));
  other = beyond_standard_streams(std::move(second));
  return one.is_open() && other.is_open();
}

bool send_all(int socket, void const* data, std::size_t size) {
  auto const* bytes = static_cast<char const*>(data);
  while (size > 0) {
    ssize_t const sent = ::send(socket, bytes, size, MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) {
      continue;
    }
    if (sent <= 0) {
      return false;
    }
    bytes += sent;
    size -= static_cast<std::size_t>(sent);
  }
  return true;
}

bool send_message(int socket, Message const& message, FileDescriptor const& file) {
  Message sent = message;
  Envelope envelope(sent);
  if (file.is_open()) {
    envelope.enclose(file.get());
  } else {
    envelope.enclose_nothing();
  }
  ssize_t size = -1;
  do {
    size = ::sendmsg(socket, envelope.header(), MSG_NOSIGNAL | MSG_DONTWAIT);
  } while (size < 0 && errno == EINTR);
  return size == static_cast<ssize_t>(sizeof sent);
}

bool receive_message(int socket, Message& message, FileDescriptor& file) {
  Envelope envelope(message);
  ssize_t size = -1;
  do {
    size = ::recvmsg(socket, envelope.header(), MSG_WAITALL | MSG_CMSG_CLOEXEC);
  } while (size < 0 && errno == EINTR);
  if (size != static_cast<ssize_t>(sizeof message)) {
    return false;
  }
  file = envelope.take_out();
  return true;
}

}  // namespace morvabs
