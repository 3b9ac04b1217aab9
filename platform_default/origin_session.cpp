#include "platform_default/origin_session.h"

#include <utility>

namespace vtdirect::platform {
namespace {

constexpr std::chrono::seconds timeWrittenOff{5};

}  // namespace

OriginSession::OriginSession(ConnectionWay way) : way_(std::move(way)), share_(curl_share_init()) {
  if (share_ == nullptr) return;
  curl_share_setopt(share_.get(), CURLSHOPT_LOCKFUNC, &Lock);
  curl_share_setopt(share_.get(), CURLSHOPT_UNLOCKFUNC, &Unlock);
  curl_share_setopt(share_.get(), CURLSHOPT_USERDATA, this);
  curl_share_setopt(share_.get(), CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE);
  curl_share_setopt(share_.get(), CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
}

OriginSession::~OriginSession() = default;

void OriginSession::WriteOff(Time now, long connectLimit) {
  const std::lock_guard lock(mutex_);
  writtenOff_ = WrittenOff{now, connectLimit};
}

void OriginSession::ForgetWriteOff() {
  const std::lock_guard lock(mutex_);
  writtenOff_.reset();
}

bool OriginSession::IsWrittenOff(Time now, long connectLimit) const {
  const std::lock_guard lock(mutex_);
  return writtenOff_ && writtenOff_->connectLimit == connectLimit &&
         now - writtenOff_->since < timeWrittenOff;
}

void OriginSession::Lock(CURL*, curl_lock_data data, curl_lock_access, void* self) {
  static_cast<OriginSession*>(self)->shareMutexes_[data].lock();
}

void OriginSession::Unlock(CURL*, curl_lock_data data, void* self) {
  static_cast<OriginSession*>(self)->shareMutexes_[data].unlock();
}

}  // namespace vtdirect::platform
