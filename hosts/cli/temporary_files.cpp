#include "hosts/cli/temporary_files.h"

#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <vector>

#include "hosts/cli/environment.h"
#include "hosts/cli/printable.h"

namespace vtdirect_cli {
namespace {

// As much as the answers that pass through such files mostly have.
constexpr std::size_t kBytes = 64 * 1024;

// The program's own directory goes when it ends; what a user knows is where that lies.
[[nodiscard]] std::string ParentOf(const std::string& directory) {
  return std::filesystem::path(directory).parent_path().string();
}

// The error that keeps the bytes from being written; 0 for none.
[[nodiscard]] int ErrorOfWriting(int file) {
  const std::vector<char> bytes(kBytes);
  for (std::size_t done = 0; done < bytes.size();) {
    const ssize_t count = write(file, bytes.data() + done, bytes.size() - done);
    if (count < 0) return errno;
    done += static_cast<std::size_t>(count);
  }
  return 0;
}

}  // namespace

std::string TemporaryDirectory() {
  const std::string named = Environment("TMPDIR");
  return named.empty() ? "/tmp" : named;
}

std::optional<Failure> TemporaryFilesFailure() {
  const std::string directory = TemporaryDirectory();
  std::string path = directory + "/probe-XXXXXX";
  const int file = mkstemp(path.data());
  const int error = file < 0 ? errno : ErrorOfWriting(file);
  if (file >= 0) {
    close(file);
    unlink(path.c_str());
  }
  if (error == 0) return std::nullopt;
  return Failure{ExitCode::LocalFile, "cannot write temporary files in " + Printable(ParentOf(directory)) +
                                          ": " + std::generic_category().message(error) +
                                          "; make room there, or set TMPDIR to another directory"};
}

}  // namespace vtdirect_cli
