#include "simulator/wire/request_history.h"

#include <algorithm>

#include "simulator/wire/faults.h"
#include "simulator/wire/redaction.h"

namespace vantry_sim {
namespace {

constexpr std::size_t mostRequests = 10'000;
constexpr std::size_t mostBytes = 64 * 1024 * 1024;

std::size_t SizeOf(const RememberedRequest& request) {
  std::size_t size = sizeof request + request.door.size() + request.client.size() + request.method.size() +
                     request.target.size() + request.body.size() + request.user.size();
  for (const auto& [name, value] : request.headers) size += name.size() + value.size() + 64;
  return size;
}

bool Means(const RequestFilter& filter, const RememberedRequest& request) {
  if (!request.done && !filter.arrived) return false;
  if (filter.status && (!request.done || *filter.status != request.status)) return false;
  if (filter.method != "*" && filter.method != request.method) return false;
  return request.id > filter.since && GlobMatches(filter.pattern, request.target);
}

}  // namespace

std::uint64_t RequestHistory::Begin(RememberedRequest request) {
  const std::lock_guard lock(mutex_);
  request.id = ++lastId_;
  size_ += SizeOf(request);
  requests_.push_back(std::move(request));
  Trim();
  changed_.notify_all();
  return lastId_;
}

void RequestHistory::SetBody(std::uint64_t id, std::string shown, std::uint64_t size) {
  const std::lock_guard lock(mutex_);
  RememberedRequest* request = Entry(id);
  if (request == nullptr) return;
  size_ += shown.size() - request->body.size();
  request->body = std::move(shown);
  request->bodySize = size;
  Trim();
}

void RequestHistory::ShowBody(std::uint64_t id, std::string_view contentType, std::string_view body) {
  std::string shown;
  {
    const std::lock_guard lock(showing_);
    shown = ShownBody(contentType, body);
  }
  SetBody(id, std::move(shown), body.size());
}

void RequestHistory::Finish(std::uint64_t id, const Exchange& exchange, std::uint64_t fault) {
  const std::lock_guard lock(mutex_);
  RememberedRequest* request = Entry(id);
  if (request == nullptr) return;
  request->done = true;
  size_ += exchange.user.size() - request->user.size();
  request->user = exchange.user;
  request->duration = exchange.duration;
  request->status = exchange.status;
  request->answerBytes = exchange.bodyBytes;
  request->fault = fault;
  Trim();
  changed_.notify_all();
}

std::vector<RememberedRequest> RequestHistory::Find(const RequestFilter& filter) const {
  const std::lock_guard lock(mutex_);
  return FindLocked(filter);
}

std::vector<RememberedRequest> RequestHistory::Wait(const RequestFilter& filter, std::size_t count,
                                                    std::chrono::milliseconds time, std::uint64_t* mark) {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, time, [&] {
    const auto there =
        std::count_if(requests_.begin(), requests_.end(),
                      [&](const RememberedRequest& request) { return Means(filter, request); });
    return ending_ || static_cast<std::size_t>(there) >= count;
  });
  // One that comes after this moment is neither among those found nor before the mark.
  if (mark != nullptr) *mark = lastId_;
  return FindLocked(filter);
}

std::uint64_t RequestHistory::Mark() const {
  const std::lock_guard lock(mutex_);
  return lastId_;
}

void RequestHistory::Clear() {
  const std::lock_guard lock(mutex_);
  requests_.clear();
  size_ = 0;
}

void RequestHistory::EndWaits() {
  const std::lock_guard lock(mutex_);
  ending_ = true;
  changed_.notify_all();
}

/// The entries are in the order of their ids.
RememberedRequest* RequestHistory::Entry(std::uint64_t id) {
  const auto found = std::lower_bound(
      requests_.begin(), requests_.end(), id,
      [](const RememberedRequest& request, std::uint64_t wanted) { return request.id < wanted; });
  return found != requests_.end() && found->id == id ? &*found : nullptr;
}

std::vector<RememberedRequest> RequestHistory::FindLocked(const RequestFilter& filter) const {
  std::vector<RememberedRequest> found;
  for (const RememberedRequest& request : requests_) {
    if (Means(filter, request)) found.push_back(request);
  }
  return found;
}

void RequestHistory::Trim() {
  while (requests_.size() > mostRequests || (size_ > mostBytes && requests_.size() > 1)) {
    size_ -= std::min(size_, SizeOf(requests_.front()));
    requests_.pop_front();
  }
}

}  // namespace vantry_sim
