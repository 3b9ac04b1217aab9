#include "hosts/cli/checkouts/checkout_end.h"

namespace vtdirect_cli {
namespace {

ExitCode RunUndo(Host& host, const Arguments& arguments) {
  return EndCheckout(host, arguments, CheckoutEnd::Undo);
}

[[nodiscard]] std::vector<MemberRow> Members() {
  std::vector<MemberRow> members = CheckoutEndMembers();
  members.push_back({"had_ended", MemberType::Flag, nullptr,
                     "whether the checkout had ended before, so that nothing was undone"});
  return members;
}

}  // namespace

CommandRow UndoCommand() {
  return {
      "undo",
      "Throw a working copy away",
      "Throws the working copy at ADDRESS away, with all that was stored in it, so that the document is as "
      "it was before its checkout, and prints the UID to go on with. ADDRESS is that of the working copy, "
      "or of a document that is checked out by vtdirect (see checkouts). Of a checkout that has "
      "ended it clears away what is left of its temporary workspace, and says so.",
      {{"ADDRESS", "A path or a UID; see ADDRESSES."}},
      {},
      true,
      RunUndo,
      Members()};
}

}  // namespace vtdirect_cli
