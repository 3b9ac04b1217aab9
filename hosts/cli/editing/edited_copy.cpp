#include "hosts/cli/editing/edited_copy.h"

#include <algorithm>

#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/checkouts/newest_iteration.h"
#include "hosts/cli/checkouts/presence.h"
#include "hosts/cli/checkouts/recovery.h"
#include "hosts/cli/failures/reasons.h"

namespace vtdirect_cli {

CopyContent LookIntoCopy(Host& host, const std::string& workingCopy, const std::vector<std::string>& known) {
  ForgetReasons();
  const std::string sum = SumOnServer(host, ByOwnId(workingCopy));
  if (sum.empty()) {
    return PresenceOfWorkingCopy(workingCopy) == Presence::Gone ? CopyContent::Gone : CopyContent::NotKnown;
  }
  const bool isKnown = std::find(known.begin(), known.end(), sum) != known.end();
  return isKnown ? CopyContent::AsKnown : CopyContent::Another;
}

std::optional<std::string> IterationWith(Host& host, const std::string& document,
                                         const std::string& workingCopy, const std::string& sum) {
  if (PresenceOfWorkingCopy(workingCopy) != Presence::Gone) return std::nullopt;
  auto newest = NewestUidOf(document);
  if (!newest || sum.empty() || SumOnServer(host, *newest) != sum) return std::nullopt;
  return newest;
}

}  // namespace vtdirect_cli
