#include "hosts/cli/storing/local_source.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/files/target_file.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] Failure Unreadable(const std::string& path, const std::string& why) {
  return {ExitCode::LocalFile, "cannot read " + path + ": " + why};
}

[[nodiscard]] bool SameTime(const timespec& one, const timespec& other) {
  return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
}

// @return 0, or the error number
[[nodiscard]] int CopyTo(const std::string& copy, const std::string& path) {
  const int descriptor = open(copy.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (descriptor < 0) return errno;
  const int error = CopyToDescriptor(path, descriptor);
  return close(descriptor) == 0 || error != 0 ? error : errno;
}

}  // namespace

Result<LocalSource> InspectSource(const std::string& path) {
  LocalSource source{path};
  // What is no file must not be opened: opening a pipe waits for its writer.
  if (stat(path.c_str(), &source.facts) != 0) return Unreadable(path, std::strerror(errno));
  if (S_ISDIR(source.facts.st_mode)) return Unreadable(path, "it is a directory");
  if (!S_ISREG(source.facts.st_mode)) return Unreadable(path, "it is no regular file");
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return Unreadable(path, std::strerror(errno));
  close(descriptor);
  return source;
}

bool IsUnchanged(const LocalSource& source) {
  struct stat now = {};
  if (stat(source.path.c_str(), &now) != 0) return false;
  const struct stat& before = source.facts;
  // A file that was replaced by another counts as changed too: which of the two was read can't be told.
  return now.st_dev == before.st_dev && now.st_ino == before.st_ino && now.st_size == before.st_size &&
         SameTime(now.st_mtim, before.st_mtim);
}

Failure SourceWasWrittenTo(const std::string& path, const std::string& consequence) {
  return {ExitCode::LocalFile, path + " was written to while it was read; " + consequence,
          "give the command again when nobody writes to it"};
}

Result<std::string> CopySource(const LocalSource& source, const std::string& directory) {
  const std::string copy = directory + "/" + BaseNameOf(source.path);
  const int error = mkdir(directory.c_str(), 0700) == 0 ? CopyTo(copy, source.path) : errno;
  if (error == EINTR) return InterruptedFailure();
  if (!IsUnchanged(source)) return SourceWasWrittenTo(source.path, "nothing was sent");
  if (error == 0) return copy;
  return Failure{ExitCode::LocalFile,
                 source.path +
                     " could not be copied whole to the directory for temporary files, from where "
                     "it is sent: " +
                     std::strerror(error) + "; nothing was sent",
                 "make room there, or set TMPDIR to another one"};
}

std::string BaseNameOf(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

}  // namespace vtdirect_cli
