#pragma once

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <memory>

#include "hosts/mount/fuse/fuse_api.h"

namespace vtdirect_mount {

/// A request of the kernel that is answered later, by another thread. It is answered once, whatever happens:
/// by the thread that has the answer, or with EINTR as soon as the program that waits is interrupted, or with
/// EIO when it is given up.
class PendingRequest {
 public:
  [[nodiscard]] static std::shared_ptr<PendingRequest> Of(fuse_req_t request);
  ~PendingRequest();
  PendingRequest(const PendingRequest&) = delete;
  PendingRequest& operator=(const PendingRequest&) = delete;

  /// Whether nobody waits any more.
  [[nodiscard]] bool IsAnswered() const { return isAnswered_; }

  /// Answers, unless that was done.
  /// @param reply  called with the request; makes exactly one reply
  /// @return false when nobody waited any more, so that no reply was made
  template <typename Reply>
  bool Answer(Reply reply) {
    if (isAnswered_.exchange(true)) return false;
    reply(request_);
    return true;
  }
  /// Answers with an error number.
  void Fail(int error) {
    Answer([error](fuse_req_t request) { fuse_reply_err(request, error); });
  }

 private:
  PendingRequest(fuse_req_t request, std::uintptr_t ticket) : request_(request), ticket_(ticket) {}
  static void Interrupted(fuse_req_t request, void* ticket);

  const fuse_req_t request_;
  const std::uintptr_t ticket_;
  std::atomic<bool> isAnswered_{false};
};

}  // namespace vtdirect_mount
