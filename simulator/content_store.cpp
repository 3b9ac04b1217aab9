#include "simulator/content_store.h"

#include <array>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace vantry_sim {
namespace {

std::ofstream OpenForWriting(const std::filesystem::path& path) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (!file) throw std::runtime_error("cannot write " + path.string());
  return file;
}

void Finish(std::ofstream& file, const std::filesystem::path& path) {
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path.string());
}

}  // namespace

ContentStore::ContentStore(std::filesystem::path directory) : directory_(std::move(directory)) {
  std::filesystem::create_directories(directory_);
}

std::filesystem::path ContentStore::PathOf(std::int64_t stream_id) const {
  return directory_ / std::to_string(stream_id);
}

void ContentStore::Write(std::int64_t stream_id, std::string_view bytes) const {
  const auto path = PathOf(stream_id);
  auto file = OpenForWriting(path);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  Finish(file, path);
}

void ContentStore::Generate(std::int64_t stream_id, std::uint64_t size) const {
  const auto path = PathOf(stream_id);
  auto file = OpenForWriting(path);
  std::uint64_t state = 0x9E3779B97F4A7C15ULL ^ static_cast<std::uint64_t>(stream_id);
  std::array<char, 65536> block{};
  while (size > 0 && file) {
    for (std::size_t i = 0; i < block.size(); i += 8) {
      state ^= state << 13;
      state ^= state >> 7;
      state ^= state << 17;
      for (std::size_t byte = 0; byte < 8; ++byte) block[i + byte] = static_cast<char>(state >> (8 * byte));
    }
    const std::uint64_t count = size < block.size() ? size : block.size();
    file.write(block.data(), static_cast<std::streamsize>(count));
    size -= count;
  }
  Finish(file, path);
}

}  // namespace vantry_sim
