#pragma once

#include <memory>

#include "host/HString.h"
#include "host/export.h"

/// One outgoing TCP connection. The public members are set first, then `connect` is called; the
/// connection is closed when the object ends.
class MORVA_EXPORT SITcpClient {
 public:
  /// Host name or address.
  HString mstr_server;
  /// TCP port of the server.
  int mi_port = 0;
  /// Who connects; the connection itself sends nothing.
  HString mstr_client_id;
  /// Kind of client, for the host; the connection itself does not look at it.
  int mi_type = 0;

  SITcpClient();
  ~SITcpClient();
  SITcpClient(SITcpClient const&) = delete;
  SITcpClient& operator=(SITcpClient const&) = delete;

  /// Connects to `mstr_server`:`mi_port`, name resolution included within 3 seconds. 0 on success,
  /// else the system's error number. The argument is reserved and is to be false. A connection that
  /// was open before is closed first.
  int connect(bool reserved);

 private:
  struct Connection;
  std::unique_ptr<Connection> connection_;
};
