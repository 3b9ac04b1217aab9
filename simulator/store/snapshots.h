#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/store/database.h"

namespace vantry_sim {

/// States of a database under names, in DATA/snapshots, and the one that the directory was filled with. The
/// bytes of contents are in none of them: a stream's number means the same bytes for the life of a directory.
class Snapshots {
 public:
  /// Removes what a killed process left half written. @param directory of all data
  explicit Snapshots(const std::filesystem::path& directory);

  /// Whether a text may be a name: letters, digits, "-", "_" and ".", of which the last is not in front, and
  /// 64 of them at most. So no name leads out of the directory.
  [[nodiscard]] static bool IsName(std::string_view name);

  /// Keeps the database's state, in place of one of the same name. @throws std::exception when the
  /// disk refuses
  void Take(Database& database, const std::string& name);

  /// Puts a state in the place of the database's, whole or not at all. Tickets and uploads that no document
  /// has taken are no part of it. Not to be called in a transaction. @return false for an unknown name
  bool Restore(Database& database, const std::string& name) const;

  /// @return false for an unknown name
  bool Remove(const std::string& name);

  struct Listed {
    std::string name;
    std::int64_t taken = 0;  ///< milliseconds since 1970, by the machine's time
    std::uint64_t size = 0;  ///< bytes
  };
  [[nodiscard]] std::vector<Listed> List() const;

  /// Keeps the state as the one that Reset goes back to.
  void KeepSeed(Database& database);
  /// Whether there is one.
  [[nodiscard]] bool HasSeed() const;
  /// As Restore. @return false where no state was kept
  bool RestoreSeed(Database& database) const;

 private:
  [[nodiscard]] std::filesystem::path FileOf(const std::string& name) const;
  void TakeTo(Database& database, const std::filesystem::path& file);
  static bool RestoreFrom(Database& database, const std::filesystem::path& file);

  std::filesystem::path directory_;
  std::filesystem::path seed_;
};

}  // namespace vantry_sim
