#include "base/result.h"
#include "documents/checkout/checkin.h"
#include "documents/checkout/checkout.h"
#include "documents/checkout/undo_checkout.h"
#include "documents/checkout/verify_checkout.h"
#include "documents/workspaces/temporary_workspace.h"
#include "tests/wire/documents/failing_steps.h"

// Every request of every flow of a checkout fails in every way.
namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;

constexpr const char* temporaryId = "D1001|W77|D1002|T";

const Answer nonce{200, nonceAnswer};
const Answer done{200, ""};
const Answer noList{200, "[]"};
const Answer missing{404, ""};

Answer Workspace(const std::string& id) {
  return {200, R"({"id":")" + id + "\"}"};
}
Answer Documents(const std::string& id) {
  return {200, R"([{"id":")" + id + "\"}]"};
}
// A document that is checked in, and one that the connected user has checked out.
const Answer checkedIn{200, R"({"id":"D1001","context":{"id":"C5"},"epmMaster":{"id":"M1"}})"};
const Answer checkedOut{200, R"({"id":"D","context":{"id":"C5"},"epmMaster":{"number":"0042"},)"
                             R"("pdmIterationState":{"isCheckout":true,"isCheckoutByYou":true}})"};

const std::string nonceLine = Get(noncePath);
const std::string createLine = Post(workspacesPath);
const std::string listLine = Get(workspacesPath + "?contextId=C5");
const std::string holdLine = Get(workspacesPath + "/W77/documents");
const std::string versionsLine = DocumentLine("D1001") + "/versions?contextId=C5";

const TraceLine created = Miss("Created temporary workspace W77\n");
const TraceLine notCheckedOut =
    Error("Failed to checkout document D1001 to workspace W77 with error {error}\n");
const TraceLine notDeleted = Error("Failed to delete temporary workspace W77\n");
const TraceLine notUndone = Error("Failed to undo check-out of document with error {error}\n");

class CheckoutFailures : public FlowTest {
 protected:
  using Operation = std::optional<FileInfo> (*)(ServerContext&, const CheckoutId&);

  void Walk(const std::vector<Step>& steps, const std::function<std::string()>& run) {
    WalkFailures(
        transport, trace, steps, [this] { return Leftovers(); }, run);
  }
  void Walk(const std::vector<Step>& steps, Operation operation, const char* id) {
    Walk(steps, [&] {
      FileInfo info;
      info.id = "before";
      const bool succeeded = HandOver(operation(Begin(NewConnection()), ParseCheckoutId(id)), info);
      return (succeeded ? "true " : "false ") + info.id;
    });
  }
  void WalkVerify(const std::vector<Step>& steps) {
    Walk(steps, [this]() -> std::string {
      const auto verified = VerifyCheckout(Begin(NewConnection()), ParseCheckoutId(temporaryId));
      return verified ? "true " + verified->info.id : "false";
    });
  }
};

TEST_F(CheckoutFailures, OfACheckoutInATemporaryWorkspace) {
  const std::string success = "true D1001|W77|D1002|T";
  const std::string checkoutLine = WorkspaceLine("W77/checkout");
  const Ending withoutDocument{success,
                               {created},
                               {nonce, Workspace("W77"), Documents("D1002")},
                               {nonceLine, createLine, checkoutLine}};
  const Ending withoutNonce{success,
                            {created},
                            {Workspace("W77"), nonce, Documents("D1002")},
                            {createLine, nonceLine, checkoutLine}};
  const Traces noWorkspace{Error("Failed to create temporary workspace\n")};
  Walk({{DocumentLine("D1001"),
         checkedIn,
         {"false before", {Error("Failed to find document id D1001\n")}},
         withoutDocument},
        {nonceLine, nonce, withoutNonce, withoutNonce},
        {createLine,
         Workspace("W77"),
         {"false before", noWorkspace, {noList}, {listLine}},
         {"false before", noWorkspace}},
        {checkoutLine,
         Documents("D1002"),
         {"false before", {created, notCheckedOut}, {done}, {WorkspaceLine("W77/delete")}},
         {"true ", {created, notCheckedOut}}}},
       CheckoutDocument, "D1001");
}

TEST_F(CheckoutFailures, OfTheDeletionBehindACheckoutThatFailed) {
  const TraceLine locked =
      Error("Failed to checkout document D1001 to workspace W77 with error 409 : locked\n");
  const Ending none{"not walked", {}};
  const std::vector<Step> steps{{DocumentLine("D1001"), checkedIn, none, none},
                                {nonceLine, nonce, none, none},
                                {createLine, Workspace("W77"), none, none},
                                {WorkspaceLine("W77/checkout"), {409, "locked"}, none, none},
                                {WorkspaceLine("W77/delete"),
                                 done,
                                 {"false before", {created, locked, notDeleted}},
                                 {"false before", {created, locked}}}};
  WalkFailuresFrom(
      {4, steps}, transport, trace, [this] { return Leftovers(); },
      [this]() -> std::string {
        FileInfo info;
        info.id = "before";
        return (HandOver(CheckoutDocument(Begin(NewConnection()), ParseCheckoutId("D1001")), info)
                    ? "true "
                    : "false ") +
               info.id;
      });
}

TEST_F(CheckoutFailures, OfACheckoutInAWorkspaceOfTheUsers) {
  const std::string checkoutLine = WorkspaceLine("W77/checkout");
  const Ending goesOn{"true D1002|W77", {}, {nonce, Documents("D1002")}, {nonceLine, checkoutLine}};
  const Ending withoutNonce{"true D1002|W77", {}, {Documents("D1002")}, {checkoutLine}};
  Walk(
      {{DocumentLine("D1001"),
        checkedIn,
        {"false before", {Error("Failed to find document id D1001|W77\n")}},
        goesOn},
       {nonceLine, nonce, withoutNonce, withoutNonce},
       {checkoutLine, Documents("D1002"), {"false before", {notCheckedOut}}, {"true |W77", {notCheckedOut}}}},
      CheckoutDocument, "D1001|W77");
}

TEST_F(CheckoutFailures, OfASecondTryAtATemporaryWorkspace) {
  // The name for this second is 2f821e22.
  const Answer taken{200, R"([{"name":"FenloomTMP2f821e22"}])"};
  const Ending none{"", {}};
  Walk({{nonceLine,
         nonce,
         {"", {}, {{409, ""}, taken, nonce, {500, ""}}, {createLine, listLine, nonceLine, createLine}},
         {"", {}, {{409, ""}, taken, nonce, {500, ""}}, {createLine, listLine, nonceLine, createLine}}},
        {createLine, {409, ""}, {"", {}, {noList}, {listLine}}, none},
        {listLine, taken, none, none},
        {createLine, Workspace("W77"), none, none}},
       [this] {
         return CreateTemporaryWorkspace(Begin(NewConnection()), "C5", [] { return std::uint32_t{1}; });
       });
}

TEST_F(CheckoutFailures, OfACheckinOfATemporaryCheckout) {
  const std::string checkinLine = WorkspaceLine("W77/checkin");
  const std::string deleteLine = WorkspaceLine("W77/delete");
  const TraceLine checkedInLine = Miss("Checked-in document id D1002 on workspace W77 giving id D1003\n");
  const Ending withoutNonce{
      "true D1003", {checkedInLine}, {Documents("D1003"), nonce, done}, {checkinLine, nonceLine, deleteLine}};
  Walk({{nonceLine, nonce, withoutNonce, withoutNonce},
        {checkinLine,
         Documents("D1003"),
         {"false before",
          {Error("Failed to check-in document with error {error}\n"),
           Error("Failed to check-in document id D1002 on workspace W77\n")}},
         {"true ",
          {Miss("Checked-in document id D1002 on workspace W77 giving id \n")},
          {done},
          {deleteLine}}},
        {deleteLine, done, {"true D1003", {checkedInLine, notDeleted}}, {"true D1003", {checkedInLine}}}},
       CheckinDocument, temporaryId);
}

TEST_F(CheckoutFailures, OfACheckinInAWorkspaceOfTheUsers) {
  const std::string checkinLine = WorkspaceLine("W12/checkin");
  const Ending withoutNonce{"true D1003|W12",
                            {Miss("Checked-in document id D2 on workspace W12 giving id D1003\n")},
                            {Documents("D1003")},
                            {checkinLine}};
  Walk({{nonceLine, nonce, withoutNonce, withoutNonce},
        {checkinLine,
         Documents("D1003"),
         {"false before",
          {Error("Failed to check-in document with error {error}\n"),
           Error("Failed to check-in document id D2 on workspace W12\n")}},
         {"true |W12", {Miss("Checked-in document id D2 on workspace W12 giving id \n")}}}},
       CheckinDocument, "D2|W12");
}

TEST_F(CheckoutFailures, OfAnUndoOfATemporaryCheckout) {
  const std::string undoLine = WorkspaceLine("W77/undocheckout");
  const std::string deleteLine = WorkspaceLine("W77/delete");
  const Ending skipped{
      "true D1001", {}, {nonce, done, checkedIn}, {nonceLine, deleteLine, DocumentLine("D1001")}};
  Ending notListed = skipped;
  notListed.traces = {Error("Failed to get documents for workspace W77\n")};
  const Ending withoutNonce{
      "true D1001", {}, {Documents("D1001"), nonce, done}, {undoLine, nonceLine, deleteLine}};
  const Ending unreadable{"true D1001", {}, {done, checkedIn}, {deleteLine, DocumentLine("D1001")}};
  Ending refused = unreadable;
  refused.traces = {notUndone, Error("Failed to undo checkout of D1002 from temporary workspace W77\n")};
  Walk({{holdLine, Documents("D1002"), notListed, skipped},
        {nonceLine, nonce, withoutNonce, withoutNonce},
        {undoLine, Documents("D1001"), refused, unreadable},
        {deleteLine, done, {"true D1001", {notDeleted}}, {"true D1001", {}}}},
       UndoCheckoutDocument, temporaryId);
}

TEST_F(CheckoutFailures, OfTheReadBehindAnUndo) {
  const Ending none{"not walked", {}};
  const std::vector<Step> steps{{holdLine, noList, none, none},
                                {nonceLine, nonce, none, none},
                                {WorkspaceLine("W77/delete"), done, none, none},
                                {DocumentLine("D1001"),
                                 checkedIn,
                                 {"false before", {Error("Failed to locate document D1001 on server\n")}},
                                 {"true ", {}}}};
  WalkFailuresFrom(
      {3, steps}, transport, trace, [this] { return Leftovers(); },
      [this]() -> std::string {
        FileInfo info;
        info.id = "before";
        return (HandOver(UndoCheckoutDocument(Begin(NewConnection()), ParseCheckoutId(temporaryId)), info)
                    ? "true "
                    : "false ") +
               info.id;
      });
}

TEST_F(CheckoutFailures, OfAnUndoInAWorkspaceOfTheUsers) {
  const std::string undoLine = WorkspaceLine("W12/undocheckout");
  const Ending withoutNonce{"true D1001|W12", {}, {Documents("D1001")}, {undoLine}};
  Walk({{nonceLine, nonce, withoutNonce, withoutNonce},
        {undoLine,
         Documents("D1001"),
         {"false before", {notUndone, Error("Failed to undo checkout of D2 from temporary workspace W12\n")}},
         {"true D1001|W12", {}, {checkedIn}, {DocumentLine("D2")}}}},
       UndoCheckoutDocument, "D2|W12");
}

// What follows when a temporary checkout is renewed: the undo, the checkout and the state.
struct Renewal {
  std::vector<Answer> answers{
      noList, nonce, done, checkedIn, checkedIn, Workspace("W78"), Documents("D1005"), checkedOut};
  Lines lines{holdLine,
              nonceLine,
              WorkspaceLine("W77/delete"),
              DocumentLine("D1001"),
              DocumentLine("D1001"),
              createLine,
              WorkspaceLine("W78/checkout"),
              DocumentLine("D1001")};
};
const std::string renewed = "true D1001|W78|D1005|T";
const TraceLine createdAnew = Miss("Created temporary workspace W78\n");

Ending Renew(Traces before) {
  before.push_back(createdAnew);
  return {renewed, before, Renewal().answers, Renewal().lines};
}

TEST_F(CheckoutFailures, OfAVerificationOfACheckoutThatStands) {
  Ending withoutDocument = Renew({});
  withoutDocument.answers.insert(withoutDocument.answers.begin(), noList);
  withoutDocument.lines.insert(withoutDocument.lines.begin(), Get(documentsPath + "//versions?contextId="));
  const Traces notLocated{Error(std::string("Failed to locate document ") + temporaryId + " on server\n")};
  const std::string success = std::string("true ") + temporaryId;
  WalkVerify({{DocumentLine("D1002"), checkedOut, Renew({}), withoutDocument},
              {Get(documentsPath + "/search?number=0042&scope=C5"), Documents("D1001"),
               Renew({Error("Failed to find doc number 0042 with response: {text}")}), Renew({})},
              {holdLine, Documents("D1002"), Renew({Error("Failed to get documents for workspace W77\n")}),
               Renew({})},
              {DocumentLine("D1001"),
               checkedOut,
               {"false", notLocated},
               {success, {}, {checkedOut}, {DocumentLine("D1001")}}},
              {DocumentLine("D1001"), checkedOut, {"false", notLocated}, {success, {}}}});
}

// What follows the request of a renewal with this number.
Ending RestOfRenewal(std::size_t request, Traces traces) {
  Ending rest = Renew(std::move(traces));
  rest.answers.erase(rest.answers.begin(), rest.answers.begin() + static_cast<std::ptrdiff_t>(request + 1));
  rest.lines.erase(rest.lines.begin(), rest.lines.begin() + static_cast<std::ptrdiff_t>(request + 1));
  return rest;
}

TEST_F(CheckoutFailures, OfAVerificationThatRenewsACheckout) {
  const Ending none{"not walked", {}};
  Ending withoutNonce = RestOfRenewal(1, {});
  withoutNonce.answers.insert(withoutNonce.answers.begin() + 3, nonce);
  withoutNonce.lines.insert(withoutNonce.lines.begin() + 3, nonceLine);
  const Ending lost{"false",
                    {Error("Failed to find document id \n"), Error("Failed to locate document  on server\n")},
                    {missing, missing},
                    {DocumentLine(""), DocumentLine("")}};
  Ending notRead = lost;
  notRead.traces.insert(notRead.traces.begin(), Error("Failed to locate document D1001 on server\n"));
  // The document as the undo left it.
  const auto undone = [](const Traces& traces, std::vector<Answer> answers, Lines lines) {
    answers.insert(answers.end(), {checkedIn, noList});
    lines.insert(lines.end(), {DocumentLine("D1001"), versionsLine});
    return Ending{"true D1001", traces, answers, lines};
  };
  const Traces noWorkspace{Error("Failed to create temporary workspace\n")};
  const Traces notOut{createdAnew,
                      Error("Failed to checkout document D1001 to workspace W78 with error {error}\n")};
  Traces outUnread = notOut;
  outUnread.push_back(Error("Failed to locate document  on server\n"));
  const std::vector<Step> steps{
      {DocumentLine("D1002"), missing, none, none},
      {holdLine, noList, RestOfRenewal(0, {Error("Failed to get documents for workspace W77\n")}),
       RestOfRenewal(0, {})},
      {nonceLine, nonce, withoutNonce, withoutNonce},
      {WorkspaceLine("W77/delete"), done, RestOfRenewal(2, {notDeleted}), RestOfRenewal(2, {})},
      {DocumentLine("D1001"), checkedIn, notRead, lost},
      {DocumentLine("D1001"), checkedIn, undone({Error("Failed to find document id D1001\n")}, {}, {}),
       RestOfRenewal(4, {})},
      {createLine, Workspace("W78"), undone(noWorkspace, {noList}, {listLine}), undone(noWorkspace, {}, {})},
      {WorkspaceLine("W78/checkout"),
       Documents("D1005"),
       undone(notOut, {done}, {WorkspaceLine("W78/delete")}),
       {"false", outUnread, {missing}, {DocumentLine("")}}},
      {DocumentLine("D1001"),
       checkedOut,
       {"false", {createdAnew, Error("Failed to locate document D1001|W78|D1005|T on server\n")}},
       {renewed, {createdAnew}}}};
  WalkFailuresFrom(
      {1, steps}, transport, trace, [this] { return Leftovers(); },
      [this]() -> std::string {
        const auto verified = VerifyCheckout(Begin(NewConnection()), ParseCheckoutId(temporaryId));
        return verified ? "true " + verified->info.id : "false";
      });
}

}  // namespace
}  // namespace vtdirect_test
