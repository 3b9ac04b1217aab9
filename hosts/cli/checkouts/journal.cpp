#include "hosts/cli/checkouts/journal.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "hosts/cli/program/environment.h"
#include "hosts/cli/texts/tabbed_line.h"

namespace vtdirect_cli {
namespace {

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

[[nodiscard]] std::string LineOf(const JournalEntry& entry) {
  return LineOfFields(
      {entry.writer, entry.since, entry.step, entry.address, entry.uid, entry.file, entry.sha256});
}

[[nodiscard]] std::optional<JournalEntry> EntryOf(const std::string& line) {
  const auto fields = FieldsOfLine(line);
  if (!fields || fields->size() != 7) return std::nullopt;
  const auto& field = *fields;
  JournalEntry entry(field[2], field[3], field[4], field[5], field[6]);
  entry.writer = field[0];
  entry.since = field[1];
  return entry;
}

}  // namespace

std::string Journal::Location() {
  const std::string directory = StateDirectory();
  return directory.empty() ? "" : directory + "/journal";
}

std::string Journal::Write(JournalEntry& entry) const {
  entry.writer = NameOfProcess(std::to_string(getpid()));
  entry.since = TimeOfNow();
  return file_.Change([line = LineOf(entry)](StateLines& lines) {
    lines.push_back(line);
    return true;
  });
}

std::string Journal::StrikeOut(const JournalEntry& entry) const {
  return file_.Change([line = LineOf(entry)](StateLines& lines) {
    const auto place = std::find(lines.begin(), lines.end(), line);
    if (place == lines.end()) return false;
    lines.erase(place);
    return true;
  });
}

Result<OpenChanges> Journal::Open() const {
  const auto lines = file_.Read();
  if (!lines) return lines.failure();
  OpenChanges open;
  for (const std::string& line : *lines) {
    auto entry = EntryOf(line);
    if (!entry) {
      ++open.unreadable;
    } else if (IsAlive(entry->writer)) {
      ++open.underWay;
    } else {
      open.entries.push_back(std::move(*entry));
    }
  }
  if (open.unreadable > 0) {
    open.fault =
        path_ + " has lines that this release of vtdirect does not understand (" +
        std::to_string(open.unreadable) +
        "); each may be a change that was not confirmed, and is left as it is; an editor takes it out "
        "once you know how the change ended";
  }
  return open;
}

}  // namespace vtdirect_cli
