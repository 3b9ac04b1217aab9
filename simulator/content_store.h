#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace vantry_sim {

/// The bytes of all streams: one plain file each, DATA/content/<stream id>, so that anybody can compare what
/// was fetched with what is held. A file's name is made of a number alone and never of a text from the wire.
class ContentStore {
 public:
  /// @param directory made if it is missing. @throws std::filesystem::filesystem_error
  explicit ContentStore(std::filesystem::path directory);

  /// Where the stream lies, whether or not it exists.
  [[nodiscard]] std::filesystem::path PathOf(std::int64_t stream_id) const;

  /// Writes the stream's file, in place of one that is there. @throws std::runtime_error, e.g. for a full
  /// disk
  void Write(std::int64_t stream_id, std::string_view bytes) const;

  /// Writes `size` bytes that look random and are the same for the same id and size on every machine: the
  /// little-endian words of a xorshift64 generator. @throws std::runtime_error, e.g. for a full disk
  void Generate(std::int64_t stream_id, std::uint64_t size) const;

 private:
  std::filesystem::path directory_;
};

}  // namespace vantry_sim
