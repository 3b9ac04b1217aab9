#include "hosts/mount/log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <ctime>

#include "hosts/cli/files/durable_file.h"

namespace vtdirect_mount {
namespace {

constexpr off_t longestFile = off_t{1} << 20U;
constexpr long quietSeconds = 60;
constexpr std::size_t mostTexts = 1000;

[[nodiscard]] std::string TimeText(std::time_t now) {
  std::tm parts = {};
  char text[32] = "";
  if (gmtime_r(&now, &parts) != nullptr) std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
  return text;
}

}  // namespace

Log::~Log() {
  if (isOwned_) close(descriptor_);
}

int Log::OpenFile(const std::string& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) == 0 && status.st_size > longestFile) {
    static_cast<void>(std::rename(path.c_str(), (path + ".1").c_str()));
  }
  const int descriptor = open(path.c_str(), O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0600);
  if (descriptor < 0) return errno;
  const std::lock_guard lock(mutex_);
  if (isOwned_) close(descriptor_);
  descriptor_ = descriptor;
  isOwned_ = true;
  return 0;
}

void Log::UseStandardError() {
  const std::lock_guard lock(mutex_);
  if (isOwned_) close(descriptor_);
  descriptor_ = STDERR_FILENO;
  isOwned_ = false;
}

void Log::Write(const std::string& text) {
  std::string line = text;
  const auto isControl = [](char character) { return static_cast<unsigned char>(character) < ' '; };
  std::replace_if(line.begin(), line.end(), isControl, '?');
  const std::time_t now = std::time(nullptr);
  const std::lock_guard lock(mutex_);
  if (descriptor_ < 0) return;
  const auto seen = lastSeen_.find(line);
  if (seen != lastSeen_.end() && now - seen->second < quietSeconds) return;
  if (lastSeen_.size() >= mostTexts) lastSeen_.clear();
  lastSeen_[line] = now;
  static_cast<void>(vtdirect_cli::WriteAll(descriptor_, TimeText(now) + " " + line + "\n"));
}

}  // namespace vtdirect_mount
