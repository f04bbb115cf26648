#include "box/HClusterBoxClient.h"

#include "host/HClusterEnvironment.h"
#include "host/HString.h"

HClusterBoxClient* HClusterBoxClient::preport = nullptr;

HClusterBoxClient::HClusterBoxClient() = default;
HClusterBoxClient::~HClusterBoxClient() = default;

HClusterBoxClient* HClusterBoxClient::pins() {
  if (preport == nullptr) {
    preport = new HClusterBoxClient;
  }
  if (!preport->mb_connect) {
    preport->init();
  }
  return preport;
}

void HClusterBoxClient::init() {
  HString server;
  int port = 0;
  if (!HClusterEnvironment::get_server_ip_port(server, port)) {
    return;
  }
  pclient = new SITcpClient;
  pclient->mstr_server = server;
  pclient->mi_port = port;
  pclient->mi_type = 0;
  pclient->mstr_client_id = HString::generateUUID2();
  if (pclient->connect(false) == 0) {
    mb_connect = true;
  }
}

bool HClusterBoxClient::is_connect() const {
  return mb_connect;
}

SITcpClient* HClusterBoxClient::get_client() {
  return pclient;
}
