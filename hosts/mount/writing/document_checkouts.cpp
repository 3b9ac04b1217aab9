#include "hosts/mount/writing/document_checkouts.h"

#include <vtdirect/vt_direct_manager.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/storing/unstored_files.h"

namespace vtdirect_mount {

std::string DocumentCheckouts::ReadBy(const std::string& uid) {
  const std::string kept = kept_.WorkingCopyOf(uid);
  const std::string copy = kept.empty() ? "" : VtDirectManager::WorkingCopyUID(kept.c_str());
  return copy.empty() ? uid : copy;
}

DocumentCheckouts::Required DocumentCheckouts::Known(const std::string& address) {
  Required known;
  const auto uid = mounted_.uidOf(address);
  known.error = uid.error;
  if (uid.value == nullptr) return known;
  known.uid = *uid.value;
  known.base = kept_.WorkingCopyOf(known.uid);
  known.error = known.base.empty() ? EACCES : 0;
  return known;
}

DocumentCheckouts::Required DocumentCheckouts::Require(const std::string& address) {
  Required known = Known(address);
  const auto isSettled = [&] { return known.uid.empty() || known.error == 0 || !checksOut_; };
  if (isSettled()) return known;
  // Of several programs that want to write, the first checks out for all: the server refuses a second checkout.
  const Turns::Turn turn(turns_, address);
  known = Known(address);
  if (isSettled()) return known;
  std::vector<std::string> command = {"checkout", "--quiet"};
  PinServer(address, command);
  command.insert(command.end(), {"--", address});
  const std::string fault = runner_.Run(command);
  // What was known before may be an older iteration than the one that is checked out.
  mounted_.outdate(address);
  known = Known(address);
  // A vtdirect outside of this mount may have checked it out at the same time.
  if (known.error != 0 && !fault.empty()) mounted_.log("cannot check out " + address + ": " + fault);
  return known;
}

// What was written for one checkout must not go into another one: the document may be newer there. And what was
// written where no document was must not become a version of one that somebody else has made meanwhile.
std::string DocumentCheckouts::WhyNotNow(const std::string& address, const std::string& base) {
  const auto found = mounted_.uidNow(address);
  if (found.value == nullptr && found.error != ENOENT) {
    return std::string("the server can't be asked: ") + std::strerror(found.error);
  }
  const std::string uid = found.value == nullptr ? "" : *found.value;
  const bool isNew = base == vtdirect_cli::baseOfNewDocument;
  if (uid.empty()) return isNew ? "" : "the document is not there any more";
  if (isNew) return "there is a document of that name by now";
  if (base.empty()) return "it is not known which checkout it was written for";
  // The document was made of this very file, and is as it was then.
  if (vtdirect_cli::AreSameUid(uid, base)) return "";
  const std::string copy = kept_.WorkingCopyOf(uid);
  if (copy.empty()) return "the document is not checked out here";
  return vtdirect_cli::AreSameUid(copy, base) ? "" : "it was written for an earlier checkout of the document";
}

}  // namespace vtdirect_mount
