#include "hosts/cli/checkouts/checkout_end.h"
#include "hosts/cli/many/batch_options.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] ExitCode UndoOne(Host& host, const Arguments& arguments, const std::string& address) {
  return EndCheckout(host, address, CheckoutEnd::Undo, arguments.Has("dry-run"));
}

ExitCode RunUndo(Host& host, const Arguments& arguments) {
  return ChangeEach(host, arguments, OfFolders::CheckedOutHere, UndoOne);
}

[[nodiscard]] std::vector<MemberRow> Members() {
  std::vector<MemberRow> members = CheckoutEndMembers();
  members.push_back({"had_ended", MemberType::Flag, "without --dry-run",
                     "whether the checkout had ended before, so that nothing was undone"});
  return members;
}

}  // namespace

CommandRow UndoCommand() {
  return {"undo",
          "Throw a working copy away",
          "Throws the working copy at ADDRESS away, with all that was stored in it, so that the document is "
          "as it was before its checkout, and prints the UID to go on with. ADDRESS is that of the working "
          "copy, or of a document that is checked out by vtdirect (see checkouts). Of a checkout that has "
          "ended it clears away what is left of its temporary workspace, and says so.",
          {{"ADDRESS", "A path, a pattern or a UID; see ADDRESSES. May be given several times.",
            Count::AtLeastOnce}},
          ChangingManyOptions(OfFolders::CheckedOutHere),
          Requests::Some,
          RunUndo,
          Members()};
}

}  // namespace vtdirect_cli
