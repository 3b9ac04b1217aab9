#include "simulator/store/snapshots.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "simulator/store/schema.h"
#include "simulator/store/upload_store.h"

namespace vantry_sim {
namespace {

constexpr std::string_view databaseEnding = ".db";
/// No name begins with a point.
constexpr std::string_view partFront = ".part-";
constexpr std::size_t longestName = 64;

bool Sync(const std::filesystem::path& path, int flags) {
  const int descriptor = open(path.c_str(), flags | O_CLOEXEC);
  if (descriptor < 0) return false;
  const bool synced = fsync(descriptor) == 0;
  close(descriptor);
  return synced;
}

bool IsWordCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
}

}  // namespace

Snapshots::Snapshots(const std::filesystem::path& directory)
    : directory_(directory / "snapshots"), seed_(directory / "seed.db") {
  std::filesystem::create_directories(directory_);
  std::vector<std::filesystem::path> parts;
  for (const auto& entry : std::filesystem::directory_iterator(directory_)) {
    if (entry.path().filename().string().starts_with(partFront)) parts.push_back(entry.path());
  }
  for (const std::filesystem::path& part : parts) std::filesystem::remove(part);
}

bool Snapshots::IsName(std::string_view name) {
  if (name.empty() || name.size() > longestName || name.front() == '.') return false;
  return std::all_of(name.begin(), name.end(), [](char c) { return IsWordCharacter(c) || c == '.'; });
}

std::filesystem::path Snapshots::FileOf(const std::string& name) const {
  if (!IsName(name)) throw std::runtime_error("no name of a snapshot");
  return directory_ / (name + std::string(databaseEnding));
}

void Snapshots::Take(Database& database, const std::string& name) {
  TakeTo(database, FileOf(name));
}

bool Snapshots::Restore(Database& database, const std::string& name) const {
  return RestoreFrom(database, FileOf(name));
}

bool Snapshots::Remove(const std::string& name) {
  return std::filesystem::remove(FileOf(name));
}

std::vector<Snapshots::Listed> Snapshots::List() const {
  std::vector<Listed> list;
  for (const auto& entry : std::filesystem::directory_iterator(directory_)) {
    std::string name = entry.path().filename().string();
    struct stat status {};
    if (!name.ends_with(databaseEnding) || stat(entry.path().c_str(), &status) != 0) continue;
    name.resize(name.size() - databaseEnding.size());
    const std::int64_t taken =
        std::int64_t{status.st_mtim.tv_sec} * 1000 + status.st_mtim.tv_nsec / 1'000'000;
    list.push_back({std::move(name), taken, static_cast<std::uint64_t>(status.st_size)});
  }
  std::sort(list.begin(), list.end(), [](const Listed& a, const Listed& b) { return a.name < b.name; });
  return list;
}

void Snapshots::KeepSeed(Database& database) {
  TakeTo(database, seed_);
}

bool Snapshots::HasSeed() const {
  return std::filesystem::exists(seed_);
}

bool Snapshots::RestoreSeed(Database& database) const {
  return RestoreFrom(database, seed_);
}

/// A reader never finds half of a snapshot, nor does the next start: it gets its name when the disk has it.
void Snapshots::TakeTo(Database& database, const std::filesystem::path& file) {
  const std::filesystem::path part = directory_ / (std::string(partFront) + file.filename().string());
  std::filesystem::remove(part);
  database.CopyTo(part.string());
  std::error_code error;
  if (Sync(part, O_RDONLY)) std::filesystem::rename(part, file, error);
  if (error || !Sync(file.parent_path(), O_RDONLY | O_DIRECTORY))
    throw std::runtime_error("cannot write " + file.string());
}

bool Snapshots::RestoreFrom(Database& database, const std::filesystem::path& file) {
  // A symbolic link is no snapshot: it may lead out of the directory.
  if (std::filesystem::symlink_status(file).type() != std::filesystem::file_type::regular) return false;
  database.ReplaceBy(file.string());
  EnsureSchema(database);
  ForgetUploads(database);
  return true;
}

}  // namespace vantry_sim
