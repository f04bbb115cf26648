#pragma once

#include "host/SITcpClient.h"
#include "host/export.h"

/// The connection to the server that boxes would come from. As no server address is known, none is
/// ever made; each `pins` asks for one again.
class MORVA_EXPORT HClusterBoxClient {
 public:
  /// The instance; null until the first `pins`.
  static HClusterBoxClient* preport;

  /// The connection, made by `init` and never released; null until then.
  SITcpClient* pclient = nullptr;
  /// A connection was made: never, as no server address is known.
  bool mb_connect = false;

  HClusterBoxClient();
  ~HClusterBoxClient();

  /// The instance, which tries to connect while it is not connected.
  static HClusterBoxClient* pins();
  /// One attempt to connect. Nothing changes where there is no server address.
  void init();
  /// `mb_connect`.
  bool is_connect() const;
  /// `pclient`.
  SITcpClient* get_client();
};
