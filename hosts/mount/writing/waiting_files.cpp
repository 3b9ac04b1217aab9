#include "hosts/mount/writing/waiting_files.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>
#include <vtdirect/vt_direct_manager.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <utility>

#include "hosts/cli/files/durable_file.h"

namespace vtdirect_mount {
namespace {

constexpr const char* formOfTime = "%Y-%m-%dT%H:%M:%SZ";

[[nodiscard]] std::string TextOf(std::time_t time) {
  std::tm parts = {};
  char text[32] = "";
  if (gmtime_r(&time, &parts) != nullptr) std::strftime(text, sizeof text, formOfTime, &parts);
  return text;
}

// 0 for what is no time: any other is newer.
[[nodiscard]] std::time_t TimeOf(const std::string& text) {
  std::tm parts = {};
  return strptime(text.c_str(), formOfTime, &parts) == nullptr ? 0 : timegm(&parts);
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

}  // namespace

std::string WaitingFiles::Prepare(const std::string& below) {
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
  return "";
}

// Removes the contents that have no entry and nobody's claim: a mount on another machine may share the directory.
void WaitingFiles::ClearAway(const std::set<std::string>& entries) const {
  std::error_code error;
  for (auto entry = std::filesystem::directory_iterator(unstored_.directory(), error);
       !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    const std::string name = entry->path().stem().string();
    const bool isContent = entry->path().extension() == ".content";
    if (!isContent || entries.contains(name) || IsOfALivingProcess(name)) continue;
    const int descriptor = open(entry->path().c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
    if (descriptor < 0) continue;
    LocalFile file(name, entry->path().string(), descriptor);
    if (!file.Claim()) file.KeepContent();
  }
}

// Why an entry is for its user alone to look at; empty when it is not. The newest of an address is stored, by this
// mount or by the one that has it, and an older one must not be stored after it.
// @param taken  the addresses of newer ones
std::string WaitingFiles::WhyLeft(const vtdirect_cli::UnstoredFile& unstored, std::set<std::string>& taken) {
  const std::string server = VtDirectManager::GetServerURL(unstored.address.c_str());
  if (unstored.server.empty()) return "it is not known which server it was written for";
  if (unstored.server != server) return "it was written for " + unstored.server + ", and this is " + server;
  return taken.insert(unstored.address).second ? "" : "a newer file has its address";
}

void WaitingFiles::TakeUp(const vtdirect_cli::UnstoredFile& unstored, std::set<std::string>& taken) {
  const std::string path = unstored_.ContentOf(unstored.name);
  const int descriptor = open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
  if (descriptor < 0) return;
  auto file = std::make_shared<LocalFile>(unstored.name, path, descriptor);
  file->KeepContent();
  const std::string whyLeft = WhyLeft(unstored, taken);
  if (!file->Claim()) return;
  if (unstored_.IsToBeDropped(unstored.name)) return Strike(*file);
  if (!whyLeft.empty()) {
    vtdirect_cli::UnstoredFile left = unstored;
    left.fault = whyLeft;
    // Not even the next mount may store it, which finds no newer one.
    if (unstored.server == VtDirectManager::GetServerURL(unstored.address.c_str())) left.isWhole = false;
    if (left.fault != unstored.fault) static_cast<void>(unstored_.Write(left));
    return;
  }
  file->SetBase(unstored.base);
  file->NoteChange(Due::AtNextClose);
  file->SetChanged(TimeOf(unstored.since));
  file->NoteListed(Written::Whole);
  static_cast<void>(overlay_.Lay(unstored.address, std::move(file)));
  Add(unstored.address);
}

int WaitingFiles::Note(LocalFile& file, Written written, const std::string& fault) {
  const std::string address = file.address();
  const int error = unstored_.Write({.name = file.name(),
                                     .address = address,
                                     .since = TextOf(file.changed()),
                                     .isWhole = written == Written::Whole,
                                     .fault = fault,
                                     .server = VtDirectManager::GetServerURL(address.c_str()),
                                     .base = file.base()});
  if (error == 0) file.NoteListed(written);
  if (error != 0) mounted_.log("cannot note that " + address + " waits: " + std::strerror(error));
  return error;
}

void WaitingFiles::Strike(LocalFile& file) {
  unstored_.Strike(file.name());
  file.DropContent();
}

bool WaitingFiles::StrikeStored(LocalFile& file) {
  const auto lock = file.LockEntry();
  if (file.isDirty()) return false;
  Strike(file);
  return true;
}

void WaitingFiles::StrikeForGood(LocalFile& file) {
  const auto lock = file.LockEntry();
  file.NoteReplaced();
  Strike(file);
}

void WaitingFiles::Drop(const std::string& address, const std::shared_ptr<LocalFile>& file) {
  mounted_.log(address + " was given up: what waited for it is gone");
  StrikeReplaced(*file);
  StrikeForGood(*file);
  overlay_.Take(address, file);
  Remove(address);
  mounted_.outdate(address);
}

void WaitingFiles::LayOver(const std::string& address, const std::shared_ptr<LocalFile>& file) {
  auto before = overlay_.Lay(address, file);
  if (before == nullptr || before == file) return;
  const std::lock_guard lock(mutex_);
  auto older = replaced_.extract(before.get());
  auto& replaced = replaced_[file.get()];
  if (!older.empty()) replaced.insert(replaced.end(), older.mapped().begin(), older.mapped().end());
  replaced.push_back(std::move(before));
}

void WaitingFiles::StrikeReplaced(const LocalFile& file) {
  std::unique_lock lock(mutex_);
  const auto replaced = replaced_.extract(&file);
  lock.unlock();
  if (replaced.empty()) return;
  for (const auto& before : replaced.mapped()) StrikeForGood(*before);
}

void WaitingFiles::Add(const std::string& address) {
  const std::lock_guard lock(mutex_);
  addresses_.insert(address);
}

void WaitingFiles::Remove(const std::string& address) {
  const std::lock_guard lock(mutex_);
  addresses_.erase(address);
}

bool WaitingFiles::Has(const std::string& address) const {
  const std::lock_guard lock(mutex_);
  return addresses_.contains(address);
}

std::set<std::string> WaitingFiles::Addresses() const {
  const std::lock_guard lock(mutex_);
  return addresses_;
}

}  // namespace vtdirect_mount
