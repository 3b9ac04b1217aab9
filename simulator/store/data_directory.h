#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "simulator/options.h"
#include "simulator/store/content_store.h"
#include "simulator/store/database.h"
#include "simulator/store/snapshots.h"

namespace vantry_sim {

/// DATA/vantry-sim.db, DATA/content/, DATA/snapshots/, DATA/seed.db and DATA/lock. The lock is held as long
/// as the object lives, and a killed process leaves it free.
class DataDirectory {
 public:
  /// Opens or makes the directory and seeds it unless it was seeded before. A seeding that was cut off left
  /// nothing in the database and starts again. @throws std::exception when it cannot be used
  explicit DataDirectory(const Options& options);
  /// Opens one that was seeded before, to be read. @throws std::exception when there is none
  static std::unique_ptr<DataDirectory> OpenFilled(const std::string& directory);
  DataDirectory(const DataDirectory&) = delete;
  DataDirectory& operator=(const DataDirectory&) = delete;

  Database& database() { return *database_; }
  ContentStore& contents() { return *contents_; }
  Snapshots& snapshots() { return *snapshots_; }

 private:
  DataDirectory() = default;
  void Open(const std::string& directory);
  void KeepSeed();

  /// Held as long as it lives, and by nobody else.
  class Lock {
   public:
    Lock() = default;
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    ~Lock();
    /// @throws std::runtime_error when another process holds it, or the file cannot be written
    void Take(const std::filesystem::path& file);

   private:
    int descriptor_ = -1;
  };

  Lock lock_;
  std::unique_ptr<Database> database_;
  std::unique_ptr<ContentStore> contents_;
  std::unique_ptr<Snapshots> snapshots_;
};

}  // namespace vantry_sim
