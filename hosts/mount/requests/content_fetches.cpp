#include "hosts/mount/requests/content_fetches.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <vtdirect/outcome.h>
#include <vtdirect/vt_direct_manager.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "hosts/mount/requests/failure_errno.h"

namespace vtdirect_mount {
namespace {

// A part that is whole. It stays readable whatever becomes of its name.
[[nodiscard]] std::shared_ptr<const OpenFile> OpenWhole(const std::string& file, std::uint64_t size) {
  const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
  if (descriptor < 0) return nullptr;
  auto opened = std::make_shared<const OpenFile>(descriptor);
  struct stat status = {};
  const bool isWhole = fstat(descriptor, &status) == 0 && static_cast<std::uint64_t>(status.st_size) == size;
  return isWhole ? opened : nullptr;
}

[[nodiscard]] bool LocalFileFailed(const VtDirectManager::Outcome& outcome) {
  const auto cause = outcome.Cause();
  return cause && cause->kind == VtDirectManager::FailureKind::LocalFile;
}

}  // namespace

void ContentFetches::Fetch(const Iteration& iteration, Wish wish) {
  // A working copy changes under one name, so what is cached of it counts for nothing.
  if (auto cached = CanChange(iteration.uid) ? nullptr : cache_.Open(iteration.key, iteration.facts.size)) {
    wish.done({0, std::move(cached)});
    return;
  }
  std::shared_ptr<Flight> begun;
  {
    // After Stop the pool drops the task, and whoever waits is told when the wish is dropped.
    const std::lock_guard lock(mutex_);
    std::shared_ptr<Flight>& flight = flights_[iteration.key];
    if (flight == nullptr) begun = flight = std::make_shared<Flight>();
    flight->wishes.push_back(std::move(wish));
  }
  if (begun != nullptr) pool_.Post([this, iteration, begun] { Run(iteration, begun); });
}

void ContentFetches::Run(const Iteration& iteration, const std::shared_ptr<Flight>& flight) {
  const Answer<OpenFile> answer = FetchWithRoom(iteration, flight);
  if (answer.error != 0 && answer.error != EINTR && report_) {
    report_("cannot fetch " + iteration.uid + ": " +
            (answer.words.empty() ? std::strerror(answer.error) : answer.words));
  }
  for (const Wish& wish : End(iteration, flight)) wish.done(answer);
}

// A full disk is often full of what this program keeps.
Answer<OpenFile> ContentFetches::FetchWithRoom(const Iteration& iteration,
                                               const std::shared_ptr<Flight>& flight) {
  Answer<OpenFile> answer = Download(iteration, flight);
  if (answer.error != ENOSPC || cache_.bytes() == 0) return answer;
  cache_.ShrinkTo(0);
  return Download(iteration, flight);
}

// What a program can understand of a cache that can't be written. Only a lack of room goes away when contents are
// thrown away.
int ContentFetches::ErrorOfWriting(const Iteration& iteration) {
  const int error = cache_.ErrorOfWriting(iteration.facts.size);
  if (error != 0 && report_) report_(std::string("cannot write to the cache: ") + std::strerror(error));
  return error == ENOSPC || error == EROFS || error == EMFILE || error == ENFILE ? error : EIO;
}

Answer<OpenFile> ContentFetches::Download(const Iteration& iteration, const std::shared_ptr<Flight>& flight) {
  const std::string file = cache_.NewFile();
  VtDirectManager::DownloadOptions options;
  options.compareSize = true;
  options.progress = [this, &iteration, &flight](std::size_t, std::size_t) {
    return GoesOn(iteration, flight);
  };
  const VtDirectManager::Outcome outcome;
  std::string uid;
  if (!VtDirectManager::GetFile(iteration.uid.c_str(), file.c_str(), uid, options)) {
    ContentCache::Drop(file);
    return {LocalFileFailed(outcome) ? ErrorOfWriting(iteration) : ErrorOf(outcome), nullptr,
            WordsOf(outcome)};
  }
  auto opened = OpenWhole(file, iteration.facts.size);
  if (opened == nullptr) {
    ContentCache::Drop(file);
    return {EIO};
  }
  if (CanChange(iteration.uid)) {
    ContentCache::Drop(file);
  } else if (const int error = cache_.Keep(iteration.key, file); error != 0) {
    return {error};
  }
  return {0, std::move(opened)};
}

// Whoever comes after the end of a fetch that nobody wanted begins another one.
bool ContentFetches::GoesOn(const Iteration& iteration, const std::shared_ptr<Flight>& flight) {
  const std::lock_guard lock(mutex_);
  const auto isWanted = [](const Wish& wish) { return wish.isWanted(); };
  if (!isStopped_ && std::any_of(flight->wishes.begin(), flight->wishes.end(), isWanted)) return true;
  const auto place = flights_.find(iteration.key);
  if (place != flights_.end() && place->second == flight) flights_.erase(place);
  return false;
}

std::vector<ContentFetches::Wish> ContentFetches::End(const Iteration& iteration,
                                                      const std::shared_ptr<Flight>& flight) {
  const std::lock_guard lock(mutex_);
  const auto place = flights_.find(iteration.key);
  if (place != flights_.end() && place->second == flight) flights_.erase(place);
  return std::exchange(flight->wishes, {});
}

void ContentFetches::Stop() {
  static_cast<void>(StopWithin({}));
  pool_.Stop();
  std::unordered_map<std::string, std::shared_ptr<Flight>> dropped;  // destroyed without the lock
  const std::lock_guard lock(mutex_);
  dropped.swap(flights_);
}

bool ContentFetches::StopWithin(std::chrono::milliseconds most) {
  {
    const std::lock_guard lock(mutex_);
    isStopped_ = true;
  }
  return pool_.StopWithin(most);
}

}  // namespace vtdirect_mount
