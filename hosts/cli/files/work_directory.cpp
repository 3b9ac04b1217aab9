#include "hosts/cli/files/work_directory.h"

#include <stdlib.h>

#include <cerrno>
#include <filesystem>

#include "hosts/cli/files/temporary_files.h"

namespace vtdirect_cli {
namespace {

void Remove(const std::string& path) {
  std::error_code ignored;
  std::filesystem::remove_all(path, ignored);
}

}  // namespace

std::unique_ptr<WorkDirectory> WorkDirectory::Create(int* error) {
  std::string pattern = TemporaryDirectory() + "/vtdirect-XXXXXX";
  const InterruptionHold hold;
  if (mkdtemp(pattern.data()) == nullptr) {
    *error = errno;
    return nullptr;
  }
  setenv("TMPDIR", pattern.c_str(), 1);
  return std::unique_ptr<WorkDirectory>(new WorkDirectory(pattern));
}

WorkDirectory::WorkDirectory(const std::string& path) : path_(path), removal_([path] { Remove(path); }) {}

}  // namespace vtdirect_cli
