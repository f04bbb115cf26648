#include <array>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <set>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include "host/SITcpClient.h"

#include "support/local_server.h"
#include "support/silent_server.h"

namespace {

using Server = test::LocalServer;

/// Leaves no descriptor to open for as long as it lives.
class NoDescriptors {
 public:
  NoDescriptors() {
    getrlimit(RLIMIT_NOFILE, &old_);
    rlimit const none{0, old_.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
  }
  ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &old_); }
  NoDescriptors(NoDescriptors const&) = delete;
  NoDescriptors& operator=(NoDescriptors const&) = delete;

 private:
  rlimit old_{};
};

/// The descriptors of this process that a program started by it would have as well.
std::set<int> inherited_descriptors() {
  std::set<int> inherited;
  for (auto const& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    int const descriptor = std::stoi(entry.path().filename().string());
    int const flags = fcntl(descriptor, F_GETFD);
    if (flags >= 0 && (flags & FD_CLOEXEC) == 0) {
      inherited.insert(descriptor);
    }
  }
  return inherited;
}

int connect_to(HString const& server, int port) {
  SITcpClient client;
  client.mstr_server = server;
  client.mi_port = port;
  client.mstr_client_id = L"client";
  return client.connect(false);
}

TEST(SITcpClient, connects_to_an_address) {
  Server const server;
  EXPECT_EQ(connect_to(L"127.0.0.1", server.port()), 0);
}

TEST(SITcpClient, connects_to_a_host_name) {
  Server const server;
  EXPECT_EQ(connect_to(L"localhost", server.port()), 0);
}

TEST(SITcpClient, a_port_where_nobody_listens_refuses) {
  Server const silent(false);
  EXPECT_EQ(connect_to(L"127.0.0.1", silent.port()), ECONNREFUSED);
}

TEST(SITcpClient, a_server_that_cannot_be_is_invalid) {
  for (int const port : {0, -1, 65536}) {
    EXPECT_EQ(connect_to(L"127.0.0.1", port), EINVAL);
  }
  EXPECT_EQ(connect_to(HString(), 80), EINVAL);
  EXPECT_EQ(connect_to(HString(L"a\0b", 3), 80), EINVAL);
}

TEST(SITcpClient, a_name_that_nobody_has_fails) {
  EXPECT_NE(connect_to(L"no-such-host.invalid", 80), 0);
}

TEST(SITcpClient, a_name_that_is_too_long_fails) {
  EXPECT_NE(connect_to(HString(std::string(1 << 20, 'a').c_str()), 80), 0);
}

TEST(SITcpClient, a_name_that_is_no_unicode_fails) {
  EXPECT_NE(connect_to(HString(static_cast<wchar_t>(0x80000000U)), 80), 0);
}

TEST(SITcpClient, a_server_that_does_not_answer_is_given_up) {
  test::SilentServer const server;
  EXPECT_EQ(connect_to(L"127.0.0.1", server.port()), ETIMEDOUT);
}

TEST(SITcpClient, without_descriptors_there_is_no_connection) {
#ifdef MORVA_SANITIZED
  GTEST_SKIP() << "the sanitizer needs descriptors of its own to look at an exception";
#endif
  Server const server;
  NoDescriptors const none;
  EXPECT_EQ(connect_to(L"127.0.0.1", server.port()), EMFILE);
}

TEST(SITcpClient, what_a_server_sends_is_not_taken_in) {
  Server const server;
  SITcpClient client;
  client.mstr_server = L"127.0.0.1";
  client.mi_port = server.port();
  ASSERT_EQ(client.connect(false), 0);
  int const accepted = server.accept_one();
  std::string const piece(1 << 16, 'x');
  // It ends when the buffers of the system are full.
  while (send(accepted, piece.data(), piece.size(), MSG_DONTWAIT) > 0) {
  }
  EXPECT_EQ(errno, EAGAIN);
  close(accepted);
}

TEST(SITcpClient, the_connection_sends_nothing_and_closes_with_the_object) {
  Server const server;
  auto client = std::make_unique<SITcpClient>();
  client->mstr_server = L"127.0.0.1";
  client->mi_port = server.port();
  ASSERT_EQ(client->connect(false), 0);
  int const accepted = server.accept_one();
  client.reset();
  std::array<char, 1> byte{};
  EXPECT_EQ(recv(accepted, byte.data(), 1, 0), 0);
  close(accepted);
}

TEST(SITcpClient, connecting_again_closes_the_old_connection) {
  Server const server;
  SITcpClient client;
  client.mstr_server = L"127.0.0.1";
  client.mi_port = server.port();
  ASSERT_EQ(client.connect(false), 0);
  int const first = server.accept_one();
  ASSERT_EQ(client.connect(false), 0);
  std::array<char, 1> byte{};
  EXPECT_EQ(recv(first, byte.data(), 1, 0), 0);
  close(first);
}

TEST(SITcpClient, a_program_that_the_host_starts_does_not_inherit_the_connection) {
  Server const server;
  auto const before = inherited_descriptors();
  SITcpClient client;
  client.mstr_server = L"127.0.0.1";
  client.mi_port = server.port();
  ASSERT_EQ(client.connect(false), 0);
  EXPECT_EQ(inherited_descriptors(), before);
}

}  // namespace
