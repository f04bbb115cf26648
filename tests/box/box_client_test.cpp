#include <memory>

#include <gtest/gtest.h>

#include "box/HClusterBoxClient.h"
#include "host/HClusterEnvironment.h"

#include "support/local_server.h"
#include "support/log_capture.h"

namespace {

/// What the agent around the library knows of its server; port 0 for nothing.
struct KnownServer {
  int port = 0;
  int questions = 0;
};

KnownServer known;

}  // namespace

/// Takes the place of the library's own, which knows of no server.
bool HClusterEnvironment::get_server_ip_port(HString& server, int& port) {
  ++known.questions;
  if (known.port == 0) {
    return false;
  }
  server = L"127.0.0.1";
  port = known.port;
  return true;
}

namespace {

class BoxClient : public testing::Test {
 protected:
  BoxClient() {
    known = {};
    HClusterBoxClient::preport = &client;
  }
  ~BoxClient() override { HClusterBoxClient::preport = nullptr; }

  /// The connection, which nobody else releases.
  std::unique_ptr<SITcpClient> taken() { return std::unique_ptr<SITcpClient>(client.get_client()); }

  HClusterBoxClient client;
};

TEST_F(BoxClient, starts_without_a_connection) {
  EXPECT_EQ(client.get_client(), nullptr);
  EXPECT_FALSE(client.is_connect());
  EXPECT_EQ(known.questions, 0);
}

TEST_F(BoxClient, is_made_at_the_first_use) {
  HClusterBoxClient::preport = nullptr;
  HClusterBoxClient* const made = HClusterBoxClient::pins();
  EXPECT_EQ(HClusterBoxClient::pins(), made);
  EXPECT_EQ(made->get_client(), nullptr);
  EXPECT_FALSE(made->is_connect());
  delete made;
}

TEST_F(BoxClient, asks_for_the_server_at_every_use_while_none_is_known) {
  test::LogCapture const log;
  for (int uses = 1; uses <= 3; ++uses) {
    EXPECT_EQ(HClusterBoxClient::pins(), &client);
    EXPECT_EQ(known.questions, uses);
  }
  EXPECT_EQ(client.get_client(), nullptr);
  EXPECT_FALSE(client.is_connect());
  EXPECT_TRUE(log.records().empty());
}

TEST_F(BoxClient, connects_to_a_server_that_listens_and_then_asks_no_more) {
  test::LocalServer const server;
  known.port = server.port();
  HClusterBoxClient::pins();
  HClusterBoxClient::pins();
  auto const connection = taken();
  EXPECT_TRUE(client.is_connect());
  EXPECT_EQ(known.questions, 1);
  ASSERT_NE(connection, nullptr);
  EXPECT_EQ(connection->mstr_server, HString(L"127.0.0.1"));
  EXPECT_EQ(connection->mi_port, known.port);
  EXPECT_EQ(connection->mi_type, 0);
  EXPECT_EQ(connection->mstr_client_id.size(), 32U);
}

TEST_F(BoxClient, keeps_the_object_of_a_connection_that_failed) {
  test::LocalServer const silent(false);
  known.port = silent.port();
  test::LogCapture const log;
  client.init();
  auto const connection = taken();
  EXPECT_FALSE(client.is_connect());
  EXPECT_NE(connection, nullptr);
  EXPECT_TRUE(log.records().empty());
}

TEST_F(BoxClient, tries_again_with_a_new_object) {
  test::LocalServer const silent(false);
  known.port = silent.port();
  client.init();
  auto const first = taken();
  HString const first_id = first->mstr_client_id;
  HClusterBoxClient::pins();
  auto const second = taken();
  EXPECT_NE(first, second);
  EXPECT_FALSE(first_id == second->mstr_client_id);
}

TEST_F(BoxClient, stays_connected_for_good) {
  test::LocalServer const server;
  known.port = server.port();
  client.init();
  auto const first = taken();
  test::LocalServer const silent(false);
  known.port = silent.port();
  client.init();
  auto const second = taken();
  EXPECT_TRUE(client.is_connect());
}

}  // namespace
