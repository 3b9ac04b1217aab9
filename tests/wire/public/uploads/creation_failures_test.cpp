#include "tests/wire/public/uploads/upload_walk.h"

// Every request of every exported upload to a new path fails in every way.
namespace vtdirect_test {
namespace {

const TraceLine notNamed = Error("Failed find any document with CADName pump.fnl");
const TraceLine noFile = Miss("Failed to find file pump.fnl");

const std::string dataAdminLine = Get("servlet/odata/DataAdmin/$metadata");
const std::string cadDocumentsLine = Get("servlet/odata/CADDocumentMgmt/$metadata");
const WalkedRequest contexts{Get("servlet/rest/v1/contexts?type=Product"),
                             {200, R"({"items":[{"id":"OR:vn.Product:5","attributes":{"name":"Gadget"}}]})"}};
// The folder "Sub" below the root of a container.
const Answer subFolder{200,
                       R"({"value":[{"ID":"F0","Name":"Default","Folders":[{"ID":"F1","Name":"Sub"}]}]})"};

std::string FoldersByODataLine(const std::string& container) {
  return Get("servlet/odata/v1/DataAdmin/Containers('" + container +
             "')/Folders?$expand=Folders($levels=1;$select=ID,Name)&$select=ID,Name");
}

class CreationFailures : public UploadWalkTest {
 protected:
  // The transfer and its end at a document's creation.
  [[nodiscard]] Flow WithTransfer(const Flow& flow) const {
    return Join(Join(flow, TransferFlow()), {{Post(documentsPath), walkedStored}});
  }
  [[nodiscard]] TraceLine NotCreated(const std::string& context, const std::string& folder) const {
    return Error("Failed to create document " + ThreePaths() + " on server ctx " + context + ", folder " +
                 folder + "\n");
  }
};

INSTANTIATE_TEST_SUITE_P(Of, CreationFailures, testing::ValuesIn(AllUploadForms()), NameOfForm);

// An older server, which has none of the services that a schema tells of.
class OlderCreationFailures : public CreationFailures {
 protected:
  // What is traced when each of the two searches for the name could be made or not.
  [[nodiscard]] Traces Searched(bool first, bool second) const {
    Traces traces;
    for (const bool made : {first, second}) {
      if (made) traces.push_back(notNamed);
      traces.push_back(noFile);
    }
    return Join(traces, {Miss("Failed to find file " + path), StoringAt(path)});
  }
  [[nodiscard]] Flow WholeFlow() const {
    return WithTransfer({{probeLine, walkedSchema},
                         {dataAdminLine, walkedNoService},
                         {probeLine, walkedNoService},
                         {cadDocumentsLine, walkedNoService},
                         {objectsLine, walkedNoList},
                         {objectsLine, walkedNoList},
                         contexts,
                         {Get("servlet/rest/v1/contexts/OR%3Avn.Product%3A5/folders"),
                          {200, R"({"items":[{"id":"F1","attributes":{"name":"Sub"}}]})"}}});
  }
  const std::string path = "Products/Gadget/Folders/Sub/pump.fnl";
  const std::string success = Done(storedUid);
};

INSTANTIATE_TEST_SUITE_P(Of, OlderCreationFailures, testing::ValuesIn(AllUploadForms()), NameOfForm);

TEST_P(OlderCreationFailures, OfSearchAndTransfer) {
  const Flow flow = WholeFlow();
  const auto searched = [&](bool first, bool second, const Traces& rest) {
    return Join(Join(MissingServices(), Searched(first, second)), rest);
  };
  const Traces traces = searched(true, true, {uploaded});
  const Ending none{"not walked", {}};
  const Ending noContext{Failed(7),
                         searched(true, true, {Error("Failed to locate context Gadget on server\n")})};
  // The server decides where a document without a folder goes.
  const Ending noFolder = GoesOn(flow, 8, success, traces);
  std::vector<Step> steps;
  for (const WalkedRequest& request : Flow(flow.begin(), flow.begin() + 4)) {
    steps.push_back({request.line, request.answer, none, none});
  }
  const Ending firstUnmade = GoesOn(flow, 5, success, searched(false, true, {uploaded}));
  const Ending secondUnmade = GoesOn(flow, 6, success, searched(true, false, {uploaded}));
  steps.push_back({flow[4].line, flow[4].answer, firstUnmade, GoesOn(flow, 5, success, traces)});
  steps.push_back({flow[5].line, flow[5].answer, secondUnmade, GoesOn(flow, 6, success, traces)});
  steps.push_back({flow[6].line, flow[6].answer, noContext, noContext});
  steps.push_back({flow[7].line, flow[7].answer, noFolder, noFolder});
  Walk(Join(steps, TransferSteps(flow, 8, success, {searched(true, true, {}), {uploaded}},
                                 {7, NotCreated("OR:vn.Product:5", "F1")})),
       "//plm/" + path, false, 4);
}

// A service that could not be asked for is asked for again by the transfer, and those after it are then
// asked for the first time. One whose schema is broken at its end counts as there, in its first version.
TEST_P(OlderCreationFailures, OfProbeAndSchemas) {
  const Flow flow = WholeFlow();
  const auto askedAgain = [&](std::size_t from) {
    Ending ending = GoesOn(flow, 4, success, {});
    const Flow again(flow.begin() + static_cast<std::ptrdiff_t>(from), flow.begin() + 4);
    const Ending asking = GoesOn(again, 0, "", {});
    ending.answers.insert(ending.answers.begin() + 2, asking.answers.begin(), asking.answers.end());
    ending.lines.insert(ending.lines.begin() + 2, asking.lines.begin(), asking.lines.end());
    const Traces before(MissingServices().begin(),
                        MissingServices().begin() + static_cast<std::ptrdiff_t>(from));
    const Traces after(MissingServices().begin() + static_cast<std::ptrdiff_t>(from) - 1,
                       MissingServices().end());
    ending.traces = Join(Join(before, Searched(true, true)), Join(after, {uploaded}));
    return ending;
  };
  const auto there = [&](std::size_t service) {
    Traces before = MissingServices();
    before.erase(before.begin() + static_cast<std::ptrdiff_t>(service) - 1);
    return GoesOn(flow, service + 1, success, Join(Join(before, Searched(true, true)), {uploaded}));
  };
  Ending withDataAdmin = there(1);
  withDataAdmin.answers[5] = subFolder;
  withDataAdmin.lines[5] = FoldersByODataLine("OR:vn.Product:5");
  const Traces whole = Join(Join(MissingServices(), Searched(true, true)), {uploaded});
  Walk({{flow[0].line, flow[0].answer, NotProbed(), GoesOn(flow, 1, success, whole)},
        {flow[1].line, flow[1].answer, askedAgain(1), withDataAdmin},
        {flow[2].line, flow[2].answer, askedAgain(2), there(2)},
        {flow[3].line, flow[3].answer, askedAgain(3), there(3)}},
       "//plm/" + path);
}

// A server of today, which finds folders and documents by OData.
std::string SchemaOfVersion(int version) {
  return R"(<Schema><Annotation Term="Core.SchemaVersion"><String>)" + std::to_string(version) +
         "</String></Annotation></Schema>";
}
const WalkedRequest folderResource{
    Get("servlet/odata/v1/DataAdmin/Containers/ZVK.DataAdmin.ProductContainer?$expand=Folders($levels=2;"
        "$select=ID,Name)&$select=ID&$filter=Name%20eq%20%27Gadget%27"),
    {200, R"({"value":[{"ID":"C1","Folders":[{"ID":"F0","Name":"Default",)"
          R"("Folders":[{"ID":"F1","Name":"Sub"}]}]}]})"}};
const WalkedRequest folderSearch{
    Get("servlet/odata/v4/DataAdmin/Containers('C1')/Folders('F0')/Folders('F1')/FolderContents/"
        "ZVK.DynamicDocMgmt.DynamicDocument?$filter=CADName%20eq%20%27pump.fnl%27&$orderby=Version desc"
        "&$select=CADName,ID,Version&$top=1"),
    {200, R"({"value":[]})"}};

TEST_P(CreationFailures, OnAServerWithAllServices) {
  const std::string path = "Products/Gadget/Folders/Sub/pump.fnl";
  const WalkedRequest objects{objectsLine, walkedNoList};
  const Flow flow =
      WithTransfer({{probeLine, {200, SchemaOfVersion(2)}},
                    {dataAdminLine, {200, SchemaOfVersion(5)}},
                    {probeLine, {200, SchemaOfVersion(2)}},
                    {cadDocumentsLine, {200, SchemaOfVersion(1)}},
                    folderResource,
                    folderSearch,
                    objects,
                    folderResource,
                    folderSearch,
                    objects,
                    {Get("servlet/odata/v5/DataAdmin/Containers/ZVK.DataAdmin.ProductContainer?$select=ID"
                         "&$filter=Name%20eq%20%27Gadget%27"),
                     {200, R"({"value":[{"ID":"C1"}]})"}},
                    {FoldersByODataLine("C1"), subFolder}});
  const auto searched = [&](bool first, bool second, const Traces& rest) {
    Traces traces;
    for (const bool made : {first, second}) {
      if (made) traces.push_back(notNamed);
      traces.push_back(noFile);
    }
    return Join(Join(traces, {Miss("Failed to find file " + path), StoringAt(path)}), rest);
  };
  const std::string success = Done(storedUid);
  const Traces traces = searched(true, true, {uploaded});
  const Ending none{"not walked", {}};
  std::vector<Step> steps;
  for (const WalkedRequest& request : Flow(flow.begin(), flow.begin() + 4)) {
    steps.push_back({request.line, request.answer, none, none});
  }
  const auto add = [&](const Ending& refused, const Ending& unreadable) {
    const WalkedRequest& request = flow[steps.size()];
    steps.push_back({request.line, request.answer, refused, unreadable});
  };
  const auto addBoth = [&](const Ending& ending) { add(ending, ending); };
  // Without the folder, and without a row in it, the search goes to the objects of all folders.
  addBoth(GoesOn(flow, 6, success, traces));
  addBoth(GoesOn(flow, 6, success, traces));
  add(GoesOn(flow, 7, success, searched(false, true, {uploaded})), GoesOn(flow, 7, success, traces));
  addBoth(GoesOn(flow, 9, success, traces));
  addBoth(GoesOn(flow, 9, success, traces));
  add(GoesOn(flow, 10, success, searched(true, false, {uploaded})), GoesOn(flow, 10, success, traces));
  addBoth({Failed(7), searched(true, true, {Error("Failed to locate context Gadget on server\n")})});
  addBoth(GoesOn(flow, 12, success, traces));
  Walk(Join(steps, TransferSteps(flow, 12, success, {searched(true, true, {}), {uploaded}},
                                 {7, NotCreated("C1", "F1")})),
       "//plm/" + path, false, 4);
}

TEST_P(CreationFailures, InAWorkspace) {
  const std::string path = "Products/Gadget/Workspaces/Mine/pump.fnl";
  const WalkedRequest workspaces{Get(workspacesPath + "?contextId=OR%3Avn.Product%3A5"),
                                 {200, R"([{"id":"W12","name":"Mine"}])"}};
  const Flow flow = Join(Join({{probeLine, walkedSchema},
                               {dataAdminLine, walkedNoService},
                               {probeLine, walkedNoService},
                               {cadDocumentsLine, walkedNoService},
                               contexts,
                               workspaces,
                               {Get(workspacesPath + "/W12/documents"), walkedNoList},
                               contexts,
                               workspaces},
                              TransferFlow()),
                         {{Post(workspacesPath + "/W12/store"), walkedStored}});
  const auto sought = [&](const TraceLine& end, const Traces& rest) {
    return Join(Join(MissingServices(), {end, StoringAt(path)}), rest);
  };
  const TraceLine missing = Miss("Failed to find file " + path);
  const TraceLine noContext = Error("Failed to locate context Gadget on server\n");
  const TraceLine noWorkspace = Miss("Failed to find workspace for file " + path);
  const std::string success = Done(uidStem + "D9|W12&file=/pump.fnl");
  const TraceLine stored = Information("Uploaded document id D9|W12 (A.2)\n");
  const auto goesOn = [&](std::size_t from, const TraceLine& end) {
    return GoesOn(flow, from, success, sought(end, {stored}));
  };
  const Ending none{"not walked", {}};
  const Ending lostContext{Failed(7), sought(missing, {noContext})};
  const Ending lostWorkspace{
      Failed(7),
      sought(missing, {Error("Failed to locate workspace Mine in context OR:vn.Product:5 on server\n")})};
  std::vector<Step> steps;
  for (const WalkedRequest& request : Flow(flow.begin(), flow.begin() + 4)) {
    steps.push_back({request.line, request.answer, none, none});
  }
  // A document that could not be looked for counts as not there.
  steps.push_back({flow[4].line, flow[4].answer, goesOn(7, noContext), goesOn(7, noContext)});
  steps.push_back({flow[5].line, flow[5].answer, goesOn(7, noWorkspace), goesOn(7, noWorkspace)});
  steps.push_back({flow[6].line, flow[6].answer,
                   goesOn(7, Miss("Failed to find workspace documents for file " + path)),
                   goesOn(7, missing)});
  steps.push_back({flow[7].line, flow[7].answer, lostContext, lostContext});
  steps.push_back({flow[8].line, flow[8].answer, lostWorkspace, lostWorkspace});
  const TraceLine notCreated = Error("Failed to create document " + ThreePaths() +
                                     " on server ctx OR:vn.Product:5, folder , workspace W12\n");
  Walk(Join(steps, TransferSteps(flow, 9, success, {sought(missing, {}), {stored}}, {7, notCreated})),
       "//plm/" + path, false, 4);
}

// A document that was found at the path is read before it counts as there.
TEST_P(CreationFailures, OfTheReadThatForbidsTheCreation) {
  const std::string path = "Products/Gadget/Folders/Sub/pump.fnl";
  const Answer found{200, R"([{"id":"D1","attributes":{"number":"0042"}}])"};
  const Answer document{200, R"({"id":"D1"})"};
  const Ending none{"not walked", {}};
  const Traces exists = Join(MissingServices(), {Error("File //plm/" + path + " already exists\n")});
  const Traces goes =
      Join(MissingServices(), {Error("Failed to locate document D1 on server\n"), StoringAt(path),
                               Error("Failed to locate context Gadget on server\n")});
  const Traces foundLater =
      Join(MissingServices(), {Error("Failed get document with CADName pump.fnl id D1"), noFile,
                               Error("File //plm/" + path + " already exists\n")});
  // The search is made twice: what the first could not read, or read without an id, the second finds.
  const Lines searchAgain{objectsLine, DocumentLine("D1"), DocumentLine("D1")};
  const std::vector<Answer> foundAgain{found, document, document};
  Walk({{probeLine, walkedSchema, none, none},
        {dataAdminLine, walkedNoService, none, none},
        {probeLine, walkedNoService, none, none},
        {cadDocumentsLine, walkedNoService, none, none},
        {objectsLine, found, none, none},
        {DocumentLine("D1"),
         document,
         {NotPrepared(""), foundLater, foundAgain, searchAgain},
         {NotPrepared(""), exists, foundAgain, searchAgain}},
        {DocumentLine("D1"),
         document,
         {Failed(7), goes, {{404, ""}}, {contexts.line}},
         {NotPrepared(""), exists}}},
       "//plm/" + path, false, 5);
}

}  // namespace
}  // namespace vtdirect_test
