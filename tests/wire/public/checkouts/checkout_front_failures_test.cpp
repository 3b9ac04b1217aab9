#include "tests/wire/public/checkouts/front_walk.h"

// Every request of every exported checkout operation, and of the questions about one, fails in every way.
namespace vtdirect_test {
namespace {

using namespace VtDirectManager;

const std::string uidStem = "korvufenloom-vt://plm.example/vt/?id=";
const std::string temporaryId = "D1001|W77|D1002|T";
const std::string temporaryUid = uidStem + temporaryId;

const Answer nonce{200, nonceAnswer};
const Answer noList{200, "[]"};
const Answer done{200, ""};
const Answer missing{404, ""};
// In the context C5, with the flags of its state.
Answer Document(const std::string& id, const std::string& state = {}) {
  return {200, R"({"id":")" + id +
                   R"(","revision":"B","iteration":"3","context":{"id":"C5"},)"
                   R"("epmMaster":{"number":"0042","cadName":"pump.fnl"},"pdmIterationState":{)" +
                   state + "}}"};
}
Answer List(const Answer& document) {
  return {200, "[" + document.body + "]"};
}
const std::string byUser = R"("isCheckout":true,"isCheckoutByYou":true,"checkoutByUser":"ada")";

const std::string nonceLine = Get(noncePath);
const std::string createLine = Post(workspacesPath);
const std::string holdLine = Get(workspacesPath + "/W77/documents");
const std::string namelessVersionsLine = Get(documentsPath + "//versions?contextId=");

const TraceLine created = Miss("Created temporary workspace W77\n");
const TraceLine notDeleted = Error("Failed to delete temporary workspace W77\n");

class CheckoutFrontFailures : public FrontWalkTest {
 protected:
  // The requests after the reading of the document, as they go without a failure.
  static Ending Rest(const std::vector<Step>& steps, std::size_t from, const std::string& result,
                     const Traces& traces) {
    Ending ending{result, traces};
    for (std::size_t index = from; index < steps.size(); ++index) {
      ending.answers.push_back(steps[index].answer);
      ending.lines.push_back(steps[index].line);
    }
    return ending;
  }
};

// A checkout of D1001 in a temporary workspace, from the reading of the document on.
std::vector<Step> CheckoutSteps(const std::string& address, const Traces& before) {
  const Answer copy = List(Document("D1002"));
  const Answer workspace{200, R"({"id":"W77"})"};
  const std::string success = temporaryUid + "&file=/pump.fnl";
  const std::string checkoutLine = WorkspaceLine("W77/checkout");
  const TraceLine failed = Error("Failed to checkout file " + address);
  const TraceLine refused = Error("Failed to checkout document D1001 to workspace W77 with error {error}\n");
  const TraceLine noWorkspace = Error("Failed to create temporary workspace\n");
  const auto traced = [&](const Traces& traces) { return Join(before, traces); };
  const Ending withoutNonce{
      success, traced({created}), {workspace, nonce, copy}, {createLine, nonceLine, checkoutLine}};
  return {{DocumentLine("D1001"),
           Document("D1001"),
           {"", traced({Error("Failed to find document id D1001\n"), failed})},
           {success, traced({created}), {nonce, workspace, copy}, {nonceLine, createLine, checkoutLine}}},
          {nonceLine, nonce, withoutNonce, withoutNonce},
          {createLine,
           workspace,
           {"", traced({noWorkspace, failed}), {noList}, {Get(workspacesPath + "?contextId=C5")}},
           {"", traced({noWorkspace, failed})}},
          {checkoutLine,
           copy,
           {"", traced({created, refused, failed}), {done}, {WorkspaceLine("W77/delete")}},
           // The document is checked out, and nobody knows the copy.
           {uidStem, traced({created, refused})}}};
}

TEST_F(CheckoutFrontFailures, OfACheckout) {
  const std::string uid = uidStem + "D1001";
  Walk(CheckoutSteps(uid, {}), [&] { return Checkout(uid.c_str()); });
}

TEST_F(CheckoutFrontFailures, OfACheckoutByPath) {
  const std::vector<Step> steps = CheckoutSteps(searchedPath, MissingServices());
  const std::vector<Step> search = SearchSteps({"D1001",
                                                Rest(steps, 0, temporaryUid + "&file=/pump.fnl", {created}),
                                                {"", {Error("Failed to find file " + searchedPath)}}});
  Walk(Join(search, steps), [] { return Checkout(searchedPath.c_str()); });
}

TEST_F(CheckoutFrontFailures, OfACheckin) {
  const std::string checkinLine = WorkspaceLine("W77/checkin");
  const std::string deleteLine = WorkspaceLine("W77/delete");
  const Answer document = List(Document("D1003"));
  const std::string success = uidStem + "D1003&file=/pump.fnl";
  const TraceLine checkedIn = Miss("Checked-in document id D1002 on workspace W77 giving id D1003\n");
  const TraceLine checkedInUnknown = Miss("Checked-in document id D1002 on workspace W77 giving id \n");
  const Ending withoutNonce{
      success, {checkedIn}, {document, nonce, done}, {checkinLine, nonceLine, deleteLine}};
  Walk({{nonceLine, nonce, withoutNonce, withoutNonce},
        {checkinLine,
         document,
         {"",
          {Error("Failed to check-in document with error {error}\n"),
           Error("Failed to check-in document id D1002 on workspace W77\n"),
           Error("Failed to check-in file " + temporaryUid)}},
         {temporaryUid + "&file=/pump.fnl",
          {checkedInUnknown},
          {done, Document("D1001")},
          {deleteLine, DocumentLine("D1001")}}},
        {deleteLine, done, {success, {checkedIn, notDeleted}}, {success, {checkedIn}}}},
       [] { return Checkin(temporaryUid.c_str()); });
  const Ending none{"not walked", {}};
  Walk(
      {{nonceLine, nonce, none, none},
       {checkinLine, noList, none, none},
       {deleteLine, done, none, none},
       {DocumentLine("D1001"),
        Document("D1001"),
        {"", {checkedInUnknown, NotLocated(temporaryId)}},
        {temporaryUid, {checkedInUnknown}}}},
      [] { return Checkin(temporaryUid.c_str()); }, 3);
}

TEST_F(CheckoutFrontFailures, OfAnUndo) {
  const std::string undoLine = WorkspaceLine("W77/undocheckout");
  const std::string deleteLine = WorkspaceLine("W77/delete");
  const Answer document = List(Document("D1001"));
  const std::string success = uidStem + "D1001&file=/pump.fnl";
  Ending skipped{
      success, {}, {nonce, done, Document("D1001")}, {nonceLine, deleteLine, DocumentLine("D1001")}};
  Ending notListed = skipped;
  notListed.traces = {Error("Failed to get documents for workspace W77\n")};
  const Ending withoutNonce{success, {}, {document, nonce, done}, {undoLine, nonceLine, deleteLine}};
  const Ending unreadable{success, {}, {done, Document("D1001")}, {deleteLine, DocumentLine("D1001")}};
  Ending refused = unreadable;
  refused.traces = {Error("Failed to undo check-out of document with error {error}\n"),
                    Error("Failed to undo checkout of D1002 from temporary workspace W77\n")};
  Walk({{holdLine, List(Document("D1002")), notListed, skipped},
        {nonceLine, nonce, withoutNonce, withoutNonce},
        {undoLine, document, refused, unreadable},
        {deleteLine, done, {success, {notDeleted}}, {success, {}}}},
       [] { return UndoCheckout(temporaryUid.c_str()); });
  const Ending none{"not walked", {}};
  // After an answer without a document it is read, and without an id again under the text that went in.
  Walk(
      {{holdLine, noList, none, none},
       {nonceLine, nonce, none, none},
       {deleteLine, done, none, none},
       {DocumentLine("D1001"),
        {200, "{}"},
        {"", {NotLocated("D1001"), Error("Failed to undo checkout of file " + temporaryUid)}},
        {temporaryUid + "&file=/pump.fnl", {}, {Document("D1001")}, {DocumentLine("D1001")}}},
       {DocumentLine("D1001"), Document("D1001"), {"", {NotLocated(temporaryId)}}, {temporaryUid, {}}}},
      [] { return UndoCheckout(temporaryUid.c_str()); }, 3);
}

std::string StatusOf(const std::string& uid) {
  std::string user = "nobody";
  const VtCheckoutStatus status = GetCheckoutStatus(uid.c_str(), &user);
  return std::to_string(static_cast<int>(status)) + " " + user;
}
std::string Text(VtCheckoutStatus status, const std::string& rest) {
  return std::to_string(static_cast<int>(status)) + " " + rest;
}

TEST_F(CheckoutFrontFailures, OfAStatus) {
  const std::string uid = uidStem + "D1001";
  const Ending failed{Text(CheckoutStatusFailed, "nobody"), {NotLocated("D1001")}};
  // Nothing tells a copy from its original then.
  const Ending unrecorded{Text(CheckoutByUserUnrecorded, "ada"), {}};
  Ending notFound = unrecorded;
  notFound.traces = {Error("Failed to find doc number 0042 with response: {text}")};
  const Ending unreadable{Text(CheckoutNotPossible, "nobody"), {}, {noList}, {namelessVersionsLine}};
  Walk({{DocumentLine("D1001"), Document("D1001", byUser), failed, unreadable},
        {Get(documentsPath + "/search?number=0042&scope=C5"), List(Document("D1")), notFound, unrecorded}},
       [&] { return StatusOf(uid); });
  const Ending none{Text(CheckoutNone, "nobody"), {}};
  Walk({{DocumentLine("D1001"), Document("D1001", R"("isLatest":true)"), failed, unreadable},
        {DocumentLine("D1001") + "/versions?contextId=C5", noList, none, none}},
       [&] { return StatusOf(uid); });
}

// By path, every failure of the search is a line for the curious only.
TEST_F(CheckoutFrontFailures, OfAStatusByPath) {
  const Step state{DocumentLine("D1001") + "/versions?contextId=C5",
                   noList,
                   {Text(CheckoutNone, "nobody"), MissingServices()},
                   {Text(CheckoutNone, "nobody"), MissingServices()}};
  const Step document{
      DocumentLine("D1001"),
      Document("D1001", R"("isLatest":true)"),
      {Text(CheckoutStatusFailed, "nobody"), Join(MissingServices(), {NotLocated("D1001")})},
      {Text(CheckoutNotPossible, "nobody"), MissingServices(), {noList}, {namelessVersionsLine}}};
  const std::vector<Step> search =
      SearchSteps({"D1001",
                   Rest({document, state}, 0, Text(CheckoutNone, "nobody"), {}),
                   {Text(CheckoutStatusFailed, "nobody"), {Miss("Failed to find file " + searchedPath)}}});
  Walk(Join(search, {document, state}), [] { return StatusOf(searchedPath); });
}

}  // namespace
}  // namespace vtdirect_test
