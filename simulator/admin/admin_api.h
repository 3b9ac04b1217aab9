#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "simulator/simulator.h"
#include "simulator/wire/json.h"
#include "simulator/wire/json_reader.h"
#include "simulator/wire/or_refusal.h"
#include "simulator/wire/router.h"

namespace vantry_sim {

/// The port by which a server is controlled while it runs: JSON over HTTP, as openapi.json tells. It listens
/// on the loopback alone and refuses what a web page of somebody else's sends. Any thread, several at once.
class AdminApi {
 public:
  /// @param simulator outlives it
  explicit AdminApi(Simulator& simulator);

  /// Answers a request. None of them is logged or remembered, or met by a fault.
  Response Handle(Request& request);

  /// What it answers, for the description of it.
  [[nodiscard]] std::vector<Router::Listed> Routes() const { return router_.List(); }

 private:
  Router router_;
};

/// Reads a body of JSON. @return a refusal for one that is no object, or has other members than these
OrRefusal<JsonDocument> ReadAdminBody(const Request& request, const std::vector<std::string_view>& members);

/// An answer of JSON. @param write writes one value
Response AdminAnswer(const std::function<void(JsonText&)>& write, int status = 200);

/// 204 without a body.
Response AdminDone();

// Each adds one family of routes. The simulator outlives the router.

/// State of the server: status, reset, snapshots, tree, generation, clock.
void AddStateRoutes(Router& router, Simulator& simulator);
/// What goes over the wire: faults and requests.
void AddTrafficRoutes(Router& router, Simulator& simulator);
/// Who may come in: users and sessions.
void AddAccessRoutes(Router& router, Simulator& simulator);
/// Documents, changed without the clients knowing.
void AddDocumentControlRoutes(Router& router, Simulator& simulator);

}  // namespace vantry_sim
