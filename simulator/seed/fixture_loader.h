#pragma once

#include "simulator/seed/fixture.h"
#include "simulator/store/content_store.h"
#include "simulator/store/database.h"

namespace vantry_sim {

/// Puts a state into a database that holds none, and its contents into the store. To be called in a
/// transaction. @throws std::exception when the disk refuses
void LoadFixture(Database& database, ContentStore& contents, const Fixture& fixture);

}  // namespace vantry_sim
