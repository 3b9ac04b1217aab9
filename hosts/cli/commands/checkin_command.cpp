#include "hosts/cli/checkouts/checkout_end.h"

namespace vtdirect_cli {
namespace {

ExitCode RunCheckin(Host& host, const Arguments& arguments) {
  return EndCheckout(host, arguments, CheckoutEnd::Checkin);
}

}  // namespace

CommandRow CheckinCommand() {
  return {
      "checkin",
      "Check a working copy in",
      "Makes what stands in the working copy at ADDRESS the document's newest iteration, which everybody "
      "sees, and prints the UID to go on with. ADDRESS is that of the working copy, or of a document that "
      "is checked out by vtdirect (see checkouts).\n\nWhen it fails the working copy stays, and the "
      "command can be given again; what stands and what to do next is told.",
      {{"ADDRESS", "A path or a UID; see ADDRESSES."}},
      {},
      true,
      RunCheckin,
      CheckoutEndMembers()};
}

}  // namespace vtdirect_cli
