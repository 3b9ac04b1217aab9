#include "simulator/store/data_directory.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "simulator/seed/seeds.h"
#include "simulator/store/schema.h"

namespace vantry_sim {
namespace {

int TakeLock(const std::filesystem::path& file) {
  const int descriptor = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (descriptor < 0) throw std::runtime_error("cannot write " + file.string() + ": " + std::strerror(errno));
  if (flock(descriptor, LOCK_EX | LOCK_NB) == 0) return descriptor;
  close(descriptor);
  throw std::runtime_error("another vantry-sim uses " + file.parent_path().string());
}

}  // namespace

DataDirectory::DataDirectory(const Options& options) {
  const std::filesystem::path directory = options.data_directory;
  std::filesystem::create_directories(directory);
  lock_ = TakeLock(directory / "lock");
  try {
    contents_ = std::make_unique<ContentStore>(directory / "content");
    database_ = std::make_unique<Database>((directory / "vantry-sim.db").string());
    EnsureSchema(*database_);
    SeedOnce(*database_, *contents_, options.seed);
    EnsureUsers(*database_, options.users);
  } catch (...) {
    close(lock_);
    throw;
  }
}

DataDirectory::~DataDirectory() {
  database_.reset();
  close(lock_);
}

}  // namespace vantry_sim
