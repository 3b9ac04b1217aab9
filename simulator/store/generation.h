#pragma once

#include <optional>
#include <string_view>

namespace vantry_sim {

/// The server generations that the simulator plays. They differ in the services they offer, not in their
/// data.
enum class Generation {
  Gateway,  ///< no OData service at all: REST and the publishing gateway alone
  Schema1,  ///< the first OData services: DataAdmin 1, DynamicDocMgmt 1, CADDocumentMgmt 1
  Schema4,  ///< DataAdmin 4, whose folders know their contents, and DynamicDocMgmt 2
  Schema5,  ///< DataAdmin 5 and DynamicDocMgmt 2
};

/// The generation of a word of the command line ("gateway", "schema1", "schema4", "schema5"); nothing for any
/// other word.
std::optional<Generation> GenerationOf(std::string_view word);

/// The word of a generation, as GenerationOf reads it.
std::string_view WordOf(Generation generation);

/// Whether the generation has OData services.
inline bool HasOData(Generation generation) {
  return generation != Generation::Gateway;
}

/// Whether the generation tells about its visualization features.
inline bool HasVisualization(Generation generation) {
  return generation == Generation::Schema4 || generation == Generation::Schema5;
}

}  // namespace vantry_sim
