#include <array>
#include <cerrno>
#include <memory>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include "collect/HFileCollectReportClient.h"

#include "support/local_server.h"
#include "support/log_capture.h"
#include "support/silent_server.h"

namespace {

HString const here = L"127.0.0.1";

/// A client in place of the process's own.
class ReportClient : public testing::Test {
 protected:
  ReportClient() { HFileCollectReportClient::preport = &client; }
  ~ReportClient() override {
    HFileCollectReportClient::preport = nullptr;
    delete client.get_client();
  }

  HFileCollectReportClient client;
};

/// What the other end of a connection reads: 0 once it is closed.
ssize_t read_one(int accepted) {
  std::array<char, 1> byte{};
  return recv(accepted, byte.data(), byte.size(), 0);
}

TEST_F(ReportClient, starts_without_a_server) {
  EXPECT_EQ(client.pclient, nullptr);
  EXPECT_FALSE(client.mb_connect);
  EXPECT_TRUE(client.mstr_server.empty());
  EXPECT_EQ(client.mi_port, 0);
}

TEST_F(ReportClient, is_made_at_the_first_use) {
  HFileCollectReportClient::preport = nullptr;
  HFileCollectReportClient* const made = HFileCollectReportClient::pins();
  EXPECT_EQ(HFileCollectReportClient::pins(), made);
  EXPECT_FALSE(made->is_connect());
  EXPECT_EQ(made->get_client(), nullptr);
  delete made;
}

TEST_F(ReportClient, makes_no_attempt_before_a_server_is_set) {
  EXPECT_EQ(HFileCollectReportClient::pins(), &client);
  EXPECT_FALSE(client.is_connect());
  EXPECT_EQ(client.get_client(), nullptr);
}

TEST_F(ReportClient, connects_to_a_server_that_listens) {
  test::LocalServer const server;
  client.init(here, server.port());
  EXPECT_TRUE(client.is_connect());
  EXPECT_EQ(client.mstr_server, here);
  EXPECT_EQ(client.mi_port, server.port());
}

TEST_F(ReportClient, tells_the_connection_where_to_and_who) {
  test::LocalServer const server;
  client.init(here, server.port());
  SITcpClient const* const connection = client.get_client();
  ASSERT_NE(connection, nullptr);
  EXPECT_EQ(connection->mstr_server, here);
  EXPECT_EQ(connection->mi_port, server.port());
  EXPECT_EQ(connection->mi_type, 0);
  EXPECT_EQ(connection->mstr_client_id.length(), 32);
}

TEST_F(ReportClient, sends_nothing_of_its_own) {
  test::LocalServer const server;
  client.init(here, server.port());
  int const accepted = server.accept_one();
  client.init(here, -1);
  EXPECT_EQ(read_one(accepted), 0);
  close(accepted);
}

TEST_F(ReportClient, keeps_the_connection_at_the_next_use) {
  test::LocalServer const server;
  client.init(here, server.port());
  SITcpClient const* const first = client.get_client();
  EXPECT_EQ(HFileCollectReportClient::pins()->get_client(), first);
}

TEST_F(ReportClient, does_not_notice_a_lost_connection) {
  auto server = std::make_unique<test::LocalServer>();
  client.init(here, server->port());
  SITcpClient const* const first = client.get_client();
  close(server->accept_one());
  server.reset();
  EXPECT_TRUE(HFileCollectReportClient::pins()->is_connect());
  EXPECT_EQ(client.get_client(), first);
}

TEST_F(ReportClient, keeps_the_object_of_an_attempt_that_failed) {
  test::LocalServer const refusing(false);
  client.init(here, refusing.port());
  EXPECT_FALSE(client.is_connect());
  EXPECT_NE(client.get_client(), nullptr);
}

TEST_F(ReportClient, tries_again_at_the_next_use_with_a_new_object) {
  test::LocalServer const refusing(false);
  client.init(here, refusing.port());
  // Nobody else releases the object of the first attempt, which is still there.
  std::unique_ptr<SITcpClient> const first(client.get_client());
  HFileCollectReportClient::pins();
  ASSERT_NE(client.get_client(), nullptr);
  EXPECT_NE(client.get_client(), first.get());
  EXPECT_EQ(first->mi_port, refusing.port());
  EXPECT_FALSE(client.get_client()->mstr_client_id == first->mstr_client_id);
}

TEST_F(ReportClient, connects_at_the_next_use_when_the_server_is_there_by_then) {
  test::LocalServer const server;
  client.mstr_server = here;
  client.mi_port = server.port();
  EXPECT_FALSE(client.is_connect());
  EXPECT_TRUE(HFileCollectReportClient::pins()->is_connect());
}

TEST_F(ReportClient, port_0_is_tried) {
  client.init(here, 0);
  EXPECT_FALSE(client.is_connect());
  EXPECT_NE(client.get_client(), nullptr);
}

TEST_F(ReportClient, gives_up_a_server_that_does_not_answer) {
  test::SilentServer const silent;
  client.init(here, silent.port());
  EXPECT_FALSE(client.is_connect());
  EXPECT_NE(client.get_client(), nullptr);
}

TEST_F(ReportClient, an_empty_server_closes_the_connection) {
  test::LocalServer const server;
  client.init(here, server.port());
  int const accepted = server.accept_one();
  client.init(HString(), server.port());
  EXPECT_EQ(read_one(accepted), 0);
  EXPECT_EQ(client.get_client(), nullptr);
  EXPECT_FALSE(client.is_connect());
  close(accepted);
}

TEST_F(ReportClient, a_negative_port_closes_the_connection) {
  test::LocalServer const server;
  client.init(here, server.port());
  int const accepted = server.accept_one();
  client.init(here, -1);
  EXPECT_EQ(read_one(accepted), 0);
  EXPECT_EQ(client.get_client(), nullptr);
  EXPECT_FALSE(client.is_connect());
  EXPECT_EQ(client.mi_port, -1);
  close(accepted);
}

TEST_F(ReportClient, setting_the_server_again_closes_the_connection_and_makes_another) {
  test::LocalServer const server;
  client.init(here, server.port());
  HString const first_id = client.get_client()->mstr_client_id;
  int const first = server.accept_one();
  client.init(here, server.port());
  EXPECT_EQ(read_one(first), 0);
  EXPECT_TRUE(client.is_connect());
  EXPECT_FALSE(client.get_client()->mstr_client_id == first_id);
  close(first);
}

TEST_F(ReportClient, setting_a_server_that_refuses_ends_being_connected) {
  test::LocalServer const server;
  test::LocalServer const refusing(false);
  client.init(here, server.port());
  client.init(here, refusing.port());
  EXPECT_FALSE(client.is_connect());
}

TEST_F(ReportClient, may_be_given_its_own_settings) {
  test::LocalServer const server;
  client.init(here, server.port());
  client.init(client.get_client()->mstr_server, client.get_client()->mi_port);
  EXPECT_TRUE(client.is_connect());
  EXPECT_EQ(client.get_client()->mstr_server, here);
}

TEST_F(ReportClient, its_end_leaves_the_connection_open) {
  test::LocalServer const server;
  std::unique_ptr<SITcpClient> connection;
  {
    HFileCollectReportClient ending;
    ending.init(here, server.port());
    connection.reset(ending.get_client());
  }
  int const accepted = server.accept_one();
  std::array<char, 1> byte{};
  EXPECT_EQ(recv(accepted, byte.data(), byte.size(), MSG_DONTWAIT), -1);
  EXPECT_EQ(errno, EAGAIN);
  close(accepted);
}

TEST_F(ReportClient, logs_nothing) {
  test::LocalServer const server;
  test::LocalServer const refusing(false);
  test::LogCapture const log;
  client.init(here, refusing.port());
  client.init(here, server.port());
  client.init(here, -1);
  HFileCollectReportClient::pins();
  EXPECT_TRUE(log.records().empty());
}

}  // namespace
