#include "simulator/store/data_directory.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "simulator/seed/seeds.h"
#include "simulator/store/schema.h"
#include "simulator/store/upload_store.h"

namespace vantry_sim {
namespace {

constexpr const char* databaseFile = "vantry-sim.db";

}  // namespace

DataDirectory::DataDirectory(const Options& options) {
  Open(options.dataDirectory);
  // A copy of millions of documents is made for nobody who doesn't ask for it.
  const bool keepsSeed = options.seed.kind != Seed::Kind::Bulk || options.adminPort;
  const Seeding seeding = SeedOnce(*database_, *contents_, options.seed, keepsSeed);
  if (seeding == Seeding::Before && options.seed.askedFor) {
    std::fprintf(stderr,
                 "vantry-sim: --seed is ignored, since %s was filled before and keeps what it holds\n",
                 options.dataDirectory.c_str());
  }
  KeepSeed();
  EnsureUsers(*database_, options.users);
  contents_->CountFrom(LastStream(*database_));
}

/// Also for a process that was killed after it had filled the database. The copy has the note too, and what
/// goes back to it has it again, but then there is a copy.
void DataDirectory::KeepSeed() {
  if (!IsSeedToBeKept(*database_)) return;
  if (!snapshots_->HasSeed()) snapshots_->KeepSeed(*database_);
  NoteKeptSeed(*database_);
}

std::unique_ptr<DataDirectory> DataDirectory::OpenFilled(const std::string& directory) {
  if (!std::filesystem::exists(std::filesystem::path(directory) / databaseFile))
    throw std::runtime_error("there is no data of a vantry-sim in " + directory);
  std::unique_ptr<DataDirectory> data(new DataDirectory);
  data->Open(directory);
  if (!IsSeeded(*data->database_)) throw std::runtime_error(directory + " was never filled");
  return data;
}

/// Until it ends, nobody else opens it.
void DataDirectory::Open(const std::string& directory) {
  const std::filesystem::path place = directory;
  std::filesystem::create_directories(place);
  lock_.Take(place / "lock");
  contents_ = std::make_unique<ContentStore>(place / "content");
  database_ = std::make_unique<Database>((place / databaseFile).string());
  EnsureSchema(*database_);
  snapshots_ = std::make_unique<Snapshots>(place);
}

DataDirectory::Lock::~Lock() {
  if (descriptor_ >= 0) close(descriptor_);
}

void DataDirectory::Lock::Take(const std::filesystem::path& file) {
  descriptor_ = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (descriptor_ < 0)
    throw std::runtime_error("cannot write " + file.string() + ": " + std::strerror(errno));
  if (flock(descriptor_, LOCK_EX | LOCK_NB) != 0)
    throw std::runtime_error("another vantry-sim uses " + file.parent_path().string());
}

}  // namespace vantry_sim
