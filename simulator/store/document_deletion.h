#pragma once

#include <cstdint>
#include <optional>

#include "simulator/store/database.h"
#include "simulator/store/document_store.h"

namespace vantry_sim {

// Each of these is to be called in a transaction.

/// Deletes an iteration with its parts, and its document with the last one. What depended on it depends on
/// its base from then on, or on nothing.
void DeleteIteration(Database& database, std::int64_t iteration, std::optional<std::int64_t> base);

/// Deletes one version as if it had never been: the one before it is the latest again, and a checkout of it
/// ends. A working copy is deleted alone.
void DeleteVersion(Database& database, const DocumentRow& version);

/// Deletes a document with all its versions and working copies.
void DeleteDocument(Database& database, std::int64_t master);

}  // namespace vantry_sim
