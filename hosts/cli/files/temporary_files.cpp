#include "hosts/cli/files/temporary_files.h"

#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "hosts/cli/files/target_file.h"
#include "hosts/cli/program/environment.h"
#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

// The program's own directory goes when it ends; what a user knows is where that lies.
[[nodiscard]] std::string ParentOf(const std::string& directory) {
  return std::filesystem::path(directory).parent_path().string();
}

constexpr const char* makeRoom = "make room there, or set TMPDIR to another directory";

}  // namespace

std::string TemporaryDirectory() {
  const std::string named = Environment("TMPDIR");
  return named.empty() ? "/tmp" : named;
}

std::optional<Failure> TemporaryFilesFailure() {
  const std::string directory = TemporaryDirectory();
  std::string path = directory + "/probe-XXXXXX";
  const int file = mkstemp(path.data());
  int error = errno;
  if (file >= 0) {
    close(file);
    error = ProbeWritable(path);
    unlink(path.c_str());
  }
  if (error == 0) return std::nullopt;
  return Failure{
      ExitCode::LocalFile,
      "cannot write temporary files in " + Printable(ParentOf(directory)) + ": " + std::strerror(error),
      makeRoom};
}

Failure AnswerNotKept(const std::string& address) {
  return {ExitCode::LocalFile,
          "the server's answer about " + address + " could not be kept among the temporary files in " +
              Printable(ParentOf(TemporaryDirectory())),
          makeRoom};
}

}  // namespace vtdirect_cli
