#pragma once

#include <functional>
#include <string>

#include "simulator/routes/service_context.h"
#include "simulator/wire/json_value.h"
#include "simulator/wire/router.h"

namespace vantry_sim {

/// Refuses with 403 a request that doesn't bring its nonce.
Refusal RefuseNonce(const ServiceContext& context, const Request& request);
/// The same for an upload.
Refusal RefuseUploadNonce(const ServiceContext& context, const Request& request);

/// Answers a write. The body was read; the database is in a transaction.
using WriteHandler = std::function<Response(const Request& request, JsonValue body)>;

/// Where a write is found, and what it is, for the table of routes: the members of its body, ":", and what it
/// answers.
struct WriteRoute {
  std::string pattern;
  std::string about;
  std::string method = "POST";
};

/// Adds a route whose body is JSON. Without the nonce comes 403, without a JSON content type 415, with a
/// body that cannot be read 400, and the handler isn't run. What it wrote stays when its answer is a 2xx,
/// and is undone otherwise.
void AddWrite(Router& router, const ServiceContext& context, const WriteRoute& route, WriteHandler handler);

}  // namespace vantry_sim
