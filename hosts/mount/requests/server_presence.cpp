#include "hosts/mount/requests/server_presence.h"

#include "hosts/mount/requests/failure_errno.h"

namespace vtdirect_mount {

void ServerPresence::Note(Clock::time_point begun, Clock::time_point ended, int error) {
  const std::lock_guard lock(mutex_);
  if (!IsOfTheServersAbsence(error)) {
    lastAnswer_ = ended;
    awayUntil_ = {};
  } else if (lastAnswer_ < begun && ended - begun >= late) {
    awayUntil_ = ended + pause;
  }
}

bool ServerPresence::IsAway(Clock::time_point now) const {
  const std::lock_guard lock(mutex_);
  return now < awayUntil_;
}

}  // namespace vtdirect_mount
