#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace vantry_sim {

/// Bytes on their way into the store. Removed again unless they were kept.
class SpooledFile {
 public:
  /// Makes an empty file of a name of its own in the directory. @throws std::runtime_error
  explicit SpooledFile(const std::filesystem::path& directory);
  SpooledFile(SpooledFile&& other) noexcept;
  SpooledFile(const SpooledFile&) = delete;
  SpooledFile& operator=(const SpooledFile&) = delete;
  SpooledFile& operator=(SpooledFile&&) = delete;
  ~SpooledFile();

  /// Appends. @return false when the disk doesn't take it
  [[nodiscard]] bool Write(std::string_view bytes);
  /// Waits until the disk has the bytes; nothing can be appended from then on. @return false when it hasn't
  [[nodiscard]] bool Finish();
  [[nodiscard]] std::uint64_t size() const { return size_; }

 private:
  friend class ContentStore;
  std::filesystem::path path_;
  int descriptor_ = -1;
  std::uint64_t size_ = 0;
};

/// The bytes of all streams: one plain file each, DATA/content/<stream id>, so that anybody can compare what
/// was fetched with what is held. A file's name is made of a number alone and never of a text from the wire.
class ContentStore {
 public:
  /// Seeds choose their numbers themselves, up to this one.
  static constexpr std::int64_t lastSeedStream = 10'000'000;

  /// @param directory made if it is missing; what a killed process left spooled in it is removed. @throws
  /// std::filesystem::filesystem_error
  explicit ContentStore(std::filesystem::path directory);

  /// Where the stream lies, whether or not it exists.
  [[nodiscard]] std::filesystem::path PathOf(std::int64_t streamId) const;

  /// A number that no stream of this directory has or ever had, so that a number always means the same bytes,
  /// whatever state of the database names it. Not for several threads at once.
  std::int64_t NextStream() { return ++lastStream_; }

  /// Numbers up to this one have been given.
  void CountFrom(std::int64_t last);

  /// Whether the stream's file is there and holds exactly the bytes that Write, Copy or Generate would put
  /// into it.
  [[nodiscard]] bool Holds(std::int64_t streamId, std::string_view bytes) const;
  [[nodiscard]] bool HoldsCopy(std::int64_t streamId, const std::filesystem::path& of) const;
  [[nodiscard]] bool HoldsGenerated(std::int64_t streamId, std::uint64_t size, std::int64_t generator) const;

  /// Writes the stream's file, in place of one that is there. @throws std::runtime_error, for a full
  /// disk, for example
  void Write(std::int64_t streamId, std::string_view bytes) const;

  /// A file for bytes that come piece by piece. @throws std::runtime_error
  [[nodiscard]] SpooledFile Spool() const { return SpooledFile(directory_); }

  /// Makes a finished file the stream's, in place of one that is there. @return false when the disk refuses
  [[nodiscard]] bool Keep(SpooledFile file, std::int64_t streamId) const;

  /// Waits until the disk knows the names of all files that were kept. @return false when it refuses
  [[nodiscard]] bool SyncNames() const;

  /// Makes the stream's file a copy. @throws std::filesystem::filesystem_error
  void Copy(std::int64_t streamId, const std::filesystem::path& from) const;

  /// Writes `size` bytes that look random and are the same for the same generator and size on every machine:
  /// the little-endian words of a xorshift64 generator. @throws std::runtime_error, e.g. for a full disk
  void Generate(std::int64_t streamId, std::uint64_t size, std::int64_t generator) const;

 private:
  std::filesystem::path directory_;
  std::int64_t lastStream_ = lastSeedStream;
};

}  // namespace vantry_sim
