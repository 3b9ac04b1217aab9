#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// The sources of this project, for tests that read them.
namespace vtdirect_house {

/// The repository.
inline const std::filesystem::path root = VTDIRECT_SOURCE_DIRECTORY;

/// The .cpp and .h files below a folder of the repository.
[[nodiscard]] std::vector<std::filesystem::path> SourcesBelow(const std::string& folder);

/// Empty for a file that can't be read.
[[nodiscard]] std::string ReadWhole(const std::filesystem::path& path);

}  // namespace vtdirect_house
