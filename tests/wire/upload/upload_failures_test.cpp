#include "tests/wire/storing/failing_steps.h"
#include "tests/wire/upload/upload_front_fixture.h"

// Every request of every exported upload fails in every way.
namespace vtdirect_test {
namespace {

using namespace VtDirectManager;

const std::string temporaryUid = uidStem + "D1001|W77|D1002|T";
const std::string stored = "true 0 " + storedUid + ";";

const Answer nonce{200, nonceAnswer};
const Answer document{200, R"({"id":"D1"})"};
const Answer storedAnswer{200, storedDocument};
const Answer schema{200, "<Schema/>"};
const Answer noList{200, "[]"};

const TraceLine uploaded = Information("Uploaded document id D9 (A.2)\n");
const TraceLine refusedPost = Error("Failed to update document with error {error}\n");
const TraceLine refusedUpload = Error("Failed to upload document with error {error}\n");
TraceLine NoSchema(const std::string& service) {
  return {0, "CmsInterface",
          "Failed to get schema info servlet/odata/" + service + "/$metadata from server " + plmUrl};
}

// A step that the flow takes; its failures are told of apart.
struct Request {
  std::string line;
  Answer answer;
};
using Flow = std::vector<Request>;

class UploadFailures : public UploadFrontTest {
 protected:
  // What a flow does from one of its requests on.
  static Ending GoesOn(const Flow& flow, std::size_t from, const std::string& result, const Traces& traces) {
    Ending ending{result, traces};
    for (std::size_t index = from; index < flow.size(); ++index) {
      ending.answers.push_back(flow[index].answer);
      ending.lines.push_back(flow[index].line);
    }
    return ending;
  }
  // The nonce is asked for again before each request that carries it.
  static Ending GoesOnWithoutNonce(const Flow& flow, std::size_t nonceAt, const std::string& result,
                                   const Traces& traces) {
    Ending ending = GoesOn(flow, nonceAt + 1, result, traces);
    ending.answers.insert(ending.answers.begin() + 1, nonce);
    ending.lines.insert(ending.lines.begin() + 1, Get(noncePath));
    return ending;
  }
  void Walk(const std::vector<Step>& steps, const std::string& address, std::size_t first = 0) {
    const auto leftovers = [this] {
      Lines names = directory.Entries();
      std::erase(names, "local");
      return names;
    };
    WalkFailuresFrom(first, transport, trace, steps, leftovers, [&] {
      // A server object that remembers nothing.
      UpdateServerList({});
      UpdateServerList({{"plm", plmUrl}});
      (void)ShouldInvalidateCache(true);
      statuses.clear();
      const bool succeeded =
          Upload(address.c_str(), mainPath.c_str(), "", noLinks, Status(), {}, nullptr, false);
      // A host is to read its listings again after a success, and after no failure.
      EXPECT_EQ(ShouldInvalidateCache(false), succeeded);
      std::string result = succeeded ? "true " : "false ";
      for (const auto& status : statuses) result += status + ";";
      return result;
    });
  }
  // A server that cannot be probed in one way is probed in the other. A schema that is broken in its last
  // piece counts as read, so only a refusal leads here.
  static Ending NotProbed() {
    return {"false 1 (null);",
            {NoSchema("DynamicDocMgmt"), Error("Failed to connect to server path https://plm.example/vt/\n")},
            {{500, "boom"}},
            {Get("servlet/rest/v1/contexts")}};
  }
  [[nodiscard]] Traces AfterStoring(Traces traces) const {
    traces.insert(traces.begin(), Storing());
    return traces;
  }
};

TEST_F(UploadFailures, OfAnIteration) {
  const std::string versionsLine = DocumentLine("D1") + "/versions?contextId=";
  const Flow flow{{probeLine, schema},
                  {DocumentLine("D1"), document},
                  {versionsLine, noList},
                  {DocumentLine("D1"), document},
                  {Get(noncePath), nonce},
                  {Post(factoryPath), {200, Ticket(1)}},
                  {uploadLine, {200, Receipts(1)}},
                  {Post(documentsPath), storedAnswer}};
  const Traces success = AfterStoring({uploaded});
  const TraceLine notFound = Error("Failed to locate document D1 on server\n");
  const TraceLine notIterated = Error("Failed to iterate document id D1 (" + mainPath + ", , )\n");
  const auto failed = [&](const TraceLine& line) {
    return Ending{"false 8 (null);", AfterStoring({line, notIterated})};
  };
  Ending stateUnknown = GoesOn(flow, 3, stored, success);
  stateUnknown.traces.insert(stateUnknown.traces.begin(), notFound);
  Ending stateUnreadable = GoesOn(flow, 3, stored, success);
  stateUnreadable.answers.insert(stateUnreadable.answers.begin(), noList);
  stateUnreadable.lines.insert(stateUnreadable.lines.begin(), Get(documentsPath + "//versions?contextId="));
  const Ending withoutVersions = GoesOn(flow, 3, stored, success);
  const Ending withoutNonce = GoesOnWithoutNonce(flow, 4, stored, success);
  Walk({{flow[0].line, flow[0].answer, NotProbed(), GoesOn(flow, 1, stored, success)},
        {flow[1].line, flow[1].answer, stateUnknown, stateUnreadable},
        {flow[2].line, flow[2].answer, withoutVersions, withoutVersions},
        {flow[3].line,
         flow[3].answer,
         {"false 8 (null);", AfterStoring({notFound})},
         GoesOn(flow, 4, stored, success)},
        {flow[4].line, flow[4].answer, withoutNonce, withoutNonce},
        {flow[5].line, flow[5].answer, failed(refusedPost), failed(refusedPost)},
        {flow[6].line, flow[6].answer, failed(refusedUpload), failed(refusedUpload)},
        {flow[7].line, flow[7].answer, failed(refusedPost), failed(refusedPost)}},
       uidOfD1);
}

TEST_F(UploadFailures, OfAStoreIntoATemporaryCheckout) {
  const Flow flow{{probeLine, schema},
                  {DocumentLine("D1001"), document},
                  {DocumentLine("D1002"), document},
                  {Get(noncePath), nonce},
                  {Post(factoryPath), {200, Ticket(1)}},
                  {uploadLine, {200, Receipts(1)}},
                  {Post(workspacesPath + "/W77/store"), noList},
                  {Post(workspacesPath + "/W77/checkin"), storedAnswer},
                  {Post(workspacesPath + "/W77/delete"), {200, ""}}};
  const TraceLine checkedIn = Miss("Checked-in document id D1002 on workspace W77 giving id D9\n");
  const Traces success = AfterStoring({checkedIn, uploaded});
  const TraceLine notStored = Error("Failed to store document id D1002 (" + mainPath + ", , )\n");
  const auto failed = [&](const TraceLine& line) {
    return Ending{"false 9 (null);", AfterStoring({line, notStored})};
  };
  // An iteration of the whole id is all that is left to try for a document whose state is not known.
  const Ending stateUnknown{"false 8 (null);",
                            {Error("Failed to locate document D1001|W77|D1002|T on server\n"), Storing(),
                             Error("Failed to locate document D1001|W77|D1002|T on server\n")},
                            {{404, ""}},
                            {DocumentLine("D1001%7CW77%7CD1002%7CT")}};
  const Ending withoutNonce = GoesOnWithoutNonce(flow, 3, stored, success);
  const Ending unknownId =
      GoesOn(flow, 8, "true 0 " + uidStem + ";",
             AfterStoring({Miss("Checked-in document id D1002 on workspace W77 giving id \n"),
                           Information("Uploaded document id  (.)\n")}));
  const Ending notCheckedIn{"false 9 (null);",
                            AfterStoring({Error("Failed to check-in document with error {error}\n"),
                                          Error("Failed to check-in document id D1002 on workspace W77\n")})};
  const Ending notDeleted{
      stored, AfterStoring({checkedIn, Error("Failed to delete temporary workspace W77\n"), uploaded})};
  Walk({{flow[0].line, flow[0].answer, NotProbed(), GoesOn(flow, 1, stored, success)},
        {flow[1].line, flow[1].answer, stateUnknown, GoesOn(flow, 2, stored, success)},
        {flow[2].line,
         flow[2].answer,
         {"false 9 (null);", AfterStoring({Error("Failed to locate document D1002 on server\n")})},
         GoesOn(flow, 3, stored, success)},
        {flow[3].line, flow[3].answer, withoutNonce, withoutNonce},
        {flow[4].line, flow[4].answer, failed(refusedPost), failed(refusedPost)},
        {flow[5].line, flow[5].answer, failed(refusedUpload), failed(refusedUpload)},
        {flow[6].line, flow[6].answer, failed(refusedPost), failed(refusedPost)},
        {flow[7].line, flow[7].answer, notCheckedIn, unknownId},
        {flow[8].line, flow[8].answer, notDeleted, {stored, success}}},
       temporaryUid);
}

// What a creation at a path traces up to its end, when the two searches for its name could be made or not.
class CreationFailures : public UploadFailures {
 protected:
  [[nodiscard]] Traces Searched(bool first, bool second, const std::string& path, const Traces& rest) const {
    Traces traces{NoSchema("DataAdmin"), NoSchema("DynamicDocMgmt"), NoSchema("CADDocumentMgmt")};
    for (const bool made : {first, second}) {
      if (made) traces.push_back(Error("Failed find any document with CADName pump.fnl"));
      traces.push_back(Miss("Failed to find file pump.fnl"));
    }
    traces.push_back(Miss("Failed to find file " + path));
    traces.push_back(Storing(path));
    traces.insert(traces.end(), rest.begin(), rest.end());
    return traces;
  }
};

TEST_F(CreationFailures, AtAPath) {
  setenv("FENLOOM_LANGUAGE", "en", 1);
  const std::string path = "Products/Gadget/Folders/Sub/pump.fnl";
  const std::string objectsLine =
      Get("servlet/rest/objects?typeId=vn.epm.EPMDocument&$select=number&$filter=CADName eq 'pump.fnl'");
  const Flow flow{{probeLine, schema},
                  {Get("servlet/odata/DataAdmin/$metadata"), {404, ""}},
                  {probeLine, {404, ""}},
                  {Get("servlet/odata/CADDocumentMgmt/$metadata"), {404, ""}},
                  {objectsLine, noList},
                  {objectsLine, noList},
                  {Get("servlet/rest/v1/contexts?type=Product"),
                   {200, R"({"items":[{"id":"OR:vn.Product:5","attributes":{"name":"Gadget"}}]})"}},
                  {Get("servlet/rest/v1/contexts/OR%3Avn.Product%3A5/folders"),
                   {200, R"({"items":[{"id":"F1","attributes":{"name":"Sub"}}]})"}},
                  {Get(noncePath), nonce},
                  {Post(factoryPath), {200, Ticket(1)}},
                  {uploadLine, {200, Receipts(1)}},
                  {Post(documentsPath), storedAnswer}};
  const auto searched = [&](bool first, bool second, const Traces& rest) {
    return Searched(first, second, path, rest);
  };
  const Traces success = searched(true, true, {uploaded});
  const TraceLine notCreated =
      Error("Failed to create document (" + mainPath + ", , ) on server ctx OR:vn.Product:5, folder F1\n");
  const auto failed = [&](const TraceLine& line) {
    return Ending{"false 7 (null);", searched(true, true, {line, notCreated})};
  };
  const Ending none{"not walked", {}};
  const Ending noContext{"false 7 (null);",
                         searched(true, true, {Error("Failed to locate context Gadget on server\n")})};
  // The server decides where a document without a folder goes.
  const Ending noFolder = GoesOn(flow, 8, stored, success);
  const Ending withoutNonce = GoesOnWithoutNonce(flow, 8, stored, success);
  std::vector<Step> steps;
  for (std::size_t index = 0; index < 4; ++index) {
    steps.push_back({flow[index].line, flow[index].answer, none, none});
  }
  const std::vector<std::pair<Ending, Ending>> endings{
      {GoesOn(flow, 5, stored, searched(false, true, {uploaded})), GoesOn(flow, 5, stored, success)},
      {GoesOn(flow, 6, stored, searched(true, false, {uploaded})), GoesOn(flow, 6, stored, success)},
      {noContext, noContext},
      {noFolder, noFolder},
      {withoutNonce, withoutNonce},
      {failed(refusedPost), failed(refusedPost)},
      {failed(refusedUpload), failed(refusedUpload)},
      {failed(refusedPost), failed(refusedPost)}};
  for (const auto& [refused, unreadable] : endings) {
    const Request& request = flow[steps.size()];
    steps.push_back({request.line, request.answer, refused, unreadable});
  }
  Walk(steps, "//plm/" + path, 4);
}

}  // namespace
}  // namespace vtdirect_test
