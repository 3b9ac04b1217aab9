#pragma once

#include <optional>
#include <string_view>

namespace vantry_sim {

/// The server generations that the simulator plays. They differ in the services they offer, not in their
/// data.
enum class Generation {
  kGateway,  ///< no OData service at all: REST and the publishing gateway alone
  kSchema1,  ///< the first OData services: DataAdmin 1, DynamicDocMgmt 1, CADDocumentMgmt 1
  kSchema4,  ///< DataAdmin 4, whose folders know their contents, and DynamicDocMgmt 2
  kSchema5,  ///< DataAdmin 5 and DynamicDocMgmt 2
};

/// The generation of a word of the command line ("gateway", "schema1", "schema4", "schema5"); nothing for any
/// other word.
std::optional<Generation> GenerationOf(std::string_view word);

/// The word of a generation, as GenerationOf reads it.
std::string_view WordOf(Generation generation);

/// Whether the generation has OData services.
inline bool HasOData(Generation generation) {
  return generation != Generation::kGateway;
}

/// Whether the generation tells about its visualization features.
inline bool HasVisualization(Generation generation) {
  return generation == Generation::kSchema4 || generation == Generation::kSchema5;
}

}  // namespace vantry_sim
