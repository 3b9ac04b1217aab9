#include "hosts/mount/writing/writing.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>
#include <vtdirect/outcome.h>
#include <vtdirect/vt_direct_manager.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <utility>

#include "hosts/cli/files/durable_file.h"
#include "hosts/cli/files/fetch_record.h"
#include "hosts/mount/requests/failure_errno.h"

namespace vtdirect_mount {
namespace {

constexpr std::chrono::seconds betweenTries{15};
constexpr const char* unconfirmed = "it was not confirmed that it is stored";

[[nodiscard]] std::string Now() {
  const std::time_t now = std::time(nullptr);
  std::tm parts = {};
  char text[32] = "";
  if (gmtime_r(&now, &parts) != nullptr) std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
  return text;
}

[[nodiscard]] std::string NameOf(const std::string& address) {
  return address.substr(address.rfind('/') + 1);
}

// Names of files begin with the number of the process that made them. That tells whether a content without an
// entry may be cleared away; a number may come again, so what waits to be stored is not judged by it.
[[nodiscard]] bool IsOfALivingProcess(const std::string& name) {
  pid_t process = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), process);
  return error == std::errc() && process > 0 && process != getpid() &&
         (kill(process, 0) == 0 || errno == EPERM);
}

[[nodiscard]] std::vector<vtdirect_cli::UnstoredFile> NewestFirst(
    std::vector<vtdirect_cli::UnstoredFile> files) {
  std::stable_sort(files.begin(), files.end(),
                   [](const auto& one, const auto& other) { return one.since > other.since; });
  return files;
}

[[nodiscard]] bool CopyBytes(const LocalFile& from, const LocalFile& to) {
  char buffer[65536];
  off_t offset = 0;
  ssize_t count = 0;
  while ((count = pread(from.file().descriptor(), buffer, sizeof buffer, offset)) > 0) {
    if (pwrite(to.file().descriptor(), buffer, static_cast<std::size_t>(count), offset) != count)
      return false;
    offset += count;
  }
  return count == 0;
}

[[nodiscard]] int FetchInto(const std::string& uid, const std::string& path) {
  const VtDirectManager::Outcome outcome;
  VtDirectManager::DownloadOptions options;
  options.compareSize = true;
  std::string result;
  if (VtDirectManager::GetFile(uid.c_str(), path.c_str(), result, options)) return 0;
  // Only a document that can't be downloaded is empty: a length of 0 also means that the server tells none.
  const int error = ErrorOf(outcome);
  return error == ENOENT && VtDirectManager::ShouldCreate(uid.c_str()) ? 0 : error;
}

}  // namespace

Writing::Writing(Settings settings, Mounted mounted)
    : settings_(std::move(settings)),
      mounted_(std::move(mounted)),
      runner_(settings_.command, settings_.directory),
      retries_([this] { Retry(); }) {}

Writing::~Writing() {
  {
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
  }
  changed_.notify_all();
  retries_.join();
}

std::string Writing::Prepare(const std::string& below) {
  const std::string& directory = unstored_.directory();
  const int error = vtdirect_cli::MakeDirectories(directory);
  if (error != 0) return "cannot make " + directory + ": " + std::strerror(error);
  std::set<std::string> entries;
  std::set<std::string> taken;
  auto listing = unstored_.List();
  for (const auto& unstored : NewestFirst(std::move(listing.files))) {
    entries.insert(unstored.name);
    if (unstored.isWhole && unstored.address.starts_with(below)) TakeUp(unstored, taken);
  }
  // A content whose entry was not seen may be what a user has written.
  if (listing.isComplete) ClearAway(entries);
  RetryNow();
  return "";
}

// Removes the contents that have no entry and nobody's claim: a mount on another machine may share the directory.
void Writing::ClearAway(const std::set<std::string>& entries) {
  std::error_code error;
  for (auto entry = std::filesystem::directory_iterator(unstored_.directory(), error);
       !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    const std::string name = entry->path().stem().string();
    const bool isContent = entry->path().extension() == ".content";
    if (!isContent || entries.contains(name) || IsOfALivingProcess(name)) continue;
    const int descriptor = open(entry->path().c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
    if (descriptor < 0) continue;
    LocalFile file(name, entry->path().string(), descriptor);
    if (!file.Claim()) file.Keep(true);
  }
}

// The newest of an address is stored, by this mount or by the one that has it. An older one must not be stored
// after it, and is left on the disk for its user.
// @param taken  the addresses of newer ones
void Writing::TakeUp(const vtdirect_cli::UnstoredFile& unstored, std::set<std::string>& taken) {
  const std::string path = unstored_.ContentOf(unstored.name);
  const int descriptor = open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
  if (descriptor < 0) return;
  auto file = std::make_shared<LocalFile>(unstored.name, path, descriptor);
  file->Keep(true);
  const bool isNewest = taken.insert(unstored.address).second;
  if (!file->Claim()) return;
  if (!isNewest) {
    static_cast<void>(unstored_.Write(
        {unstored.name, unstored.address, unstored.since, false, "a newer file has its address"}));
    return;
  }
  file->NoteChange(true);
  file->NoteListed(true);
  static_cast<void>(overlay_.Lay(unstored.address, std::move(file)));
  const std::lock_guard lock(mutex_);
  waiting_.insert(unstored.address);
}

// What lay there before waits on the disk until the new one is safe there.
void Writing::LayOver(const std::string& address, const std::shared_ptr<LocalFile>& file) {
  auto before = overlay_.Lay(address, file);
  if (before == nullptr || before == file) return;
  const std::lock_guard lock(mutex_);
  auto older = replaced_.extract(before.get());
  auto& replaced = replaced_[file.get()];
  if (!older.empty()) replaced.insert(replaced.end(), older.mapped().begin(), older.mapped().end());
  replaced.push_back(std::move(before));
}

void Writing::StrikeReplaced(const LocalFile& file) {
  std::unique_lock lock(mutex_);
  const auto replaced = replaced_.extract(&file);
  lock.unlock();
  if (replaced.empty()) return;
  for (const auto& before : replaced.mapped()) {
    before->NoteReplaced();
    unstored_.Strike(before->name());
    before->Keep(false);
  }
}

bool Writing::IsScratch(const std::string& address) const {
  return settings_.scratch.Has(NameOf(address));
}

std::string Writing::ReadBy(const std::string& uid) {
  const std::string kept = kept_.WorkingCopyOf(uid);
  const std::string copy = kept.empty() ? "" : VtDirectManager::WorkingCopyUID(kept.c_str());
  return copy.empty() ? uid : copy;
}

// @param contentOf  the UID of the document whose content it begins with; empty for none
Writable Writing::NewFile(const std::string& contentOf) {
  std::string name;
  {
    const std::lock_guard lock(mutex_);
    name =
        std::to_string(getpid()) + "-" + std::to_string(next_++) + "-" + std::to_string(std::time(nullptr));
  }
  const std::string path = unstored_.ContentOf(name);
  // Opened after the fetch, which may put a file of its own in the place.
  const int error = contentOf.empty() ? 0 : FetchInto(contentOf, path);
  const int descriptor =
      error == 0 ? open(path.c_str(), O_CREAT | O_RDWR | O_CLOEXEC | O_NOFOLLOW, 0600) : -1;
  if (descriptor >= 0) {
    Writable made{0, std::make_shared<LocalFile>(name, path, descriptor)};
    // Nobody else knows the name yet.
    static_cast<void>(made.file->Claim());
    return made;
  }
  const int fault = error == 0 ? errno : error;
  unlink(path.c_str());
  return {fault};
}

Writable Writing::Create(const std::string& address) {
  if (!IsScratch(address) && !VtDirectManager::IsPathWritable(address.c_str())) return {EPERM};
  const Writable made = NewFile("");
  if (made.file == nullptr) return made;
  made.file->SetScratch(IsScratch(address));
  // An empty new file is a document too, once it is closed.
  if (const int error = NoteChange(address, *made.file, false); error != 0) return {error};
  LayOver(address, made.file);
  return made;
}

bool Writing::IsWaiting(const std::string& address) {
  const std::lock_guard lock(mutex_);
  return waiting_.contains(address);
}

void Writing::Close(const std::string& address, const std::shared_ptr<LocalFile>& file, bool writes) {
  const auto close = [this, address, file, writes] {
    if (file->NoteClosed(writes) == 0 && !file->isDirty() && !file->isScratch()) overlay_.Take(address, file);
  };
  if (!writes || !file->isDirty() || file->isScratch()) return close();
  NoteWhole(address, *file);
  if (IsWaiting(address)) return close();
  Post([this, address, file, close] {
    static_cast<void>(Store(address, file));
    close();
  });
}

// Its store may wait for others, and the process may be killed before.
void Writing::NoteWhole(const std::string& address, LocalFile& file) {
  const bool hasOtherWriters = file.writers() > 1;
  if (hasOtherWriters || file.isListedWhole() || file.isReplaced() || file.failedWrite() != 0) return;
  if (fsync(file.file().descriptor()) != 0) return file.NoteFailedWrite(errno);
  static_cast<void>(NoteWaiting(address, file, true, unconfirmed));
}

// The document's UID, when it may be stored into.
int Writing::RequireCheckout(const std::string& address, std::string& uid) {
  int error = 0;
  uid = mounted_.uidOf(address, error);
  if (uid.empty()) return error;
  if (IsCheckedOut(uid)) return 0;
  if (!settings_.autoCheckout) return EACCES;
  const std::string fault = runner_.Run({"checkout", "--quiet", "--", address});
  if (!fault.empty()) {
    mounted_.log("cannot check out " + address + ": " + fault);
    return EACCES;
  }
  // What was known before may be an older iteration than the one that is checked out.
  mounted_.outdate(address);
  uid = mounted_.uidOf(address, error);
  if (uid.empty()) return error;
  return IsCheckedOut(uid) ? 0 : EACCES;
}

Writable Writing::Edit(const std::string& address, bool keepsContent) {
  if (auto known = overlay_.Find(address)) return {0, std::move(known)};
  std::string uid;
  if (const int error = RequireCheckout(address, uid); error != 0) return {error};
  const Writable made = NewFile(keepsContent ? ReadBy(uid) : "");
  if (made.file == nullptr) return made;
  return {0, overlay_.LayIfFree(address, made.file)};
}

int Writing::NoteWaiting(const std::string& address, LocalFile& file, bool isWhole,
                         const std::string& fault) {
  const int error = unstored_.Write({file.name(), address, Now(), isWhole, fault});
  if (error == 0) file.NoteListed(isWhole);
  if (error != 0) mounted_.log("cannot note that " + address + " waits: " + std::strerror(error));
  return error;
}

int Writing::NoteChange(const std::string& address, LocalFile& file, bool isDue) {
  // One that waits is half while it is written to again.
  if (!file.isReplaced() && (!file.isDirty() || file.isListedWhole()) && !file.isScratch()) {
    if (const int error = NoteWaiting(address, file, false, "it was not closed"); error != 0) return error;
    file.Keep(true);
  }
  file.NoteChange(isDue);
  return 0;
}

int Writing::Empty(const std::string& address, const std::shared_ptr<LocalFile>& file) {
  if (const int error = NoteChange(address, *file, false); error != 0) {
    if (!file->isDirty() && !file->isOpen()) overlay_.Take(address, file);
    return error;
  }
  if (ftruncate(file->file().descriptor(), 0) != 0) return errno;
  file->NoteFailedWrite(0);
  return 0;
}

// What was written when a document was checked out, or was not there, must not become a new iteration of one
// that is not checked out any more, or that somebody else has made meanwhile.
std::string Writing::WhyNotNow(const std::string& address) {
  mounted_.outdate(address);
  int error = 0;
  const std::string uid = mounted_.uidOf(address, error);
  if (uid.empty()) return error == ENOENT ? "" : std::strerror(error);
  return IsCheckedOut(uid) ? "" : "the document is not checked out here";
}

int Writing::Store(const std::string& address, const std::shared_ptr<LocalFile>& file) {
  if (!file->isDirty() || file->isScratch() || file->isReplaced()) return 0;
  const std::uint64_t changes = file->changes();
  file->Keep(true);
  if (file->failedWrite() == 0 && fsync(file->file().descriptor()) != 0) file->NoteFailedWrite(errno);
  if (const int error = file->failedWrite(); error != 0) {
    mounted_.log(address + " is not stored: a write to it failed: " + std::strerror(error));
    NoteWaiting(address, *file, false, std::string("a write failed: ") + std::strerror(error));
    return error;
  }
  if (NoteWaiting(address, *file, true, unconfirmed) == 0) StrikeReplaced(*file);
  std::string fault = WhyNotNow(address);
  if (fault.empty()) fault = runner_.Run({"put", "--quiet", "--", file->path(), address});
  if (!fault.empty()) {
    mounted_.log(address + " is not stored, and waits: " + fault);
    NoteWaiting(address, *file, file->changes() == changes, fault);
    const std::lock_guard lock(mutex_);
    waiting_.insert(address);
    return EIO;
  }
  file->NoteStored(changes);
  mounted_.outdate(address);
  if (file->isDirty()) return 0;
  StrikeReplaced(*file);
  unstored_.Strike(file->name());
  vtdirect_cli::FetchRecords().Forget(file->path());
  file->Keep(false);
  // A program that still has it open may go on to write; then it goes when that closes it.
  if (!file->isOpen()) overlay_.Take(address, file);
  const std::lock_guard lock(mutex_);
  waiting_.erase(address);
  return 0;
}

// Where a program makes a backup of a document by renaming it, the backup is a copy on this machine, and the
// name of the document is free for a new file.
int Writing::SetAside(const std::string& document, const std::string& backup) {
  const Writable copy = Edit(document, true);
  if (copy.file == nullptr) return copy.error;
  const Writable made = NewFile("");
  if (made.file == nullptr) return made.error;
  if (!CopyBytes(*copy.file, *made.file)) return EIO;
  if (copy.file->isDirty()) return EBUSY;
  overlay_.Take(document, copy.file);
  made.file->SetScratch(true);
  static_cast<void>(overlay_.Lay(backup, made.file));
  overlay_.PutAside(document, Overlay::Clock::now());
  return 0;
}

int Writing::MoveOnto(const std::string& from, const std::string& to,
                      const std::shared_ptr<LocalFile>& file) {
  if (!IsScratch(to)) {
    if (file->failedWrite() != 0) return file->failedWrite();
    std::string uid;
    const int error = RequireCheckout(to, uid);
    if (error != 0 && error != ENOENT) return error;
    if (error == ENOENT && !VtDirectManager::IsPathWritable(to.c_str())) return EPERM;
  }
  file->SetScratch(IsScratch(to));
  LayOver(to, file);
  overlay_.Take(from, file);
  if (file->isScratch()) {
    StrikeReplaced(*file);
    unstored_.Strike(file->name());
    file->Keep(false);
    return 0;
  }
  file->NoteChange(true);
  return Store(to, file);
}

int Writing::Rename(const std::string& from, const std::string& to) {
  if (from == to) return 0;
  const auto file = overlay_.Find(from);
  if (file != nullptr) return MoveOnto(from, to, file);
  return IsScratch(to) ? SetAside(from, to) : EPERM;
}

int Writing::Remove(const std::string& address) {
  const auto file = overlay_.Find(address);
  if (file == nullptr) return EPERM;
  if (!file->isScratch()) {
    int error = 0;
    if (!mounted_.uidOf(address, error).empty() || error != ENOENT) return EPERM;
    unstored_.Strike(file->name());
    const std::lock_guard lock(mutex_);
    waiting_.erase(address);
  }
  StrikeReplaced(*file);
  file->Keep(false);
  overlay_.Take(address, file);
  return 0;
}

void Writing::RetryOnce() {
  std::set<std::string> waiting;
  {
    const std::lock_guard lock(mutex_);
    waiting = waiting_;
  }
  for (const std::string& address : waiting) {
    const auto file = overlay_.Find(address);
    if (file != nullptr && file->hasWriters()) continue;
    if (file == nullptr || !file->isDirty() || Store(address, file) == 0) {
      const std::lock_guard lock(mutex_);
      waiting_.erase(address);
    }
  }
  const std::lock_guard lock(mutex_);
  isRetrying_ = false;
  changed_.notify_all();
}

void Writing::RetryNow() {
  {
    const std::lock_guard lock(mutex_);
    isWoken_ = true;
  }
  changed_.notify_all();
}

void Writing::Retry() {
  std::unique_lock lock(mutex_);
  while (!isEnding_) {
    changed_.wait_for(lock, betweenTries, [this] { return isEnding_ || (isWoken_ && !isRetrying_); });
    // A try can take longer than the time between two; the next one begins after it.
    if (isRetrying_) continue;
    isWoken_ = false;
    if (isEnding_ || waiting_.empty()) continue;
    isRetrying_ = true;
    stores_.Post([this] { RetryOnce(); });
  }
}

}  // namespace vtdirect_mount
