#include "simulator/seed/fixture_reader.h"

#include "simulator/seed/fixture_tree.h"
#include "write_fixture.h"

namespace vantry_sim {
namespace {

const std::string documentPath = "/servlet/rest/v1/dkm/documents/";

/// The last document has an empty merge key, which is no key of a document.
constexpr const char* richState = R"(
users: [{name: anna, fullName: Anna Berg}, bruno]
contexts:
  - name: Bike
    folders:
      - name: Default
        folders: [Frame, {name: Texts, id: "OR:vn.folder.SubFolder:900"}]
  - {name: Screws, kind: Library, id: "OR:vn.library.Library:7"}
workspaces:
  - {name: Bench, owner: bruno, context: Bike, description: Drive, documents: [gear.lxz]}
documents:
  - cadName: frame.lxz
    name: Frame
    number: 0000100002
    folder: Bike/Default/Frame
    versions:
      - {version: A.1, id: D501, content: one, modified: "2025-12-24T18:00:00Z"}
      - {version: A.10, content: {text: "@two", fileName: "{$CAD_NAME}.x", category: DRAWING}}
      - version: B.1
        contents: [section one, {base64: c2VjdGlvbiB0d28=, category: APPEARANCE}]
        secondary: [{size: 100, isForwardable: true}, {text: hidden, isHidden: true, category: VCSINFO}]
        dependsOn: [gear.lxz]
    checkout: {workspace: Bench, content: being worked on}
  - {cadName: gear.lxz, folder: Bike/Default/Frame, content: "@files/gear.bin", service: cad}
  - {cadName: new.lxz, workspace: Bench, targetFolder: Bike/Default/Frame, content: never checked in}
  - {cadName: bolt.lxz, folder: Screws/Default}
  - {cadName: manual.xml, folder: "OR:vn.folder.SubFolder:900", content: text, xliff: manual.xlf}
  - &xliff {cadName: manual.xlf, folder: Bike/Default/Texts, content: source, typeId: "vn.epm.EPMDocument|net.kettenblitz.XliffDocument"}
  - {<<: , cadName: manual_de.xlf, folder: Bike/Default/Texts, content: target, translationOf: manual.xlf, attributes: {ZVK_DD_LANGUAGE: de}}
)";

/// A server that is filled with a state file.
class FixtureTest : public WriteTest {
 protected:
  std::string Write(const std::string& name, const std::string& text) {
    const auto path = directory_ / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
    return path.string();
  }

  void SeedWith(const std::string& text, const std::string& name = "state.yaml") {
    options_.seed.kind = Seed::Kind::File;
    options_.seed.file = Write(name, text);
  }

  /// Everything that is wrong with a state, as "LINE reason" lines.
  std::string Problems(const std::string& text) {
    FixtureProblem broken;
    const auto tree = ReadYaml(text, broken);
    std::vector<FixtureProblem> problems{broken};
    if (tree && ReadFixture(tree->Root(), {directory_}, problems)) return "none";
    std::string all;
    for (const FixtureProblem& problem : problems)
      all += (all.empty() ? "" : "\n") + std::to_string(problem.line) + " " + problem.reason;
    return all;
  }
};

TEST_F(FixtureTest, SmallStateGetsEverythingElseMadeUp) {
  SeedWith(R"(
contexts:
  - name: Bike
documents:
  - cadName: fork.lxz
    folder: Bike/Default
    content: Hello, fork.
    attributes: {COLOUR: blue, WEIGHT: 12.50}
)");
  const auto contexts = GetJson("/servlet/rest/v1/contexts");
  ASSERT_EQ(contexts["items"].Size(), 1U);
  const auto document = GetJson(documentPath + "D1001");
  EXPECT_STREQ(document["epmMaster"]["cadName"].GetString(), "fork.lxz");
  EXPECT_STREQ(document["epmMaster"]["name"].GetString(), "fork.lxz");
  EXPECT_STREQ(document["epmMaster"]["number"].GetString(), "D1001");
  EXPECT_STREQ(document["context"]["id"].GetString(), "OR:vn.product.Product:101");
  EXPECT_STREQ(document["locationFolder"]["path"].GetString(), "/Bike");
  EXPECT_EQ(VersionOf(document), "A.1");
  EXPECT_EQ(ContentOf(document["cadContent"]["contentSections"][0]), "Hello, fork.");
  EXPECT_STREQ(document["fileBasedAttributes"][1]["parameterValue"]["value"].GetString(), "12.50");
  // Whoever asks without a name is there, and can work.
  EXPECT_EQ(Outcome(workspacesPath, R"({"name":"bench","contextId":"OR:vn.product.Product:101"})"), "200");
}

TEST_F(FixtureTest, StateSaysAllThatAServerCanHold) {
  Write("files/gear.bin", std::string("\0\xFF gear", 7));
  SeedWith(richState);
  EXPECT_NE(Problems(ReadFile(options_.seed.file)).find("\"<<\""), std::string::npos);
  std::string text = ReadFile(options_.seed.file);
  text.replace(text.find("<<: , "), 6, "");
  SeedWith(text);

  const auto versions = GetJson(documentPath + "D501/versions?contextId=OR:vn.product.Product:101");
  ASSERT_EQ(versions.Size(), 3U);
  EXPECT_EQ(VersionOf(versions[0]), "B.1");
  EXPECT_EQ(VersionOf(versions[1]), "A.10");
  EXPECT_TRUE(versions[0]["pdmIterationState"]["isCheckout"].GetBool());
  EXPECT_STREQ(versions[0]["pdmIterationState"]["checkoutByUser"].GetString(), "bruno");
  const auto second = GetJson(documentPath + std::string(versions[1]["id"].GetString()));
  EXPECT_EQ(ContentOf(second["cadContent"]["contentSections"][0]), "@two");
  EXPECT_STREQ(second["cadContent"]["contentSections"][0]["category"].GetString(), "DRAWING");
  const auto latest = GetJson(documentPath + std::string(versions[0]["id"].GetString()));
  EXPECT_EQ(latest["cadContent"]["contentSections"].Size(), 2U);
  EXPECT_EQ(ContentOf(latest["cadContent"]["contentSections"][1]), "section two");
  EXPECT_EQ(latest["secondaryContents"][0]["fileSize"].GetInt(), 100);
  EXPECT_EQ(latest["secondaryContents"].Size(), 2U);
  EXPECT_STREQ(latest["derivedSourceDependencies"][0]["source"]["epmMaster"]["cadName"].GetString(),
               "gear.lxz");

  const auto held = GetJson(workspacesPath + "/W301/documents", "bruno");
  std::vector<std::string> names;
  for (const auto& document : held.GetArray())
    names.emplace_back(document["epmMaster"]["cadName"].GetString());
  EXPECT_THAT(names, ::testing::UnorderedElementsAre("frame.lxz", "gear.lxz", "new.lxz"));
  EXPECT_EQ(Column("/servlet/odata/v1/CADDocumentMgmt/CADDocuments", "ID").size(), 1U);
  const std::string manual = Column(
      "/servlet/odata/v1/DynamicDocMgmt/DynamicDocuments?$filter=CADName%20eq%20'manual.xml'", "ID")[0];
  const auto translations =
      GetJson("/servlet/odata/v1/DynamicDocMgmt/DynamicDocuments('" + manual + "')?$expand=Translations");
  ASSERT_EQ(translations["Translations"].Size(), 1U);
  EXPECT_STREQ(translations["Translations"][0]["AuthoringLanguage"].GetString(), "de");
}

TEST_F(FixtureTest, NewIdsComeBehindThoseOfTheState) {
  SeedWith(R"(
contexts: [{name: Bike}]
documents: [{cadName: a.lxz, id: D10000007, folder: Bike/Default}]
)");
  const auto made = PostJson(documentsPath, CreateBody(Instruction("", "b.lxz", Upload({"x"})[0])));
  EXPECT_GT(std::atoll(made[0]["id"].GetString() + 1), 10'000'007);
}

TEST_F(FixtureTest, JsonSaysTheSame) {
  SeedWith(R"({"contexts":[{"name":"Bike"}],
 "documents":[{"cadName":"fork.lxz","folder":"Bike/Default","content":"Hello \u00e9"}]})",
           "state.json");
  const auto document = GetJson(documentPath + "D1001");
  EXPECT_EQ(ContentOf(document["cadContent"]["contentSections"][0]), "Hello \xC3\xA9");
}

TEST_F(FixtureTest, StateWithSomethingWrongIsNotStartedWith) {
  SeedWith("contexts:\n  - name: Bike\ndocuments:\n  - cadName: a.lxz\n    folder: Bike/Wheel\n");
  try {
    Start();
    ADD_FAILURE();
  } catch (const std::exception& error) {
    EXPECT_EQ(std::string(error.what()),
              options_.seed.file + ":5: folder of a document names no folder of this file: Bike/Wheel");
  }
  // Nothing of it stays, and the next seed is taken.
  SeedWith("contexts: [{name: Bike}]");
  EXPECT_EQ(GetJson("/servlet/rest/v1/contexts")["items"].Size(), 1U);
}

struct ProblemCase {
  const char* state;
  const char* problem;
};

constexpr ProblemCase problemCases[] = {
    {"", "0 a state must be a set of keys and values"},
    {"contexts: [", "1 "},
    {"folders: []", "1 a state has no key \"folders\""},
    {"contexts: x", "1 contexts of a state must be a list"},
    {"contexts:\n- {}", "2 name of a context is missing"},
    {"contexts:\n- {name: a, kind: Bike}",
     "2 kind of a context must be Product, Library, Project, Site or Organization"},
    {"contexts:\n- {name: a,\n   id: X}\n- {name: b, id: X}", "4 the id X comes twice"},
    {"contexts:\n- name: a\n  name: b", "3 the key name comes twice"},
    {"contexts:\n- name: a\n  folders:\n  - b\n  - b", "5 there are two folders b in one place"},
    {"users: [a, a]", "1 the user a comes twice"},
    {"contexts: [{name: a}]\nworkspaces: [{name: w, context: b}]",
     "2 context of a workspace names no context of this file: b"},
    {"contexts: [{name: a}]\nworkspaces: [{name: w, context: a, owner: zoe}]",
     "2 owner of a workspace is no user of this file: zoe"},
    {"contexts: [{name: a}, {name: a}]\ndocuments: [{cadName: x, context: a}]",
     "2 context of a document names more than one context, so give its id: a"},
    {"contexts: [{name: a}]\ndocuments:\n- cadName: x",
     "3 folder of a document is missing, or else a workspace that holds what was never checked in"},
    {"contexts: [{name: a}]\ndocuments:\n- {cadName: x, folder: a/Default}\n- {cadName: x, folder: "
     "a/Default}",
     "4 there is another document x in its folder"},
    {"contexts: [{name: a}]\ndocuments:\n- {cadName: x, folder: a/Default, version: 1.A}",
     "3 version of a document must be letters, a point and a number, such as A.1"},
    {"contexts: [{name: a}]\ndocuments:\n- cadName: x\n  folder: a/Default\n  versions:\n  - version: A.2\n  "
     "- version: A.1",
     "7 the versions of x must be in their order"},
    {"contexts: [{name: a}]\ndocuments:\n- {cadName: x, folder: a/Default, content: '@nowhere'}",
     "3 there is no file "},
    {"contexts: [{name: a}]\ndocuments:\n- {cadName: x, folder: a/Default, content: {text: a, size: 4}}",
     "3 size of a content excludes text, base64 and file: a content has one of them"},
    {"contexts: [{name: a}]\ndocuments:\n- {cadName: x, folder: a/Default, content: {base64: '*'}}",
     "3 base64 of a content is no base64"},
    {"contexts: [{name: a}]\ndocuments:\n- {cadName: x, folder: a/Default, content: {stream: 5}}",
     "3 stream of a content has no bytes here or further up"},
    {"contexts: [{name: a}]\ndocuments:\n- {cadName: x, folder: a/Default, content: {size: -1}}",
     "3 size of a content must be a whole number"},
    {"contexts: [{name: a}]\ndocuments:\n- {cadName: x, folder: a/Default, dependsOn: [y]}",
     "3 there is no document y in this file"},
    {"contexts: [{name: a}]\ndocuments:\n- {cadName: x, folder: a/Default, modified: yesterday}",
     "3 modified of a document must be a time such as 2026-01-31T09:00:00Z"},
    {"contexts: [{name: a}]\ndocuments:\n- {cadName: x, folder: a/Default, versions: [], content: b}",
     "3 content of a document goes to one of its versions, since it has a list of them\n"
     "3 versions of a document must not be empty"},
    {"contexts: [{name: a}]\ndocuments: [{cadName: x, folder: a/Default}]\norder: [D1001, D1]",
     "3 order names no version of this file: D1\n3 order of a state must name every version and working "
     "copy"},
    {"contexts: [{name: a, folders: []}]\ndocuments: [{cadName: {a: b}, context: a}]",
     "2 cadName of a document must be a text"},
};

TEST_F(FixtureTest, EveryProblemIsToldWithItsLine) {
  for (const ProblemCase& c : problemCases) {
    const std::string problems = Problems(c.state);
    EXPECT_EQ(problems.substr(0, std::string(c.problem).size()), c.problem) << c.state;
  }
}

TEST_F(FixtureTest, HostileYamlEndsWithAProblem) {
  EXPECT_NE(Problems(std::string(5000, '[')), "none");
  // Nine levels of ten references each: a thousand million values.
  std::string bomb = "a0: &a0 [x, x, x, x, x, x, x, x, x, x]\n";
  for (int i = 1; i < 9; ++i) {
    bomb += "a" + std::to_string(i) + ": &a" + std::to_string(i) + " [";
    for (int j = 0; j < 10; ++j) bomb += (j == 0 ? "*a" : ", *a") + std::to_string(i - 1);
    bomb += "]\n";
  }
  EXPECT_NE(Problems(bomb).find("too many values"), std::string::npos);
  EXPECT_NE(Problems("? [a]\n: b\n"), "none");
  EXPECT_NE(Problems("a: *unknown"), "none");
  EXPECT_NE(Problems("%YAML 9.9\n--- x"), "none");
}

TEST_F(FixtureTest, WordsOfYamlAreTextsAsTheyAreWritten) {
  FixtureProblem problem;
  const auto tree = ReadYaml("[0000100001, 1.50, true, 'true', ~, 0x10, \"7\", 7]", problem);
  ASSERT_TRUE(tree) << problem.reason;
  std::vector<std::string> kinds;
  for (const JsonValue value : tree->Root()) {
    kinds.push_back(value.IsText()      ? "text " + std::string(value.Text())
                    : value.IsNumber()  ? "number " + std::string(value.NumberText())
                    : value.IsBoolean() ? "truth"
                                        : "null");
  }
  const std::vector<std::string> expected{"text 0000100001", "number 1.50", "truth",   "text true", "null",
                                          "text 0x10",       "text 7",      "number 7"};
  EXPECT_EQ(kinds, expected);
}

}  // namespace
}  // namespace vantry_sim
