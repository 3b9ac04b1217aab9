#pragma once

#include <functional>
#include <string>

#include "hosts/mount/cache/facts_file.h"
#include "hosts/mount/requests/answer.h"

namespace vtdirect_mount {

/// What the mount does for those who deal with what programs write.
struct Mounted {
  /// The UID of the document at an address. May make requests.
  std::function<Answer<std::string>(const std::string& address)> uidOf;
  /// The same as the server tells it now: while it is away, that is an error, whatever was known before. For those
  /// who change something by it.
  std::function<Answer<std::string>(const std::string& address)> uidNow;
  /// The UID of a document that was stored just now; empty when that can't be told. May make a request.
  std::function<std::string(const std::string& address)> uidStored;
  /// Lets the server be asked anew for a document.
  std::function<void(const std::string& address)> outdate;
  /// The same after it was stored; with the length of what was stored, and when that was written.
  std::function<void(const std::string& address, const Facts& stored)> outdateStored;
  std::function<void(const std::string& text)> log;
};

}  // namespace vtdirect_mount
