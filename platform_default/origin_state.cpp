#include "platform_default/origin_state.h"

#include <utility>

namespace vtdirect::platform {
namespace {

/// In whole seconds: a host may set any number of them, and many are more than nanoseconds can count.
bool HasExpired(OriginState::Time since, const du::http::TransportSettings& settings) {
  const auto idle = std::chrono::steady_clock::now() - since;
  return std::chrono::duration_cast<std::chrono::seconds>(idle).count() >= settings.idleSeconds;
}

}  // namespace

std::shared_ptr<OriginSession> OriginState::Session() {
  Ended ended;
  const std::lock_guard lock(mutex_);
  std::shared_ptr<SessionShare> share;
  if (!IsHome()) {
    share = home_->Session()->share();
    if (session_ != nullptr && shareOfHome_ != share) ended = TakeSession();
    shareOfHome_ = share;
  }
  if (session_ != nullptr) return session_;
  if (share == nullptr || !share->Admits(origin_)) share = NewShare();
  // The settings are read under the lock: whoever changes the way sets it first and ends the sessions then,
  // so that no session of the old way can begin in between and stay.
  session_ = std::make_shared<OriginSession>(ConnectionWayTo(home(), origin_), std::move(share));
  return session_;
}

std::shared_ptr<SessionShare> OriginState::NewShare() const {
  auto share = std::make_shared<SessionShare>();
  static_cast<void>(share->Admits(origin_));
  return share;
}

OriginState::Handles OriginState::EndSession() {
  Ended ended;
  const std::lock_guard lock(mutex_);
  ended = TakeSession();
  return std::move(ended.handles);
}

OriginState::Ended OriginState::TakeSession() {
  Ended ended;
  for (Idle& idle : idle_) ended.handles.push_back(std::move(idle.handle));
  idle_.clear();
  if (session_ != nullptr) session_->firstExchange.Open();
  ended.session.swap(session_);
  return ended;
}

std::unique_ptr<CurlHandle> OriginState::TakeHandle(const OriginSession& session,
                                                    const du::http::TransportSettings& settings) {
  const std::lock_guard lock(mutex_);
  if (idle_.empty() || idle_.back().handle->session().get() != &session) return nullptr;
  if (HasExpired(idle_.back().since, settings)) return nullptr;
  std::unique_ptr<CurlHandle> handle = std::move(idle_.back().handle);
  idle_.pop_back();
  return handle;
}

void OriginState::GiveBack(std::unique_ptr<CurlHandle> handle, const du::http::TransportSettings& settings) {
  std::unique_ptr<CurlHandle> oldest;  // closed after the lock is gone, as is the handle that isn't kept
  const std::lock_guard lock(mutex_);
  if (handle->IsWorn() || handle->session() != session_ || settings.idleConnections == 0) return;
  if (idle_.size() >= static_cast<std::size_t>(settings.idleConnections)) {
    oldest = std::move(idle_.front().handle);
    idle_.erase(idle_.begin());
  }
  idle_.push_back({std::move(handle), std::chrono::steady_clock::now()});
}

OriginState::Handles OriginState::TakeExpired(const du::http::TransportSettings& settings) {
  Handles handles;
  const std::lock_guard lock(mutex_);
  while (!idle_.empty() && HasExpired(idle_.front().since, settings)) {
    handles.push_back(std::move(idle_.front().handle));
    idle_.erase(idle_.begin());
  }
  return handles;
}

}  // namespace vtdirect::platform
