#include "hosts/cli/checkouts/checkout_end.h"
#include "hosts/cli/many/batch_options.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] ExitCode CheckInOne(Host& host, const Arguments& arguments, const std::string& address) {
  return EndCheckout(host, address, CheckoutEnd::Checkin, arguments.Has("dry-run"));
}

ExitCode RunCheckin(Host& host, const Arguments& arguments) {
  return ChangeEach(host, arguments, OfFolders::CheckedOutHere, CheckInOne);
}

}  // namespace

CommandRow CheckinCommand() {
  return {
      "checkin",
      "Check a working copy in",
      "Makes what is in the working copy at ADDRESS the document's newest iteration, which everybody "
      "sees, and prints the UID to go on with. ADDRESS is that of the working copy, or of a document "
      "that is checked out by vtdirect (see checkouts).\n\n"
      "What was written to it in a mount and is not on the server yet would be left out, so nothing is "
      "checked in before that is stored or given up (see recover). In a work folder a file that was changed "
      "is "
      "not checked in by its name, since checkin sends no file; commit stores it and checks it in. One that "
      "was not changed is kept as the new version, if it has its bytes.\n\n"
      "When it fails the working copy stays, and the command can be given again; the state on the server "
      "and what to do next are told.",
      {{"ADDRESS", "A path, a pattern or a UID; see ADDRESSES. May be given several times.",
        Count::AtLeastOnce}},
      ChangingManyOptions(OfFolders::CheckedOutHere),
      Requests::Some,
      RunCheckin,
      CheckoutEndMembers()};
}

}  // namespace vtdirect_cli
