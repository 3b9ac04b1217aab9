#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/store/database.h"
#include "simulator/store/document_instruction.h"
#include "simulator/store/document_store.h"
#include "simulator/wire/messages.h"

namespace vantry_sim {

/// A new row of `iterations`.
struct NewIteration {
  std::int64_t master = 0;
  std::int64_t context = 0;
  std::optional<std::int64_t> folder = std::nullopt;
  std::optional<std::int64_t> workspace = std::nullopt;
  std::optional<std::int64_t> targetFolder = std::nullopt;
  std::string revision = "A";
  std::int64_t iteration = 1;
  bool isLatest = false;
  std::string authAppVersion = {};
  std::string ndVersion = {};
};

/// @return the new row's id
std::int64_t InsertIteration(Database& database, const NewIteration& iteration);

/// Gives an iteration the contents, attributes and dependencies of another one, in place of none.
void CopyParts(Database& database, std::int64_t from, std::int64_t to);

/// Takes an iteration's contents, attributes and dependencies away.
void DeleteParts(Database& database, std::int64_t iteration);

/// Gives an iteration the parts of an instruction, in place of those it has.
///
/// Receipts are taken. A secondary content without a stream is carried over from `before` by category and
/// name and is stale from then on, since the primary content is new. Attributes and dependencies that the
/// instruction leaves out are those of `before`.
/// @param before the version before, may be the iteration itself; nothing for a new document
/// @return a refusal for a receipt that was never given, for what cannot be carried, for a source
/// that isn't there
Refusal WriteParts(Database& database, std::string_view user, const DocumentInstruction& instruction,
                   std::int64_t iteration, std::optional<std::int64_t> before);

}  // namespace vantry_sim
