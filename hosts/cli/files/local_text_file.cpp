#include "hosts/cli/files/local_text_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace vtdirect_cli {
namespace {

constexpr std::size_t largest = std::size_t{1} << 20U;

[[nodiscard]] bool IsPrivate(int descriptor) {
  struct stat facts = {};
  if (fstat(descriptor, &facts) != 0) return false;
  if (facts.st_uid != geteuid() && facts.st_uid != 0) return false;
  return !S_ISREG(facts.st_mode) || (facts.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

[[nodiscard]] LocalText ReadAll(int descriptor) {
  LocalText read;
  char buffer[16384];
  for (;;) {
    const ssize_t count = ::read(descriptor, buffer, sizeof buffer);
    if (count == 0) return read;
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return {errno, {}};
    read.text.append(buffer, static_cast<std::size_t>(count));
    if (read.text.size() > largest) return {EFBIG, {}};
  }
}

enum class MayBeReadBy { Anybody, OwnerAlone };

[[nodiscard]] LocalText ReadFile(const std::string& path, MayBeReadBy who) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return {errno, {}};
  const bool isRefused = who == MayBeReadBy::OwnerAlone && !IsPrivate(descriptor);
  LocalText read = isRefused ? LocalText{EPERM, {}} : ReadAll(descriptor);
  close(descriptor);
  return read;
}

}  // namespace

LocalText ReadLocalTextFile(const std::string& path) {
  return ReadFile(path, MayBeReadBy::Anybody);
}

LocalText ReadPrivateTextFile(const std::string& path) {
  return ReadFile(path, MayBeReadBy::OwnerAlone);
}

}  // namespace vtdirect_cli
