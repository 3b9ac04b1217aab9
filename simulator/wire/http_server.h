#pragma once

#include <memory>
#include <string>

#include "simulator/simulator.h"
#include "simulator/wire/request_log.h"

namespace vantry_sim {

/// What a port is for.
enum class Door {
  kMain,     ///< the address that clients are told
  kPages,    ///< where lists go on, when they don't go on at the main one; answers all that the main one does
  kUploads,  ///< where the bytes of documents go; takes nothing else
};

/// Serves a simulator over HTTP on one port, with the faults and the latency of its options.
class HttpServer {
 public:
  /// The simulator and the log outlive the server. Several servers may share both.
  HttpServer(Simulator& simulator, RequestLog& log, Door door = Door::kMain);
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;
  ~HttpServer();

  /// Takes the address and the door's port of the options, and tells the simulator. To be called before any
  /// server runs. @return false when they are not to be had
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
