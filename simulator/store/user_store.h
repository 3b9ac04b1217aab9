#pragma once

#include <cstdint>
#include <string_view>

#include "simulator/store/database.h"

namespace vantry_sim {

/// The row id of a user, who is made if this is the first that is heard of them: an open server believes any
/// name.
std::int64_t UserKey(Database& database, std::string_view name);

/// The next number for an id; each is given once in the life of the data directory.
std::int64_t NextNumber(Database& database);

}  // namespace vantry_sim
