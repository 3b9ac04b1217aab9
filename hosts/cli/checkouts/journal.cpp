#include "hosts/cli/checkouts/journal.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <fstream>
#include <functional>
#include <sstream>

#include "hosts/cli/environment.h"
#include "hosts/cli/files/local_text_file.h"
#include "hosts/cli/files/state_file.h"
#include "hosts/cli/texts/tabbed_line.h"

namespace vtdirect_cli {
namespace {

constexpr const char* kFirstLine = "vtdirect-journal 1";

// A number of a process comes again, so the time when it was started belongs to it.
[[nodiscard]] std::string NameOfProcess(const std::string& id) {
  std::ifstream file("/proc/" + id + "/stat");
  std::string text;
  std::getline(file, text);
  // The name in brackets may hold anything; the start is the 20th word after it.
  const std::size_t bracket = text.rfind(')');
  if (bracket == std::string::npos) return {};
  std::istringstream words(text.substr(bracket + 1));
  std::string word;
  for (int i = 0; i < 20; ++i) words >> word;
  return id + ":" + word;
}

[[nodiscard]] bool IsAlive(const std::string& writer) {
  return NameOfProcess(writer.substr(0, writer.find(':'))) == writer;
}

[[nodiscard]] std::string Now() {
  const std::time_t now = std::time(nullptr);
  std::tm parts = {};
  if (gmtime_r(&now, &parts) == nullptr) return {};
  char text[32];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

[[nodiscard]] std::string LineOf(const JournalEntry& entry) {
  return LineOfFields(
      {entry.writer, entry.since, entry.step, entry.address, entry.uid, entry.file, entry.sha256});
}

[[nodiscard]] std::optional<JournalEntry> EntryOf(const std::string& line) {
  const auto fields = FieldsOfLine(line);
  if (!fields || fields->size() != 7) return std::nullopt;
  const auto& field = *fields;
  return JournalEntry{field[0], field[1], field[2], field[3], field[4], field[5], field[6]};
}

// Without its first line. A file of another form is a fault, and is not written to.
[[nodiscard]] std::string ReadLines(const std::string& path, std::vector<std::string>& lines) {
  std::string text;
  const int error = ReadLocalTextFile(path, text);
  if (error == ENOENT) return {};
  if (error != 0) return "cannot read " + path + ": " + std::strerror(error);
  std::istringstream stream(text);
  std::string line;
  if (!std::getline(stream, line)) return {};
  if (line != kFirstLine) return path + " was not written by this release of vtdirect, and is left as it is";
  while (std::getline(stream, line)) lines.push_back(line);
  return {};
}

[[nodiscard]] std::string Change(const std::string& path,
                                 const std::function<void(std::vector<std::string>&)>& change) {
  if (path.empty()) return "there is no home directory (HOME, XDG_STATE_HOME) to keep it in";
  std::string fault;
  const StateFileLock lock(path, fault);
  if (!fault.empty()) return fault;
  std::vector<std::string> lines;
  if (fault = ReadLines(path, lines); !fault.empty()) return fault;
  change(lines);
  std::string text = std::string(kFirstLine) + '\n';
  for (const std::string& line : lines) text += line + '\n';
  return ReplaceStateFile(path, text);
}

}  // namespace

std::string Journal::Location() {
  const std::string directory = StateDirectory();
  return directory.empty() ? "" : directory + "/journal";
}

std::string Journal::Write(JournalEntry& entry) const {
  entry.writer = NameOfProcess(std::to_string(getpid()));
  entry.since = Now();
  const std::string line = LineOf(entry);
  return Change(path_, [&line](std::vector<std::string>& lines) { lines.push_back(line); });
}

std::string Journal::StrikeOut(const JournalEntry& entry) const {
  const std::string line = LineOf(entry);
  return Change(path_, [&line](std::vector<std::string>& lines) {
    const auto place = std::find(lines.begin(), lines.end(), line);
    if (place != lines.end()) lines.erase(place);
  });
}

std::vector<JournalEntry> Journal::Open(std::string& fault) const {
  std::vector<JournalEntry> entries;
  if (path_.empty()) return entries;
  std::vector<std::string> lines;
  fault = ReadLines(path_, lines);
  for (const std::string& line : lines) {
    auto entry = EntryOf(line);
    if (entry && !IsAlive(entry->writer)) entries.push_back(std::move(*entry));
  }
  return entries;
}

}  // namespace vtdirect_cli
