#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/store/generation.h"

namespace vantry_sim {

/// One row of the service list.
struct ODataService {
  std::string_view id;           ///< as in paths, e.g. "DataAdmin"
  std::string_view name;         ///< for people
  std::string_view description;  ///< for people
  int schemaVersion;             ///< 0: the service has no schema of its own to fetch
};

/// The OData services of a generation; none for the gateway.
std::vector<ODataService> ServicesOf(Generation generation);

/// Whether the generation offers the version of a service that a path names by its number: all up to the
/// version of its schema. @param digits such as "4"
bool OffersVersion(Generation generation, std::string_view service, std::string_view digits);

/// The $metadata document of a service, with the schema version that the generation has; nothing where the
/// generation doesn't offer the service, or the service has no schema of its own.
/// @param translation whether the translation add-on is installed, which adds to the dynamic documents
std::optional<std::string> MetadataDocument(Generation generation, std::string_view service,
                                            bool translation = true);

}  // namespace vantry_sim
