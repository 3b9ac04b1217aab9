#include "hosts/cli/editing/kept_edit.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/files/durable_file.h"
#include "hosts/cli/files/fetch_record.h"
#include "hosts/cli/files/local_text_file.h"
#include "hosts/cli/files/sha256.h"
#include "hosts/cli/program/environment.h"
#include "hosts/cli/texts/printable.h"
#include "hosts/cli/texts/tabbed_line.h"

namespace vtdirect_cli {
namespace {

constexpr std::pair<EditStage, const char*> stages[] = {
    {EditStage::Begun, "begun"}, {EditStage::CheckedOut, "checked out"}, {EditStage::Storing, "storing"}};

[[nodiscard]] std::string DirectoryFor(const std::string& document) {
  return StateDirectory() + "/edits/" + Sha256OfText(document).substr(0, 16);
}

// A download that was killed leaves one. Nobody else has edited in it.
[[nodiscard]] bool IsOwnTemporary(const std::string& path) {
  return path.substr(path.rfind('/') + 1).starts_with(".vtdirect-");
}

void RemoveOwnTemporaries(const std::string& directory) {
  std::vector<std::string> paths;
  std::error_code error;
  for (std::filesystem::directory_iterator at(directory, error), end; !error && at != end;
       at.increment(error)) {
    if (IsOwnTemporary(at->path().string())) paths.push_back(at->path().string());
  }
  for (const std::string& path : paths) unlink(path.c_str());
}

[[nodiscard]] Failure NoPlace(const std::string& directory, int error) {
  if (error == EWOULDBLOCK) {
    return {ExitCode::Failure, "another vtdirect edits this document now", "end that one first"};
  }
  return {ExitCode::LocalFile,
          "cannot keep an edit in " + Printable(directory) + ": " + std::strerror(error)};
}

}  // namespace

Result<KeptEdit> KeptEdit::Open(const std::string& document, const std::string& name) {
  if (StateDirectory().empty()) {
    return Failure{ExitCode::LocalFile,
                   "there is no home directory (HOME, XDG_STATE_HOME) to keep an edit in"};
  }
  KeptEdit edit(DirectoryFor(document), name);
  int error = MakeDirectories(edit.directory_ + "/content");
  if (error == 0) error = edit.Lock();
  if (error != 0) return NoPlace(edit.directory_, error);
  return edit;
}

KeptEdit::KeptEdit(KeptEdit&& other) noexcept
    : directory_(std::move(other.directory_)),
      name_(std::move(other.name_)),
      lock_(std::exchange(other.lock_, -1)) {}

KeptEdit::~KeptEdit() {
  if (lock_ >= 0) close(lock_);
}

int KeptEdit::Lock() {
  const std::string path = directory_ + "/lock";
  lock_ = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (lock_ < 0 || flock(lock_, LOCK_EX | LOCK_NB) != 0) return errno;
  // The run that had it until now may have removed it.
  struct stat mine = {};
  struct stat there = {};
  const bool isMine =
      fstat(lock_, &mine) == 0 && stat(path.c_str(), &there) == 0 && mine.st_ino == there.st_ino;
  return isMine ? 0 : EWOULDBLOCK;
}

bool KeptEdit::HasUnstored(const std::string& workingCopy) const {
  if (access(file().c_str(), F_OK) != 0) return false;
  const auto record = FetchRecords().Find(file());
  if (!record || Sha256OfFile(file()) != record->sha256) return true;
  return record->copyUse == CopyUse::Stored && !AreSameUid(record->uid, workingCopy);
}

std::string KeptEdit::KnownSum() const {
  const auto record = FetchRecords().Find(file());
  return record ? record->sha256 : "";
}

std::string KeptEdit::KnownVersion() const {
  const auto record = FetchRecords().Find(file());
  return record ? record->version : "";
}

EditState KeptEdit::state() const {
  const LocalText kept = ReadLocalTextFile(directory_ + "/stage");
  if (kept.error != 0) return {};
  const auto fields = FieldsOfLine(kept.text);
  if (!fields || fields->size() != 4) return {};
  for (const auto& [stage, word] : stages) {
    if (fields->front() == word) return {stage, (*fields)[1], (*fields)[2], (*fields)[3]};
  }
  return {};
}

std::string KeptEdit::Keep(const EditState& state) const {
  for (const auto& [known, word] : stages) {
    if (known != state.stage) continue;
    const std::string line = LineOfFields({word, state.workingCopy, state.version, state.sum});
    const int error = ReplaceDurably(directory_ + "/stage", line);
    return error == 0 ? "" : std::strerror(error);
  }
  return {};
}

std::vector<std::string> KeptEdit::OtherFiles() const {
  std::vector<std::string> others;
  std::error_code error;
  for (std::filesystem::recursive_directory_iterator at(place(), error), end; !error && at != end;
       at.increment(error)) {
    const std::string path = at->path().string();
    if (path == file() || IsOwnTemporary(path)) continue;
    struct stat facts = {};
    static_cast<void>(lstat(path.c_str(), &facts));
    others.push_back(
        LineOfFields({path, std::to_string(facts.st_ino), std::to_string(facts.st_size),
                      std::to_string(facts.st_mtim.tv_sec), std::to_string(facts.st_mtim.tv_nsec)}));
  }
  // What can't be looked at may hold anything.
  if (error) others.push_back(error.message());
  std::sort(others.begin(), others.end());
  return others;
}

void KeptEdit::CountAsUnstored() const {
  FetchRecords().Forget(file());
}

void KeptEdit::Drop() const {
  FetchRecords().Forget(file());
  unlink(file().c_str());
}

bool KeptEdit::Remove() const {
  Drop();
  RemoveOwnTemporaries(place());
  const bool isEmpty = rmdir(place().c_str()) == 0 || errno == ENOENT;
  // The lock goes last, so that no other run takes a directory that is about to go.
  unlink((directory_ + "/stage").c_str());
  unlink((directory_ + "/lock").c_str());
  rmdir(directory_.c_str());
  return !isEmpty;
}

}  // namespace vtdirect_cli
