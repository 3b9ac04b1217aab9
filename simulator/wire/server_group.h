#pragma once

#include <memory>
#include <vector>

#include "simulator/admin/admin_api.h"
#include "simulator/wire/connection_gate.h"
#include "simulator/wire/http_server.h"

namespace vantry_sim {

/// All ports of one simulator.
class ServerGroup {
 public:
  /// The simulator and the log outlive the group.
  ServerGroup(Simulator& simulator, RequestLog& log, GateLimits limits = {});

  /// Takes every port that the options ask for, and tells the simulator. @return -1, or the port that is not
  /// to be had. @throws std::runtime_error for a certificate that cannot be used
  [[nodiscard]] int Bind();

  /// The main port, after Bind.
  [[nodiscard]] int port() const { return port_; }
  /// The admin's port, after Bind; 0 without one.
  [[nodiscard]] int adminPort() const { return adminPort_; }

  /// Serves until Stop; returns when the last connection has ended. To be called once, after Bind.
  void Run();

  /// Ends Run, from any thread, also before it has begun.
  void Stop();

 private:
  int Open(Door door, const std::string& address, int port);

  Simulator& simulator_;
  RequestLog& log_;
  StopSignal stop_;
  BodyMemory bodies_;
  BodyMemory adminBodies_;  ///< of their own: who floods the other ports takes no room from these
  int port_ = 0;
  int adminPort_ = 0;
  AdminApi admin_;
  std::unique_ptr<TlsIdentity> tls_;
  std::vector<std::unique_ptr<HttpServer>> servers_;
  ConnectionGate gate_;
};

}  // namespace vantry_sim
