#pragma once

#include "simulator/store/database.h"

namespace vantry_sim {

/// Brings the database to the newest form of its tables, from an empty file or from any older form, in one
/// transaction. @throws DatabaseError, also for a file that a newer simulator wrote
void EnsureSchema(Database& database);

}  // namespace vantry_sim
