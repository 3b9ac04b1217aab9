#pragma once

#include <memory>
#include <string>

#include "simulator/request_log.h"
#include "simulator/simulator.h"

namespace vantry_sim {

/// Serves a simulator over HTTP, with the faults and the latency of its options.
class HttpServer {
 public:
  /// The simulator and the log outlive the server.
  HttpServer(Simulator& simulator, RequestLog& log);
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;
  ~HttpServer();

  /// Takes the address and port of the options. @return false when they are not to be had
  [[nodiscard]] bool Bind();

  /// The port that Bind took.
  [[nodiscard]] int port() const;

  /// Serves until Stop; returns when the last connection has ended. To be called once, after Bind.
  void Run();

  /// Ends Run, from any thread. Answers that are under way are finished, unless they take longer than a few
  /// seconds; idle connections are closed.
  void Stop();

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace vantry_sim
