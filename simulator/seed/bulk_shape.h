#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vantry_sim {

/// Two bounds, both included.
struct BulkRange {
  std::uint64_t least = 0;
  std::uint64_t most = 0;
};

/// What a repository of many documents looks like.
struct BulkShape {
  std::uint32_t documents = 0;
  std::uint32_t folders = 1;      ///< that documents are spread over
  std::uint32_t depth = 1;        ///< levels below the root
  std::uint32_t versions = 1;     ///< of each document
  std::optional<BulkRange> name;  ///< characters of a file name; nothing: as short as it can be
  std::optional<BulkRange> size;  ///< bytes of a content; nothing: one short text
};

/// Reads `N` or `N,folders=F,depth=D,versions=V,name=A-B,size=A-B`, where each of them may be missing and a
/// range may be one number. Nothing for any other text, and for more than the simulator makes: 5 million
/// versions in all, 20,000 folders, 100 levels, names of 240 characters, contents of a gigabyte.
std::optional<BulkShape> ReadBulkShape(std::string_view text);

}  // namespace vantry_sim
