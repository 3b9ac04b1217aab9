#pragma once

#include <cstdint>
#include <vector>

#include "simulator/options.h"
#include "simulator/seed/bulk_shape.h"
#include "simulator/seed/seed_writer.h"
#include "simulator/store/content_store.h"
#include "simulator/store/database.h"

namespace vantry_sim {

/// What a database was filled with.
enum class Seeding {
  Done,    ///< with this seed, just now
  Before,  ///< with whatever it was filled with before
};

/// Fills the database, in one transaction, unless it was filled before. @throws std::exception, for a state
/// file with something wrong in it one that names its lines
/// @param toBeKept whether a copy of the seed is to be kept, which IsSeedToBeKept then tells
Seeding SeedOnce(Database& database, ContentStore& contents, const Seed& seed, bool toBeKept = false);

/// Whether the copy of the seed is still missing. A process may have been killed between filling the database and
/// copying it; nobody has written to it yet.
bool IsSeedToBeKept(Database& database);
/// Notes that the copy was made.
void NoteKeptSeed(Database& database);

/// Whether a database was filled.
bool IsSeeded(Database& database);

/// Empties a database, so that another state can be put into it, which may refer to the streams of the one
/// before. To be called in a transaction.
void ForgetState(Database& database);

/// Makes sure that everybody who can log in is a user of the database.
void EnsureUsers(Database& database, const std::vector<UserCredentials>& users);

/// The story of a bicycle maker; simulator/README.md lists its ids, which stay as they are.
/// @param largeBytes size of the one large content
void SeedDemo(SeedWriter& writer, std::uint64_t largeBytes);

/// Row ids of where the demo's manuals are.
struct ManualPlaces {
  std::int64_t context = 0;
  std::int64_t frame = 0;
  std::int64_t manuals = 0;
  std::int64_t translations = 0;
};

/// The part of SeedDemo that deals with texts: a manual with its source XLIFF and two translations, and one
/// without any.
void SeedDemoManuals(SeedWriter& writer, const ManualPlaces& places);

/// One product "Bulk" with the documents D1000001, D1000002, ..., in its folder "Parts" unless the shape has
/// more of them. They share one stream, or a few.
void SeedBulk(SeedWriter& writer, const BulkShape& shape);

}  // namespace vantry_sim
