#include "host/HClusterEnvironment.h"

HClusterEnvironment::HClusterEnvironment() = default;
HClusterEnvironment::~HClusterEnvironment() = default;

bool HClusterEnvironment::IsAgentInstalled() {
  return HAppExclusive_is_exist(L"VelorinAgentOnlyOneInstance");
}

bool HClusterEnvironment::HAppExclusive_is_exist(HString const& /*instance_name*/) {
  return false;
}

bool HClusterEnvironment::get_server_ip_port(HString& /*server*/, int& /*port*/) {
  return false;
}
