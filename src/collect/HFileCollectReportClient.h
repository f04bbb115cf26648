#pragma once

#include "host/HString.h"
#include "host/SITcpClient.h"
#include "host/export.h"

/// Holds the one connection to the report server. It is only opened here; what goes over it is the
/// caller's business.
///
/// A lost connection is not noticed: `is_connect` stays true until a server is set again. From one
/// thread at a time.
class MORVA_EXPORT HFileCollectReportClient {
 public:
  /// The instance; null until the first `pins`.
  static HFileCollectReportClient* preport;

  /// The connection, or the attempt that failed; null until there was one.
  SITcpClient* pclient = nullptr;
  /// The last attempt to connect has succeeded.
  bool mb_connect = false;
  /// Host name or address of the server; empty while none is set.
  HString mstr_server;
  /// Its TCP port; no attempt is made while it is negative.
  int mi_port = 0;

  HFileCollectReportClient();
  /// Leaves the connection open, and its object allocated.
  ~HFileCollectReportClient();

  /// The instance, which lives as long as the process. While it is not connected, each call tries
  /// to connect, and may take as long as `SITcpClient::connect` may; the objects of failed attempts
  /// are never released.
  static HFileCollectReportClient* pins();
  /// Closes the connection and makes one attempt to connect to this server.
  void init(HString const& server, int const& port);
  /// One attempt to connect, with a new object and a new identifier, to the server that was set.
  /// Nothing changes while none is set: an empty address or a negative port.
  void init();
  /// Whether the last attempt to connect has succeeded.
  bool is_connect() const;
  /// The object of the last attempt, connected or not; may be null.
  SITcpClient* get_client();
};
