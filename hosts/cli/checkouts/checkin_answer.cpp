#include "hosts/cli/checkouts/checkin_answer.h"

#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/checkouts/newest_iteration.h"
#include "hosts/cli/checkouts/recovery.h"
#include "hosts/cli/failures/reasons.h"

namespace vtdirect_cli {
namespace {

// Nobody else can make an iteration while it is checked out, so a new one is that of the check-in, unless its bytes
// tell that somebody was faster after the end of the checkout.
[[nodiscard]] std::optional<std::string> NewIteration(Host& host, const KeptCheckout& checkout,
                                                      const std::string& sha256) {
  const auto newest = NewestUidOf(checkout.document);
  // The server may call the working copy the newest for who has it checked out.
  if (!newest || LeadsTo(checkout, *newest)) return std::nullopt;
  if (!sha256.empty() && SumOnServer(host, *newest) != sha256) return std::nullopt;
  return newest;
}

}  // namespace

CheckinAnswer ReadCheckinAnswer(Host& host, const std::string& told, const std::string& workingCopy,
                                const std::string& document, const std::string& sha256) {
  // An answer that names nothing leaves the library with the id that went in, or with none at all.
  if (HasObjectId(told) && !AreSameUid(told, workingCopy)) return {.iteration = told, .isTold = true};
  CheckinAnswer answer{.iteration = {}, .reason = LastReason()};
  const std::string before = document.empty() ? ByDocumentId(workingCopy) : document;
  // Of a working copy in a workspace of the user's own it is not known what it was taken from.
  if (AreSameUid(before, workingCopy)) return answer;
  KeptCheckout checkout;
  checkout.document = before;
  checkout.uid = workingCopy;
  if (const auto newest = NewIteration(host, checkout, sha256)) answer.iteration = *newest;
  return answer;
}

Failure UnknownCheckin(const CheckinAnswer& answer, const std::string& state) {
  Failure failure{
      ExitCode::Incomplete,
      state +
          ", and whether it is checked in is not known: the server's answer named no document, and "
          "no new iteration of it is seen",
      "\"vtdirect recover\" asks again; keep the local file until then", answer.reason,
      FailureClass::LostAnswer};
  failure.changeIsOpen = true;
  return failure;
}

}  // namespace vtdirect_cli
