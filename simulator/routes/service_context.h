#pragma once

#include <string>

#include "simulator/options.h"
#include "simulator/routes/nonces.h"
#include "simulator/store/content_store.h"
#include "simulator/store/database.h"
#include "simulator/wire/messages.h"

namespace vantry_sim {

/// What the route handlers work with. Outlives the router. Handlers run one at a time.
struct ServiceContext {
  const Options& options;
  Database& database;
  ContentStore& contents;
  std::string ownAddress;  ///< "127.0.0.1:8080", for requests without a usable Host header
  Nonces& nonces;
  int pagePort = 0;    ///< where later pages are served; 0: where the first one was
  int uploadPort = 0;  ///< where bytes are taken; 0: nowhere
};

/// The absolute address under which the asker reaches this server, without "/" at the end: the codebase URL
/// where one is set, else made of the request's Host header and the prefix. A Host header with anything but
/// the characters of a host and a port is not repeated; the server's own address is used instead.
std::string BaseUrl(const ServiceContext& context, const Request& request);

/// As BaseUrl, for the address of a list's later pages.
std::string PageBaseUrl(const ServiceContext& context, const Request& request);

/// As BaseUrl, for the port that takes uploads.
std::string UploadBaseUrl(const ServiceContext& context, const Request& request);

}  // namespace vantry_sim
