#include "hosts/mount/writing/document_checkouts.h"

#include <vtdirect/vt_direct_manager.h>

#include <cerrno>
#include <cstring>

namespace vtdirect_mount {

std::string DocumentCheckouts::ReadBy(const std::string& uid) {
  const std::string kept = kept_.WorkingCopyOf(uid);
  const std::string copy = kept.empty() ? "" : VtDirectManager::WorkingCopyUID(kept.c_str());
  return copy.empty() ? uid : copy;
}

int DocumentCheckouts::Require(const std::string& address, std::string& uid) {
  int error = 0;
  uid = mounted_.uidOf(address, error);
  if (uid.empty()) return error;
  if (Has(uid)) return 0;
  if (!checksOut_) return EACCES;
  const std::string fault = runner_.Run({"checkout", "--quiet", "--", address});
  if (!fault.empty()) {
    mounted_.log("cannot check out " + address + ": " + fault);
    return EACCES;
  }
  // What was known before may be an older iteration than the one that is checked out.
  mounted_.outdate(address);
  uid = mounted_.uidOf(address, error);
  if (uid.empty()) return error;
  return Has(uid) ? 0 : EACCES;
}

// What was written when a document was checked out, or was not there, must not become a new iteration of one
// that is not checked out any more, or that somebody else has made meanwhile.
std::string DocumentCheckouts::WhyNotNow(const std::string& address) {
  int error = 0;
  const std::string uid = mounted_.uidNow(address, error);
  if (uid.empty()) return error == ENOENT ? "" : std::strerror(error);
  return Has(uid) ? "" : "the document is not checked out here";
}

}  // namespace vtdirect_mount
