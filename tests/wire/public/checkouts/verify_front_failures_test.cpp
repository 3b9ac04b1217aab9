#include "tests/wire/public/checkouts/front_walk.h"

// Every request of an exported verification, and of the pages of a document, fails in every way.
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
Answer Document(const std::string& id, const std::string& state) {
  return {200, R"({"id":")" + id +
                   R"(","revision":"B","iteration":"3","context":{"id":"C5"},)"
                   R"("epmMaster":{"number":"0042","cadName":"pump.fnl"},"pdmIterationState":{)" +
                   state + "}}"};
}
Answer CheckedOut(const std::string& id) {
  return Document(id, R"("isCheckout":true,"isCheckoutByYou":true)");
}
Answer CheckedIn(const std::string& id) {
  return Document(id, R"("isLatest":true)");
}
Answer List(const Answer& document) {
  return {200, "[" + document.body + "]"};
}
Answer Workspace(const std::string& id) {
  return {200, R"({"id":")" + id + "\"}"};
}

const std::string searchLine = Get(documentsPath + "/search?number=0042&scope=C5");
const std::string holdLine = Get(workspacesPath + "/W77/documents");
const std::string namelessVersionsLine = Get(documentsPath + "//versions?contextId=");
const TraceLine createdAnew = Miss("Created temporary workspace W78\n");
const TraceLine noDocuments = Error("Failed to get documents for workspace W77\n");

TraceLine NotConfirmed(const std::string& reason = {}) {
  return Error("Failed to confirm checkout of " + temporaryUid + reason + "\n");
}
std::string Text(VtCheckoutStatus status, const std::string& uid) {
  return std::to_string(static_cast<int>(status)) + " " + uid;
}
const std::string lost = Text(CheckoutStatusFailed, "");

class VerifyFrontFailures : public FrontWalkTest {
 protected:
  static std::string Verify(const std::string& address) {
    std::string uid = "before";
    const VtCheckoutStatus status = VerifyCheckout(address.c_str(), uid);
    return Text(status, uid);
  }
};

struct Exchange {
  std::string line;
  Answer answer;
};
// What renews a temporary checkout whose copy is not in its workspace any more.
const std::vector<Exchange> renewal{{holdLine, noList},
                                    {Get(noncePath), nonce},
                                    {Post(workspacesPath + "/W77/delete"), done},
                                    {DocumentLine("D1001"), CheckedIn("D1001")},
                                    {DocumentLine("D1001"), CheckedIn("D1001")},
                                    {Post(workspacesPath), Workspace("W78")},
                                    {Post(workspacesPath + "/W78/checkout"), List(CheckedOut("D1005"))},
                                    {DocumentLine("D1001"), CheckedOut("D1001")}};
const std::string renewed = Text(CheckoutInTempWorkspace, uidStem + "D1001|W78|D1005|T&file=/pump.fnl");

Ending RestOfRenewal(std::size_t from, const Traces& before) {
  Ending ending{renewed, Join(before, {createdAnew})};
  for (std::size_t index = from; index < renewal.size(); ++index) {
    ending.lines.push_back(renewal[index].line);
    ending.answers.push_back(renewal[index].answer);
  }
  return ending;
}
Ending Renew(const Traces& before) {
  return RestOfRenewal(0, before);
}

TEST_F(VerifyFrontFailures, OfACheckoutThatStands) {
  const Traces notLocated{NotLocated(temporaryId), NotConfirmed()};
  Ending withoutDocument = Renew({});
  withoutDocument.answers.insert(withoutDocument.answers.begin(), noList);
  withoutDocument.lines.insert(withoutDocument.lines.begin(), namelessVersionsLine);
  Walk({{DocumentLine("D1002"), CheckedOut("D1002"), Renew({}), withoutDocument},
        {searchLine, List(CheckedOut("D1001")),
         Renew({Error("Failed to find doc number 0042 with response: {text}")}), Renew({})},
        {holdLine, List(CheckedOut("D1002")), Renew({noDocuments}), Renew({})},
        {DocumentLine("D1001"),
         CheckedOut("D1001"),
         {lost, notLocated},
         {Text(CheckoutInTempWorkspace, temporaryUid), {}, {CheckedOut("D1001")}, {DocumentLine("D1001")}}},
        // A document that says nothing of its state is not checked out and not the latest.
        {DocumentLine("D1001"),
         CheckedOut("D1001"),
         {lost, notLocated},
         {Text(CheckoutNotPossible, temporaryUid + "&file=/pump.fnl"), {NotConfirmed()}}}},
       [] { return Verify(temporaryUid); });
}

TEST_F(VerifyFrontFailures, OfACheckoutThatIsRenewed) {
  const Ending none{"not walked", {}};
  Ending withoutNonce = RestOfRenewal(2, {});
  withoutNonce.answers.insert(withoutNonce.answers.begin() + 3, nonce);
  withoutNonce.lines.insert(withoutNonce.lines.begin() + 3, Get(noncePath));
  const Ending gone{lost,
                    {Error("Failed to find document id \n"), NotLocated(""), NotConfirmed()},
                    {missing, missing},
                    {DocumentLine(""), DocumentLine("")}};
  Ending notRead = gone;
  notRead.traces.insert(notRead.traces.begin(), NotLocated("D1001"));
  // What could not be checked out again is told of as the undo left it.
  const auto undone = [](const Traces& traces, std::vector<Answer> answers, Lines lines) {
    answers.insert(answers.end(), {CheckedIn("D1001"), noList});
    lines.insert(lines.end(), {DocumentLine("D1001"), DocumentLine("D1001") + "/versions?contextId=C5"});
    return Ending{Text(CheckoutNone, uidStem + "D1001&file=/pump.fnl"),
                  Join(traces, {NotConfirmed(" : file not checked out")}), answers, lines};
  };
  const TraceLine noWorkspace = Error("Failed to create temporary workspace\n");
  const Traces notOut{createdAnew,
                      Error("Failed to checkout document D1001 to workspace W78 with error {error}\n")};
  std::vector<Step> steps{{DocumentLine("D1002"), missing, none, none}};
  const auto add = [&](const Ending& refused, const Ending& unreadable) {
    const Exchange& exchange = renewal[steps.size() - 1];
    steps.push_back({exchange.line, exchange.answer, refused, unreadable});
  };
  add(RestOfRenewal(1, {noDocuments}), RestOfRenewal(1, {}));
  add(withoutNonce, withoutNonce);
  add(RestOfRenewal(3, {Error("Failed to delete temporary workspace W77\n")}), RestOfRenewal(3, {}));
  add(notRead, gone);
  add(undone({Error("Failed to find document id D1001\n")}, {}, {}), RestOfRenewal(5, {}));
  add(undone({noWorkspace}, {noList}, {Get(workspacesPath + "?contextId=C5")}),
      undone({noWorkspace}, {}, {}));
  add(undone(notOut, {done}, {Post(workspacesPath + "/W78/delete")}),
      {lost, Join(notOut, {NotLocated(""), NotConfirmed()}), {missing}, {DocumentLine("")}});
  add({lost, {createdAnew, NotLocated("D1001|W78|D1005|T"), NotConfirmed()}},
      {Text(CheckoutNotPossible, uidStem + "D1001|W78|D1005|T&file=/pump.fnl"),
       {createdAnew, NotConfirmed()}});
  Walk(
      steps, [] { return Verify(temporaryUid); }, 1);
}

TEST_F(VerifyFrontFailures, OfThePageThatEditsAttributes) {
  const std::string page =
      "https://plm.example/vt/servlet/VantryAuthGW/vn.enterprise.URLProcessor/URLTemplateAction?u8"
      "&action=MULTIEDITATTR&oid=D1001&wsName=mine&wscontext=1";
  const Answer workspaces{200, R"([{"id":"W77","name":"mine"}])"};
  const TraceLine notLocated = Error("Failed to locate " + temporaryId + " on server\n");
  const Ending noWorkspace{"",
                           {Error("Failed to locate workspace W77 in context C5 on server\n"), notLocated}};
  Walk({{DocumentLine("D1001"),
         CheckedOut("D1001"),
         {"", {notLocated}},
         {page, {}, {workspaces}, {Get(workspacesPath + "?contextId=")}}},
        {Get(workspacesPath + "?contextId=C5"), workspaces, noWorkspace, noWorkspace}},
       [] { return VantryEditAttributesURL(temporaryUid.c_str()); });
}

TEST_F(VerifyFrontFailures, OfThePageOfADocumentByPath) {
  const Ending found{"yes https://plm.example/vt/app/#zvk1/tcomp/infoPage?oid=D1", {}};
  const Ending nothing{"no before", {Error("Failed to find file " + searchedPath)}};
  Walk(SearchSteps({"D1", found, nothing}), [] {
    std::string url = "before";
    const bool known = BrowserInfo(searchedPath.c_str(), url);
    return (known ? "yes " : "no ") + url;
  });
}

// The name alone is asked for, and goes missing alone.
TEST_F(VerifyFrontFailures, OfTheNameOfAnOlderCheckout) {
  const std::string uid = uidStem + "D1";
  const std::string converted = uidStem + "D1|W2|D3|T";
  Walk({{DocumentLine("D1"),
         CheckedIn("D1"),
         {converted, {NotLocated("D1"), Error("Failed to find file " + uid)}},
         {converted, {}}}},
       [&] { return ConvertLegacyCheckout(uid.c_str(), "W2|D3"); });
  transport.ClearRequests();
  trace.Clear();
  transport.Then(CheckedIn("D1"));
  EXPECT_EQ(ConvertLegacyCheckout(uid.c_str(), "W2|D3"), converted + "&file=/pump.fnl");
}

// What the text says suffices, however dead the server is.
TEST_F(VerifyFrontFailures, OfNoRequestAtAll) {
  std::string url;
  EXPECT_TRUE(BrowserInfo(temporaryUid.c_str(), url));
  EXPECT_TRUE(IsCheckoutSupported(temporaryUid.c_str()));
  EXPECT_TRUE(IsCheckoutSupported(searchedPath.c_str()));
  EXPECT_EQ(ConvertLegacyCheckout((uidStem + "D1&file=/a").c_str(), "W2|D3"), uidStem + "D1|W2|D3|T&file=/a");
  EXPECT_THAT(transport.lines(), testing::IsEmpty());
  EXPECT_THAT(trace.lines(), testing::IsEmpty());
  EXPECT_FALSE(IsCheckoutSupported("nowhere"));
  EXPECT_EQ(trace.lines(), Traces{Miss("Failed to connect to server path nowhere\n")});
}

}  // namespace
}  // namespace vtdirect_test
