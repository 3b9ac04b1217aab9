#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

namespace vtdirect_mount {

/// What is known of an iteration, which never changes.
struct Facts {
  std::uint64_t size = 0;  ///< bytes of its content
  /// When this machine first met the iteration, in seconds since 1970. Servers tell no time of a document,
  /// and programs compare times: one that stays the same for an iteration, and is another for the next one,
  /// lets them see what has changed.
  std::int64_t since = 0;

  friend bool operator==(const Facts&, const Facts&) = default;
};

/// The facts of all iterations that were ever asked for, kept in a file from one mount to the next. Several
/// processes may add to it. What can't be read is passed over. Any thread. Makes no request.
class FactsFile {
 public:
  explicit FactsFile(std::string path) : path_(std::move(path)) {}

  /// Reads the file. One that has grown beyond 64 MiB is begun anew.
  void Load();

  [[nodiscard]] std::optional<Facts> Find(const std::string& uid) const;

  /// Keeps facts, in the file too as far as it can be written.
  void Keep(const std::string& uid, const Facts& facts);

 private:
  const std::string path_;
  mutable std::mutex mutex_;
  std::unordered_map<std::string, Facts> facts_;
};

/// One line of the file with its line feed: "1 SIZE SINCE UID". A UID with a control byte gives none.
[[nodiscard]] std::string LineOfFacts(const std::string& uid, const Facts& facts);

}  // namespace vtdirect_mount
