#include "hosts/cli/editing/kept_edit.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

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

namespace vtdirect_cli {
namespace {

constexpr std::pair<EditStage, const char*> stages[] = {
    {EditStage::Begun, "begun"}, {EditStage::CheckedOut, "checked out"}, {EditStage::Storing, "storing"}};

[[nodiscard]] std::string DirectoryFor(const std::string& document) {
  return StateDirectory() + "/edits/" + Sha256OfText(document).substr(0, 16);
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

EditStage KeptEdit::stage() const {
  const LocalText kept = ReadLocalTextFile(directory_ + "/stage");
  if (kept.error != 0) return EditStage::Begun;
  for (const auto& [stage, word] : stages) {
    if (kept.text == word) return stage;
  }
  return EditStage::Begun;
}

std::string KeptEdit::SetStage(EditStage stage) const {
  for (const auto& [known, word] : stages) {
    if (known != stage) continue;
    const int error = ReplaceDurably(directory_ + "/stage", word);
    return error == 0 ? "" : std::strerror(error);
  }
  return {};
}

void KeptEdit::Remove() const {
  FetchRecords().Forget(file());
  // The lock goes last, so that no other run takes a directory that is about to go.
  std::error_code ignored;
  std::filesystem::remove_all(directory_ + "/content", ignored);
  unlink((directory_ + "/stage").c_str());
  unlink((directory_ + "/lock").c_str());
  rmdir(directory_.c_str());
}

}  // namespace vtdirect_cli
