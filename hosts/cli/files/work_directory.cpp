#include "hosts/cli/files/work_directory.h"

#include <stdlib.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "hosts/cli/files/temporary_files.h"
#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

void Remove(const std::string& path) {
  std::error_code ignored;
  std::filesystem::remove_all(path, ignored);
}

}  // namespace

Result<std::unique_ptr<WorkDirectory>> WorkDirectory::Create() {
  const std::string parent = TemporaryDirectory();
  std::string pattern = parent + "/vtdirect-XXXXXX";
  const InterruptionHold hold;
  if (mkdtemp(pattern.data()) == nullptr) {
    return Failure{
        ExitCode::LocalFile,
        "cannot create a directory for temporary files in " + Printable(parent) + ": " + std::strerror(errno),
        "set TMPDIR to one where that can be done"};
  }
  setenv("TMPDIR", pattern.c_str(), 1);
  return std::unique_ptr<WorkDirectory>(new WorkDirectory(pattern));
}

WorkDirectory::WorkDirectory(const std::string& path) : path_(path), removal_([path] { Remove(path); }) {}

}  // namespace vtdirect_cli
