#pragma once

#include <array>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "support/local_server.h"

namespace test {

/// A server that answers nobody: it accepts no connection, and as many as it lets wait are waiting
/// already.
class SilentServer {
 public:
  SilentServer() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<in_port_t>(server_.port()));
    for (int& waiting : waiting_) {
      waiting = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
      // Those behind the first few stay on the way, which is the purpose.
      static_cast<void>(
          connect(waiting, reinterpret_cast<sockaddr const*>(&address), sizeof address));
    }
  }
  ~SilentServer() {
    for (int const waiting : waiting_) {
      close(waiting);
    }
  }
  SilentServer(SilentServer const&) = delete;
  SilentServer& operator=(SilentServer const&) = delete;

  int port() const { return server_.port(); }

 private:
  LocalServer server_;
  std::array<int, 16> waiting_{};
};

}  // namespace test
