#pragma once

#include <string>
#include <vector>

#include "base/status.h"
#include "connection/vt_connection.h"

namespace lxservices::cms_interface::vantry {

/// A member to look for; the parser sets `found`.
struct MemberQuery {
  std::string name;
  bool found = false;
};

/// An entity type to look for, with the members that matter.
struct EntityQuery {
  std::string name;
  std::vector<MemberQuery> properties;
  std::vector<MemberQuery> navigationProperties;
};

/// What to look for in a service's `$metadata`.
using SchemaQuery = std::vector<EntityQuery>;

/// Reads a service's `$metadata`: one GET on this thread, through a temporary file and a 512-byte buffer, so
/// that memory does not grow with the document. One of more than 64 MiB, with a token of more than 256 KiB or
/// with more names and levels than fit into 64 MiB of memory is broken.
/// @param query    may be null
/// @param version  receives the schema version; left alone by a document without one. May be null.
/// @return Ok; NotFound for HTTP 404; ServerError for any other HTTP failure; Refused for a broken document, that
///         is for one of these and for an XML error before the document's last chunk. An error in the last chunk
///         goes unnoticed.
Status FetchSchema(VtConnection& connection, const char* path, SchemaQuery* query, int* version);

}  // namespace lxservices::cms_interface::vantry
