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

[[nodiscard]] int ReadAll(int descriptor, std::string& text) {
  char buffer[16384];
  for (;;) {
    const ssize_t count = read(descriptor, buffer, sizeof buffer);
    if (count == 0) return 0;
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    text.append(buffer, static_cast<std::size_t>(count));
    if (text.size() > largest) return EFBIG;
  }
}

}  // namespace

int ReadLocalTextFile(const std::string& path, std::string& text, bool privately) {
  text.clear();
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return errno;
  const int error = privately && !IsPrivate(descriptor) ? EPERM : ReadAll(descriptor, text);
  close(descriptor);
  return error;
}

}  // namespace vtdirect_cli
