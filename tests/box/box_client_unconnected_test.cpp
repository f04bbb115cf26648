#include <gtest/gtest.h>

#include "box/HClusterBoxClient.h"

namespace {

TEST(BoxClientOfThisLibrary, never_connects) {
  HClusterBoxClient* const client = HClusterBoxClient::pins();
  EXPECT_EQ(HClusterBoxClient::pins(), client);
  EXPECT_EQ(client->get_client(), nullptr);
  EXPECT_FALSE(client->is_connect());
}

}  // namespace
