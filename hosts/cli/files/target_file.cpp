#include "hosts/cli/files/target_file.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <vector>

#include "hosts/cli/files/durable_file.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] Failure LocalFailure(const std::string& path, int error) {
  return {ExitCode::LocalFile, "cannot write " + Printable(path) + ": " + std::strerror(error)};
}

[[nodiscard]] int CopyBetween(int from, int to) {
  std::vector<char> buffer(std::size_t{1} << 16U);
  for (;;) {
    const ssize_t count = read(from, buffer.data(), buffer.size());
    if (count == 0) return 0;
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    if (Interrupted()) return EINTR;
    const int error = WriteAll(to, {buffer.data(), static_cast<std::size_t>(count)});
    if (error != 0) return error;
  }
}

// A byte that is no UTF-8 may be in a file name, but for the controls of a terminal among them: it is what an
// older server means by a letter.
[[nodiscard]] bool IsSafe(std::string_view bytes, bool isPrintable, bool isFirst) {
  if (bytes == "/" || (isFirst && bytes == ".")) return false;
  return isPrintable || (bytes.size() == 1 && static_cast<unsigned char>(bytes.front()) >= 0xA0);
}

}  // namespace

std::string SafeFileName(const std::string& name) {
  std::string out;
  for (std::string_view rest = name; !rest.empty();) {
    const FirstCharacter first = FirstCharacterOf(rest);
    const std::string_view bytes = rest.substr(0, first.length);
    rest.remove_prefix(first.length);
    if (IsSafe(bytes, first.isPrintable, out.empty())) {
      out += bytes;
      continue;
    }
    for (const char c : bytes) {
      char escaped[4];
      std::snprintf(escaped, sizeof escaped, "%%%2.2x", static_cast<unsigned>(static_cast<unsigned char>(c)));
      out += escaped;
    }
  }
  return out;
}

bool NeedsFileName(const std::string& option) {
  if (option.empty() || option.ends_with('/')) return true;
  struct stat facts = {};
  return option != "-" && stat(option.c_str(), &facts) == 0 && S_ISDIR(facts.st_mode);
}

Result<Target> SettleTarget(const std::string& option, const std::string& name, bool noClobber) {
  if (option == "-") return Target{Target::Kind::StandardOutput, {}};
  std::string path = option;
  if (option.empty()) {
    path = name;
  } else if (NeedsFileName(option)) {
    path = option + (option.ends_with('/') ? "" : "/") + name;
  }
  path = BehindLinks(path);

  struct stat facts = {};
  if (stat(path.c_str(), &facts) != 0) {
    // A name that is too long would show only when the whole content is there.
    if (errno != ENOENT) return LocalFailure(path, errno);
    return Target{Target::Kind::File, path};
  }
  if (S_ISDIR(facts.st_mode)) return LocalFailure(path, EISDIR);
  if (S_ISREG(facts.st_mode)) {
    if (noClobber) return LocalFailure(path, EEXIST);
    return Target{Target::Kind::File, path, facts};
  }
  // A device or a pipe is written into; nobody wants "/dev/null" replaced by a file.
  return Target{Target::Kind::Device, path};
}

int CopyToDescriptor(const std::string& path, int descriptor) {
  const int from = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (from < 0) return errno;
  const int error = CopyBetween(from, descriptor);
  close(from);
  return error;
}

int ProbeWritable(const std::string& path) {
  const int descriptor = open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  if (descriptor < 0) return errno;
  struct stat facts = {};
  int error = fstat(descriptor, &facts) == 0 ? 0 : errno;
  const std::vector<char> block(std::size_t{1} << 16U, '\0');
  for (std::size_t written = 0; error == 0 && written < block.size();) {
    const ssize_t count = write(descriptor, block.data() + written, block.size() - written);
    if (count < 0) error = errno;
    if (count > 0) written += static_cast<std::size_t>(count);
  }
  if (error == 0 && fsync(descriptor) != 0) error = errno;
  static_cast<void>(ftruncate(descriptor, facts.st_size));
  close(descriptor);
  return error;
}

}  // namespace vtdirect_cli
