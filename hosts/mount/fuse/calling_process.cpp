#include "hosts/mount/fuse/calling_process.h"

#include <charconv>
#include <fstream>

namespace vtdirect_mount {
namespace {

[[nodiscard]] std::string PathOf(pid_t thread, const char* file) {
  return "/proc/" + std::to_string(thread) + "/" + file;
}

}  // namespace

std::string ProgramOf(pid_t thread) {
  std::ifstream file(PathOf(thread, "comm"));
  std::string name;
  std::getline(file, name);
  return name;
}

pid_t ProcessOf(pid_t thread) {
  const std::string mark = "Tgid:\t";
  std::ifstream file(PathOf(thread, "status"));
  for (std::string line; std::getline(file, line);) {
    if (!line.starts_with(mark)) continue;
    pid_t process = thread;
    std::from_chars(line.data() + mark.size(), line.data() + line.size(), process);
    return process;
  }
  return thread;
}

}  // namespace vtdirect_mount
