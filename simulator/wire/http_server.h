#pragma once

#include <memory>
#include <string_view>

#include "simulator/admin/admin_api.h"
#include "simulator/simulator.h"
#include "simulator/wire/body_memory.h"
#include "simulator/wire/connection_gate.h"
#include "simulator/wire/request_log.h"
#include "simulator/wire/stop_signal.h"
#include "simulator/wire/tls.h"

namespace vantry_sim {

/// What a port is for.
enum class Door {
  Main,     ///< the address that clients are told
  Pages,    ///< where lists go on, when they don't go on at the main one; answers all that the main one does
  Uploads,  ///< where the bytes of documents go; takes nothing else
  Admin,    ///< where the server is controlled; without users, faults, latency, log and history
};

/// The word of a door: "main", "pages", "uploads" or "admin".
std::string_view WordOf(Door door);

/// What a server works with.
struct ServerParts {
  Simulator& simulator;
  RequestLog& log;
  StopSignal& stop;
  BodyMemory& bodies;
  const TlsIdentity* tls = nullptr;  ///< for all doors but the admin's; null: none is spoken
  AdminApi* admin = nullptr;         ///< for the admin's door
};

/// Speaks HTTP on the connections of one port, with the faults and the latency of a simulator, and tells its
/// log and its history what really went over the wire. Any thread, several connections at once.
class HttpServer final : public RequestServer {
 public:
  /// @param parts outlive the server. Several servers may share them
  HttpServer(const ServerParts& parts, Door door);
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;
  ~HttpServer() override;

  bool Serve(ConnectionStream& stream) override;
  void Refuse(ConnectionStream& stream, int status) override;
  std::unique_ptr<Transport> Carry(int socket) override;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
  const TlsIdentity* tls_;
};

}  // namespace vantry_sim
