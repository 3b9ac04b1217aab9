#include "simulator/store/content_store.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace vantry_sim {
namespace {

constexpr std::string_view kSpoolPrefix = "incoming-";

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

SpooledFile::SpooledFile(const std::filesystem::path& directory) {
  std::string pattern = (directory / std::string(kSpoolPrefix).append("XXXXXX")).string();
  descriptor_ = mkostemp(pattern.data(), O_CLOEXEC);
  if (descriptor_ < 0) throw std::runtime_error("cannot write " + pattern);
  path_ = pattern;
}

SpooledFile::SpooledFile(SpooledFile&& other) noexcept
    : path_(std::move(other.path_)), descriptor_(std::exchange(other.descriptor_, -1)), size_(other.size_) {
  other.path_.clear();
}

SpooledFile::~SpooledFile() {
  if (descriptor_ >= 0) close(descriptor_);
  std::error_code ignored;
  if (!path_.empty()) std::filesystem::remove(path_, ignored);
}

bool SpooledFile::Write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(descriptor_, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
    size_ += static_cast<std::uint64_t>(count);
  }
  return true;
}

bool SpooledFile::Finish() {
  const bool synced = fsync(descriptor_) == 0;
  return close(std::exchange(descriptor_, -1)) == 0 && synced;
}

ContentStore::ContentStore(std::filesystem::path directory) : directory_(std::move(directory)) {
  std::filesystem::create_directories(directory_);
  for (const auto& entry : std::filesystem::directory_iterator(directory_)) {
    if (entry.path().filename().string().starts_with(kSpoolPrefix)) std::filesystem::remove(entry.path());
  }
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

bool ContentStore::Keep(SpooledFile file, std::int64_t stream_id) const {
  std::error_code error;
  std::filesystem::rename(file.path_, PathOf(stream_id), error);
  if (error) return false;
  file.path_.clear();
  return true;
}

bool ContentStore::SyncNames() const {
  const int descriptor = open(directory_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return false;
  const bool synced = fsync(descriptor) == 0;
  close(descriptor);
  return synced;
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
