#include "hosts/mount/cache/facts_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <charconv>
#include <fstream>
#include <string_view>
#include <utility>

#include "hosts/cli/files/durable_file.h"
#include "hosts/mount/cache/open_file.h"

namespace vtdirect_mount {
namespace {

constexpr off_t longestFile = off_t{64} << 20U;
constexpr std::string_view form = "1 ";

// The number at the start of the text, which it is then cut by, with the blank after it.
template <typename Number>
[[nodiscard]] bool TakeNumber(std::string_view& text, Number& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const auto length = static_cast<std::size_t>(end - text.data());
  if (error != std::errc() || length >= text.size() || text[length] != ' ') return false;
  text.remove_prefix(length + 1);
  return true;
}

[[nodiscard]] std::optional<std::pair<std::string, Facts>> FactsOfLine(std::string_view line) {
  if (!line.starts_with(form)) return std::nullopt;
  line.remove_prefix(form.size());
  Facts facts;
  if (!TakeNumber(line, facts.size) || !TakeNumber(line, facts.since) || line.empty()) return std::nullopt;
  return std::pair(std::string(line), facts);
}

}  // namespace

std::string LineOfFacts(const std::string& uid, const Facts& facts) {
  const auto isControl = [](char character) { return static_cast<unsigned char>(character) < ' '; };
  if (uid.empty() || std::any_of(uid.begin(), uid.end(), isControl)) return "";
  return std::string(form) + std::to_string(facts.size) + " " + std::to_string(facts.since) + " " + uid +
         "\n";
}

void FactsFile::Load() {
  const std::lock_guard lock(mutex_);
  struct stat status = {};
  if (stat(path_.c_str(), &status) == 0 && status.st_size > longestFile) unlink(path_.c_str());
  std::ifstream file(path_);
  for (std::string line; std::getline(file, line);) {
    if (file.eof()) break;  // a last line without its end was cut off by a crash
    if (auto read = FactsOfLine(line)) facts_.insert(std::move(*read));
  }
}

std::optional<Facts> FactsFile::Find(const std::string& uid) const {
  const std::lock_guard lock(mutex_);
  const auto place = facts_.find(uid);
  return place == facts_.end() ? std::nullopt : std::optional(place->second);
}

void FactsFile::Keep(const std::string& uid, const Facts& facts) {
  const std::string line = LineOfFacts(uid, facts);
  const std::lock_guard lock(mutex_);
  facts_[uid] = facts;
  if (line.empty()) return;
  // One write at the end of the file, so that lines of several processes don't mix.
  const OpenFile file(open(path_.c_str(), O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0600));
  if (file.descriptor() >= 0) static_cast<void>(vtdirect_cli::WriteAll(file.descriptor(), line));
}

}  // namespace vtdirect_mount
