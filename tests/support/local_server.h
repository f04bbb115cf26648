#pragma once

#include <stdexcept>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace test {

/// A socket on a free port of this machine, listening unless told otherwise.
class LocalServer {
 public:
  explicit LocalServer(bool listening = true) : socket_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (bind(socket_, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
        getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &length) != 0 ||
        (listening && listen(socket_, 4) != 0)) {
      throw std::runtime_error("no server");
    }
    port_ = ntohs(address.sin_port);
  }
  ~LocalServer() { close(socket_); }
  LocalServer(LocalServer const&) = delete;
  LocalServer& operator=(LocalServer const&) = delete;

  int port() const { return port_; }
  int accept_one() const { return accept(socket_, nullptr, nullptr); }

 private:
  int socket_;
  int port_ = 0;
};

}  // namespace test
