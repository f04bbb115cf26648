#include "collect/HFileCollectReportClient.h"

HFileCollectReportClient* HFileCollectReportClient::preport = nullptr;

HFileCollectReportClient::HFileCollectReportClient() = default;
HFileCollectReportClient::~HFileCollectReportClient() = default;

HFileCollectReportClient* HFileCollectReportClient::pins() {
  if (preport == nullptr) {
    preport = new HFileCollectReportClient;
  }
  if (!preport->mb_connect) {
    preport->init();
  }
  return preport;
}

void HFileCollectReportClient::init(HString const& server, int const& port) {
  mstr_server = server;
  mi_port = port;
  mb_connect = false;
  delete pclient;
  pclient = nullptr;
  init();
}

void HFileCollectReportClient::init() {
  if (mstr_server.empty() || mi_port < 0) {
    return;
  }
  pclient = new SITcpClient;
  pclient->mi_port = mi_port;
  pclient->mstr_server = mstr_server;
  pclient->mi_type = 0;
  pclient->mstr_client_id = HString::generateUUID2();
  if (pclient->connect(false) == 0) {
    mb_connect = true;
  }
}

bool HFileCollectReportClient::is_connect() const {
  return mb_connect;
}

SITcpClient* HFileCollectReportClient::get_client() {
  return pclient;
}
