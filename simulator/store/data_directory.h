#pragma once

#include <memory>

#include "simulator/options.h"
#include "simulator/store/content_store.h"
#include "simulator/store/database.h"

namespace vantry_sim {

/// DATA/vantry-sim.db, DATA/content/ and DATA/lock. The lock is held as long as the object lives, and a
/// killed process leaves it free.
class DataDirectory {
 public:
  /// Opens or makes the directory and seeds it unless it was seeded before. A seeding that was cut off left
  /// nothing in the database and starts anew. @throws std::exception when it cannot be used
  explicit DataDirectory(const Options& options);
  DataDirectory(const DataDirectory&) = delete;
  DataDirectory& operator=(const DataDirectory&) = delete;
  ~DataDirectory();

  Database& database() { return *database_; }
  ContentStore& contents() { return *contents_; }

 private:
  int lock_ = -1;
  std::unique_ptr<Database> database_;
  std::unique_ptr<ContentStore> contents_;
};

}  // namespace vantry_sim
