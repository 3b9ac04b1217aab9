#include "browsing/document_details.h"
#include "server/create_file_server.h"
#include "tests/support/hostile_answer.h"
#include "tests/wire/browsing/location_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;

/// Every operation of the location of documents, against a server that gives one and the same answer to
/// whatever it is asked after the questions for services.
class HostileLocations : public LocationTest, public testing::WithParamInterface<HostileAnswer> {
 protected:
  /// Runs one operation; what it left of the answers is dropped.
  template <typename Operation>
  void Run(Operation operation) {
    ScriptedTransport hostile;
    for (const int version : {5, 2, 1}) hostile.Then(200, Schema(version));
    const std::string body = GetParam().body();
    for (int answer = 0; answer < 40; ++answer) hostile.Then(200, body);
    const auto target = CreateFileServer(serverUrl, [](const char*) { return false; });
    // Asks for the services, so that the answers to come are all hostile ones.
    EXPECT_FALSE(target->CanPathShowDetails(""));
    EXPECT_EQ(target->ResolvePath(""), "");
    EXPECT_EQ(hostile.requests().size(), 3u);
    operation(*target);
    EXPECT_LT(hostile.requests().size(), 43u) << "ran out of answers";
  }
};

TEST_P(HostileLocations, NameNoDocument) {
  Run([](FileServer& target) {
    EXPECT_EQ(target.ResolvePath("Products/Gadget/Workspaces/Mine/gear.lxz"), "");
  });
  Run([](FileServer& target) { EXPECT_EQ(target.EditAttributesURL("D1|W2"), ""); });
  Run([](FileServer& target) { EXPECT_EQ(target.GetVFSPath("D1", false, false), ""); });
  Run([](FileServer& target) { EXPECT_EQ(target.GetVFSPath("D1|W2", false, true), ""); });
  Run([](FileServer& target) { EXPECT_EQ(target.GetVFSPath("D1", true, false), ""); });
  Run([](FileServer& target) { EXPECT_EQ(target.UIDFromVantryParams("D1", "W2"), ""); });
}

TEST_P(HostileLocations, EndEveryOtherOperation) {
  Run([](FileServer& target) {
    EXPECT_EQ(target.ResolvePath("Products/Gadget/Folders/Sub/gear.lxz|A.1"), "");
  });
  Run([](FileServer& target) { (void)target.UIDFromVantryCadName("gear.lxz"); });
  Run([](FileServer& target) { EXPECT_EQ(target.UIDFromVantryParams("D1", nullptr), "D1"); });
  Run([](FileServer& target) {
    VtCheckoutState state;
    EXPECT_TRUE(target.GetCheckoutServer()->GetCheckoutState("D1", state));
    EXPECT_FALSE(state.checkedOut && !state.inWorkspace);
  });
  Run([](FileServer& target) {
    FileInfo current;
    LatestInfo latest;
    std::vector<VersionEntry> versions;
    std::map<std::string, std::string> attributes;
    std::vector<SourceEntry> contents;
    DocumentQuery query{&current, &latest, &versions, &attributes, &contents};
    EXPECT_EQ(target.ReadDetails("D1", query), Ok);
    EXPECT_EQ(current.id, "D1");
    EXPECT_EQ(attributes["name"], "");
  });
}

constexpr HostileAnswer hostileAnswers[] = {
    {"Empty", [] { return std::string(""); }},
    {"NoJson", [] { return std::string("nothing"); }},
    {"Null", [] { return std::string("null"); }},
    {"Number", [] { return std::string("7"); }},
    {"Text", [] { return std::string("\"text\""); }},
    {"Array", [] { return std::string("[]"); }},
    {"Object", [] { return std::string("{}"); }},
    {"ArrayInArray", [] { return std::string("[[]]"); }},
    {"ArrayOfEverything", [] { return std::string("[null,7,\"x\",[],{}]"); }},
    {"ValueIsANumber", [] { return std::string("{\"value\":7}"); }},
    {"ValueOfEverything", [] { return std::string("{\"value\":[[[]],7,null,{}]}"); }},
    {"ItemsIsAnObject", [] { return std::string("{\"items\":{}}"); }},
    {"CutOffInAText", [] { return std::string("{\"id\":\"D1\",\"epmMaster\":{\"cadName\":\"ge"); }},
    {"CutOffInAnArray", [] { return std::string("[{\"id\":\"D1\"},"); }},
    {"MoreBehindTheEnd", [] { return std::string("{} {}"); }},
    {"NoUtf8", [] { return std::string("\xff\xfe{"); }},
    {"DocumentOfWrongTypes",
     [] {
       return std::string(
           R"({"id":1,"context":[],"revision":{},"iteration":7,"pdmIterationState":"x","epmMaster":[],
            "locationFolder":7,"cadContent":{"contentSections":{}},"secondaryContents":"x"})");
     }},
    {"RowsOfWrongTypes",
     [] {
       return std::string(R"({"value":[{"ID":1,"Version":[],"CheckOutStatus":{},"Folders":7,"Name":null}]})");
     }},
    {"ListOfWrongTypes",
     [] { return std::string(R"([{"id":[],"name":{},"attributes":[],"epmMaster":7}])"); }},
    {"ItemsOfWrongTypes", [] { return std::string(R"({"items":[{"id":7,"attributes":{"name":[]}}]})"); }},
    {"NextLinkIsANumber", [] { return std::string(R"({"value":[],"@odata.nextLink":7})"); }},
    {"NextLinkIsAnArray", [] { return std::string(R"({"value":7,"@odata.nextLink":[]})"); }},
    {"DeepArrays", [] { return std::string(Nested("[", "]", 200000)); }},
    {"DeepRows", [] { return std::string(Nested("{\"value\":[", "]}", 100000)); }},
    {"DeepMasters", [] { return std::string(Nested("{\"epmMaster\":", "", 100000)); }},
    {"DeepFolders", [] { return std::string(Nested("{\"Folders\":[", "]}", 250)); }},
};

INSTANTIATE_TEST_SUITE_P(Answers, HostileLocations, testing::ValuesIn(hostileAnswers),
                         [](const testing::TestParamInfo<HostileAnswer>& answer) {
                           return std::string(answer.param.name);
                         });

class OddAnswers : public LocationTest {};

TEST_F(OddAnswers, KeepsBytesOfNamesThatNoPathCanHold) {
  wire.Then(200, R"({"id":"D1","context":{"id":"C5","name":"Gadget","type":"Product"},
      "epmMaster":{"cadName":"a\u0000/b\n"},"locationFolder":{"path":"/Gadget/Sub"}})");
  const std::string path = server->GetVFSPath("D1", false, true);
  EXPECT_EQ(path, std::string("Products/Gadget/Folders/Sub/a\0%2fb\n", 35));
  ExpectQuiet();
}

TEST_F(OddAnswers, EndsAListOfCandidatesOfWhichNoneIsTheDocument) {
  services.dynamicDocPresent = true;
  std::vector<Candidate> candidates(200, Candidate{"D9", "A.1", ""});
  wire.Then(200, Json({})).Then(200, Candidates(candidates));
  for (int read = 0; read < 200; ++read) wire.Then(200, Json({.masterId = "M2"}));
  wire.Then(200, "[]");
  LatestInfo latest;
  DocumentQuery query;
  query.latest = &latest;
  EXPECT_EQ(GetDocumentDetails(Begin(connection, services), ParseCheckoutId("D1"), query), Ok);
  EXPECT_EQ(latest.id, "D1");
  EXPECT_EQ(wire.requests().size(), 203u);
}

TEST_F(OddAnswers, ReadsAnAnswerThatOutgrowsTheMemoryLimitAndLeavesNoFile) {
  services.dynamicDocPresent = services.dynamicDocV2 = true;
  std::vector<std::string> rows(30000, R"({"ID":"D8","Version":"A.9","CheckOutStatus":null})");
  rows.push_back(R"({"ID":"D9","Version":"A.2","CheckOutStatus":""})");
  wire.Then(200, Json({})).Then(200, Rows(rows));
  LatestInfo latest;
  DocumentQuery query;
  query.latest = &latest;
  EXPECT_EQ(GetDocumentDetails(Begin(connection, services), ParseCheckoutId("D1"), query), Ok);
  EXPECT_EQ(latest.id, "D9");
}

}  // namespace
}  // namespace vtdirect_test
