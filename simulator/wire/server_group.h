#pragma once

#include <memory>
#include <vector>

#include "simulator/wire/http_server.h"

namespace vantry_sim {

/// All ports of one simulator.
class ServerGroup {
 public:
  /// The simulator and the log outlive the group.
  ServerGroup(Simulator& simulator, RequestLog& log);

  /// Takes every port that the options ask for. @return -1, or the port that is not to be had
  [[nodiscard]] int Bind();

  /// The main port, behind Bind.
  [[nodiscard]] int port() const { return servers_.front()->port(); }

  /// Serves until Stop, or until one of the servers ends by itself; returns when all have ended.
  void Run();

  /// Ends Run, from any thread.
  void Stop();

 private:
  Simulator& simulator_;
  RequestLog& log_;
  std::vector<std::unique_ptr<HttpServer>> servers_;
};

}  // namespace vantry_sim
