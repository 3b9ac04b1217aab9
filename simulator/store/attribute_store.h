#pragma once

#include <cstdint>
#include <string_view>

#include "simulator/store/database.h"

namespace vantry_sim {

// Each of these is to be called in a transaction.

/// Gives an attribute of an iteration another value, and adds it after the others if it has none of the
/// name.
void SetAttribute(Database& database, std::int64_t iteration, std::string_view name, std::string_view value);

/// Takes an attribute away. @return false where the iteration has none of the name
bool RemoveAttribute(Database& database, std::int64_t iteration, std::string_view name);

/// The iteration was changed now.
void Touch(Database& database, std::int64_t iteration);

}  // namespace vantry_sim
