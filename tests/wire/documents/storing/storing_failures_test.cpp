#include "base/result.h"
#include "base/settings.h"
#include "documents/storing/document_storing.h"
#include "documents/storing/text_document.h"
#include "tests/wire/documents/failing_steps.h"
#include "tests/wire/documents/storing/storing_fixture.h"

// Every request of every storing flow fails in every way.
namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;

const Answer nonce{200, nonceAnswer};
const Answer stored{200, storedAnswer};
const Answer noContent{204, ""};

class StoringFailures : public StoringTest {
 protected:
  StoringFailures() { SetAuthAppVersionToRegister("300"); }

  // The steps that all flows have between their document and their last request.
  static std::vector<Step> UploadSteps(const std::string& lastLine, const Traces& end,
                                       const std::string& success) {
    const Ending withoutNonce{success,
                              {},
                              {{200, Ticket(1)}, nonce, {200, Receipts(1)}, noContent, stored},
                              {Post(factoryPath), Get(noncePath), uploadLine, Post(registerPath), lastLine}};
    const Ending noTicket = Failed("Failed to update document with error {error}\n", end);
    const Ending noUpload = Failed("Failed to upload document with error {error}\n", end);
    const Ending unregistered{success, {}, {stored}, {lastLine}};
    const Ending notPosted = Failed("Failed to update document with error {error}\n", end);
    return {{Get(noncePath), nonce, withoutNonce, withoutNonce},
            {Post(factoryPath), {200, Ticket(1)}, noTicket, noTicket},
            {uploadLine, {200, Receipts(1)}, noUpload, noUpload},
            {Post(registerPath), noContent, unregistered, unregistered},
            {lastLine, stored, notPosted, notPosted}};
  }
  static Ending Failed(const std::string& text, Traces end) {
    end.insert(end.begin(), Error(text));
    return {"2 before", end};
  }
  // A flow that reads its document first. What is no JSON counts as a document that says nothing of itself.
  static std::vector<Step> WithDocument(const std::string& id, std::vector<Step> steps,
                                        const std::string& success) {
    const std::string line = Get(documentsPath + "/" + id);
    Ending unreadable{success, {}};
    for (const Step& step : steps) {
      unreadable.answers.push_back(step.answer);
      unreadable.lines.push_back(step.line);
    }
    const Ending refused{"2 before", {Error("Failed to locate document " + id + " on server\n")}};
    steps.insert(steps.begin(), {line, {200, R"({"id":")" + id + R"("})"}, refused, unreadable});
    return steps;
  }
  void Walk(const std::vector<Step>& steps, const std::function<Status(FileInfo&)>& flow) {
    WalkFailures(
        transport, trace, steps, [this] { return Leftovers(); },
        [&] {
          FileInfo result;
          result.id = "before";
          const Status status = flow(result);
          return std::to_string(status) + " " + result.id;
        });
  }
};

TEST_F(StoringFailures, OfACreation) {
  const Traces end{Error("Failed to create document (" + mainPath + ", , ) on server ctx C5, folder F55\n")};
  Walk(UploadSteps(Post(documentsPath), end, "0 D1002"), [this](FileInfo& result) {
    return HandOver(CreateDocument(Begin(NewConnection()), {"a", "C5", "F55", ""}, params, {}), result);
  });
}

TEST_F(StoringFailures, OfACreationInAWorkspace) {
  const Traces end{
      Error("Failed to create document (" + mainPath + ", , ) on server ctx C5, folder , workspace W12\n")};
  Walk(UploadSteps(Post(workspacesPath + "/W12/store"), end, "0 D1002|W12"), [this](FileInfo& result) {
    return HandOver(CreateDocumentInWorkspace(Begin(NewConnection()), {"a", "C5", "", "W12"}, params, {}),
                    result);
  });
}

TEST_F(StoringFailures, OfAnIteration) {
  const Traces end{Error("Failed to iterate document id D1001 (" + mainPath + ", , )\n")};
  Walk(WithDocument("D1001", UploadSteps(Post(documentsPath), end, "0 D1002"), "0 D1002"),
       [this](FileInfo& result) {
         return HandOver(IterateDocument(Begin(NewConnection()), "D1001", params, {}), result);
       });
}

TEST_F(StoringFailures, OfAStore) {
  const Traces end{Error("Failed to store document id D1002 (" + mainPath + ", , )\n")};
  Walk(WithDocument("D1002", UploadSteps(Post(workspacesPath + "/W77/store"), end, "0 before"), "0 before"),
       [this](FileInfo&) {
         return StoreDocument(Begin(NewConnection()), ParseCheckoutId("D1001|W77|D1002|T"), params, {});
       });
}

TEST_F(StoringFailures, OfAGeneralDocumentsIteration) {
  params.kind = DocumentKind::General;
  const Traces end{Error("Failed to iterate document id D1001 (" + mainPath + ", , )\n")};
  Walk(WithDocument("D1001", UploadSteps(Post(documentsPath), end, "0 D1002"), "0 D1002"),
       [this](FileInfo& result) {
         return HandOver(IterateDocument(Begin(NewConnection()), "D1001", params, {}), result);
       });
}

// Without a registration between upload and end.
TEST_F(StoringFailures, OfAUgcDocumentsCreation) {
  params.kind = DocumentKind::Ugc;
  const Traces end{Error("Failed to create document (" + mainPath + ", , ) on server ctx C5, folder F55\n")};
  std::vector<Step> steps = UploadSteps(Post(documentsPath), end, "0 D1002");
  steps.erase(steps.begin() + 3);
  for (Ending* ending : {&steps[0].refused, &steps[0].unreadable}) {
    ending->answers.erase(ending->answers.begin() + 3);
    ending->lines.erase(ending->lines.begin() + 3);
  }
  Walk(steps, [this](FileInfo& result) {
    return HandOver(CreateDocument(Begin(NewConnection()), {"a", "C5", "F55", ""}, params, {}), result);
  });
}

// The status alone decides at the end; a failed transfer is all that the caller learns before.
TEST_F(StoringFailures, OfATextDocument) {
  const TraceLine refusedPost = Error("Failed to update document with error {error}\n");
  const Ending noUpload{"false ", {Error("Failed to upload document with error {error}\n")}};
  const Ending withoutNonce{"true D1002",
                            {},
                            {{200, Ticket(1)}, nonce, {200, Receipts(1)}, stored},
                            {Post(factoryPath), Get(noncePath), uploadLine, Post(documentsPath)}};
  const Ending noTicket{"false ", {refusedPost}};
  WalkFailures(
      transport, trace,
      {{Get(noncePath), nonce, withoutNonce, withoutNonce},
       {Post(factoryPath), {200, Ticket(1)}, noTicket, noTicket},
       {uploadLine, {200, Receipts(1)}, noUpload, noUpload},
       {Post(documentsPath), stored, {"false ", {refusedPost}}, {"true ", {refusedPost}}}},
      [this] { return Leftovers(); },
      [this] {
        DocumentRecord result;
        const NewTextDocument document{"t.xml", "C5", "F55", "no", "de", "XLIFF", "vn.T"};
        const bool succeeded =
            HandOver(UpdateTextDocument(Begin(NewConnection()), document, mainPath, {}), result);
        return (succeeded ? "true " : "false ") + result.id;
      });
}

// A dependency that cannot be read is left out, and nothing tells of it.
TEST_F(StoringFailures, OfADependency) {
  const std::map<std::string, std::string> map{{"bolt", "D7"}};
  params.dependencies = &map;
  const auto steps = UploadSteps(Post(documentsPath), {}, "0 D1002");
  Ending goesOn{"0 D1002", {}};
  for (const Step& step : steps) {
    goesOn.answers.push_back(step.answer);
    goesOn.lines.push_back(step.line);
  }
  Walk({{Get(documentsPath + "/D7"), {200, "{}"}, goesOn, goesOn}}, [this](FileInfo& result) {
    return HandOver(CreateDocument(Begin(NewConnection()), {"a", "C5", "F55", ""}, params, {}), result);
  });
}

}  // namespace
}  // namespace vtdirect_test
