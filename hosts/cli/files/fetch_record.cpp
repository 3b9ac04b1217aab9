#include "hosts/cli/files/fetch_record.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <utility>

#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/files/durable_file.h"
#include "hosts/cli/files/local_text_file.h"
#include "hosts/cli/files/sha256.h"
#include "hosts/cli/program/environment.h"
#include "hosts/cli/texts/tabbed_line.h"

namespace vtdirect_cli {
namespace {

constexpr std::string_view firstLine = "vtdirect-fetched 1\n";

// One path for each file, whatever the current directory is.
[[nodiscard]] std::string AbsolutePath(const std::string& path) {
  std::error_code error;
  const auto real = std::filesystem::weakly_canonical(path, error);
  return error ? path : real.string();
}

constexpr std::pair<CopyUse, std::string_view> wordsOfCopyUse[] = {
    {CopyUse::None, ""}, {CopyUse::Fetched, "fetched from a copy"}, {CopyUse::Stored, "stored in a copy"}};

[[nodiscard]] std::string WordOf(CopyUse use) {
  for (const auto& [known, word] : wordsOfCopyUse) {
    if (known == use) return std::string(word);
  }
  return {};
}

// A release before this one didn't tell what a file has to do with a working copy, and stored most of them.
[[nodiscard]] std::optional<CopyUse> CopyUseOf(const std::vector<std::string>& fields) {
  if (fields.size() == 6) return IsTemporaryCopy(fields[2]) ? CopyUse::Stored : CopyUse::None;
  for (const auto& [use, known] : wordsOfCopyUse) {
    if (known == fields[6]) return use;
  }
  return std::nullopt;
}

[[nodiscard]] std::optional<FetchRecord> RecordOfText(std::string_view text) {
  if (!text.starts_with(firstLine)) return std::nullopt;
  text.remove_prefix(firstLine.size());
  if (!text.ends_with('\n')) return std::nullopt;
  text.remove_suffix(1);
  const auto fields = FieldsOfLine(text);
  if (!fields || fields->size() < 6 || fields->size() > 7) return std::nullopt;
  const auto use = CopyUseOf(*fields);
  if (!use) return std::nullopt;
  FetchRecord record{(*fields)[0], (*fields)[1], (*fields)[2], (*fields)[3], 0, (*fields)[5], *use};
  const std::string& size = (*fields)[4];
  const auto [end, error] = std::from_chars(size.data(), size.data() + size.size(), record.size);
  if (error != std::errc() || end != size.data() + size.size() || record.sha256.empty()) return std::nullopt;
  return record;
}

}  // namespace

std::string FetchRecords::Location() {
  const std::string directory = StateDirectory();
  return directory.empty() ? "" : directory + "/fetched";
}

std::optional<FetchRecord> FetchRecords::Find(const std::string& path) const {
  if (directory_.empty()) return std::nullopt;
  const std::string file = AbsolutePath(path);
  const LocalText kept = ReadLocalTextFile(directory_ + "/" + Sha256OfText(file));
  if (kept.error != 0) return std::nullopt;
  auto record = RecordOfText(kept.text);
  if (record && record->file != file) return std::nullopt;
  return record;
}

std::string FetchRecords::Keep(const std::string& path, FetchRecord record) const {
  if (directory_.empty()) return "there is no home directory (HOME, XDG_STATE_HOME) to keep it in";
  record.file = AbsolutePath(path);
  int error = MakeDirectories(directory_);
  if (error == 0) {
    const std::string line =
        LineOfFields({record.file, record.address, record.uid, record.version, std::to_string(record.size),
                      record.sha256, WordOf(record.copyUse)});
    error =
        ReplaceDurably(directory_ + "/" + Sha256OfText(record.file), std::string(firstLine) + line + "\n");
  }
  return error == 0 ? "" : "cannot write in " + directory_ + ": " + std::strerror(error);
}

void FetchRecords::Forget(const std::string& path) const {
  if (!directory_.empty()) unlink((directory_ + "/" + Sha256OfText(AbsolutePath(path))).c_str());
}

std::vector<FetchRecord> FetchRecords::OfWorkingCopy(const std::string& workingCopy) const {
  std::vector<FetchRecord> records;
  if (directory_.empty()) return records;
  std::error_code error;
  for (std::filesystem::directory_iterator at(directory_, error), end; !error && at != end;
       at.increment(error)) {
    const LocalText kept = ReadLocalTextFile(at->path().string());
    if (kept.error != 0) continue;
    auto record = RecordOfText(kept.text);
    if (record && record->copyUse != CopyUse::None && AreSameUid(record->uid, workingCopy)) {
      records.push_back(std::move(*record));
    }
  }
  return records;
}

std::optional<FetchRecord> Measure(const std::string& path) {
  struct stat facts = {};
  FetchRecord record;
  if (stat(path.c_str(), &facts) == 0) record.sha256 = Sha256OfFile(path);
  if (record.sha256.empty()) return std::nullopt;
  record.size = static_cast<std::uint64_t>(facts.st_size);
  return record;
}

bool IsAsRecorded(const std::string& path, const FetchRecord& record) {
  const auto now = Measure(path);
  return now && now->size == record.size && now->sha256 == record.sha256;
}

}  // namespace vtdirect_cli
