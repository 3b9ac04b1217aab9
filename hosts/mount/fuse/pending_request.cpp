#include "hosts/mount/fuse/pending_request.h"

#include <mutex>
#include <unordered_map>

namespace vtdirect_mount {
namespace {

// libfuse may tell of an interruption while another thread answers, so it is given a ticket and no address.
// Never destroyed: threads of libfuse may look into it while the process ends.
struct Tickets {
  std::mutex mutex;
  std::uintptr_t next = 1;
  std::unordered_map<std::uintptr_t, std::weak_ptr<PendingRequest>> pending;
};

Tickets& TheTickets() {
  static Tickets* const tickets = new Tickets;
  return *tickets;
}

// The request of which this thread is just telling libfuse how it is interrupted.
struct Registration {
  fuse_req_t request = nullptr;
  bool isInterrupted = false;
};

thread_local Registration theRegistration;

}  // namespace

std::shared_ptr<PendingRequest> PendingRequest::Of(fuse_req_t request) {
  Tickets& tickets = TheTickets();
  std::shared_ptr<PendingRequest> pending;
  {
    const std::lock_guard lock(tickets.mutex);
    const std::uintptr_t ticket = tickets.next++;
    pending = std::shared_ptr<PendingRequest>(new PendingRequest(request, ticket));
    tickets.pending[ticket] = pending;
  }
  // Calls back at once when the interruption has come already, and touches the request after that, so it must
  // not be answered and gone by then.
  Registration& registration = theRegistration;
  registration = {.request = request};
  fuse_req_interrupt_func(request, Interrupted, reinterpret_cast<void*>(pending->ticket_));
  const bool isInterrupted = registration.isInterrupted;
  registration = {};
  if (isInterrupted) pending->Fail(EINTR);
  return pending;
}

PendingRequest::~PendingRequest() {
  Fail(EIO);
  Tickets& tickets = TheTickets();
  const std::lock_guard lock(tickets.mutex);
  tickets.pending.erase(ticket_);
}

void PendingRequest::Interrupted(fuse_req_t request, void* ticket) {
  if (theRegistration.request == request) {
    theRegistration.isInterrupted = true;
    return;
  }
  Tickets& tickets = TheTickets();
  std::shared_ptr<PendingRequest> pending;
  {
    const std::lock_guard lock(tickets.mutex);
    const auto place = tickets.pending.find(reinterpret_cast<std::uintptr_t>(ticket));
    if (place != tickets.pending.end()) pending = place->second.lock();
  }
  if (pending != nullptr) pending->Fail(EINTR);
}

}  // namespace vtdirect_mount
