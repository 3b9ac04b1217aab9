// What goes out as a state file comes in as the same state.
#include "simulator/export_command.h"
#include "write_fixture.h"

namespace vantry_sim {
namespace {

class ExportTest : public WriteTest {
 protected:
  std::string Export(const std::string& name, bool json = false) {
    simulator_.reset();
    const std::string file = (directory_ / name).string();
    ExportState({options_.dataDirectory, file, json});
    return file;
  }

  std::string ProblemWithExport(const std::string& file) {
    try {
      ExportState({options_.dataDirectory, file, false});
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return {};
  }

  /// Starts a server in a new directory with a state file.
  void StartWith(const std::string& file) {
    simulator_.reset();
    options_.dataDirectory = (directory_ / "second").string();
    options_.seed.kind = Seed::Kind::File;
    options_.seed.file = file;
    Start();
  }

  /// What a user sees of everything that can be asked, by the addresses that the answers lead to.
  std::map<std::string, std::string> Everything(const std::string& user) {
    std::map<std::string, std::string> answers;
    const auto ask = [&](const std::string& target) { answers[target] = Get(target, user).body; };
    ask("/servlet/rest/v1/contexts");
    for (const std::string service : {"DynamicDocMgmt/DynamicDocuments", "CADDocumentMgmt/CADDocuments"}) {
      ask("/servlet/odata/v1/" + service);
      for (const std::string& id : Column("/servlet/odata/v1/" + service, "ID", user)) {
        ask(documentsPath + "/" + id);
        ask(documentsPath + "/" + id +
            "/versions?contextId=" + GetJson(documentsPath + "/" + id, user)["context"]["id"].GetString());
        ask("/servlet/odata/v1/DynamicDocMgmt/DynamicDocuments('" + id + "')?$expand=Translations");
        ask("/servlet/odata/v1/DynamicDocMgmt/DynamicDocuments('" + id + "')/Xliff");
      }
    }
    const auto contexts = GetJson("/servlet/rest/v1/contexts", user);
    for (const auto& context : contexts["items"].GetArray()) {
      const std::string id = context["id"].GetString();
      ask("/servlet/odata/v1/DataAdmin/Containers('" + id + "')/Folders?$expand=Folders($levels=9)");
      ask(workspacesPath + "?contextId=" + id);
      const auto workspaces = GetJson(workspacesPath + "?contextId=" + id, user);
      for (const auto& workspace : workspaces.GetArray())
        ask(workspacesPath + "/" + std::string(workspace["id"].GetString()) + "/documents");
    }
    for (const char* name : {"gear.lxz", "fork.lxz", "frame.lxz", "worked.lxz"})
      ask("/servlet/rest/objects?typeId=vn.epm.EPMDocument&$select=number&$filter=CADName%20eq%20'" +
          std::string(name) + "'");
    return answers;
  }

  /// A state that no seed has: made, iterated, checked out, stored, checked in, linked.
  void Work() {
    auto uploaded = Upload({"new document", "viewable"});
    const auto made =
        PostJson(documentsPath,
                 CreateBody(Instruction(
                     "", "worked.lxz", uploaded[0],
                     ",\"secondaryContents\":[" + Section("VIEWABLE", "v.lxz", uploaded[1]) +
                         "],\"fileBasedAttributes\":[{\"parameterDefinition\":{\"parameterName\":\"P\","
                         "\"attributeName\":\"A\",\"valueType\":\"Integer\"},\"parameterValue\":{\"value\":"
                         "\"7: \\\"x\\\" # \\n\"}}]")));
    const std::string id = made[0]["id"].GetString();
    const std::string working = CheckOut("W301", "D1002");
    uploaded = Upload({std::string("\0binary\xFF", 8)});
    EXPECT_EQ(Outcome(workspacesPath + "/W301/store",
                      StoreBody(Instruction(working, "frame.lxz", uploaded[0]), IterateResolution(working))),
              "200");
    EXPECT_EQ(Outcome(workspacesPath + "/W301/checkin", CheckinBody(working, ",\"checkinComment\":\"a: b\"")),
              "200");
    uploaded = Upload({"second"});
    EXPECT_EQ(Outcome(documentsPath, IterateBody(Instruction(id, "worked.lxz", uploaded[0]))), "200");
    CheckOut("W301", "D1003");
    uploaded = Upload({"in a workspace"});
    EXPECT_EQ(Outcome(workspacesPath + "/W301/store", StoreBody(Instruction("", "never.lxz", uploaded[0]))),
              "200");
    EXPECT_EQ(Outcome(workspacesPath + "/W301/undocheckout", "{\"objIdList\":[\"D1026\"]}"), "200");
    // An upload that no document takes is no part of the state.
    Upload({"left over"});
  }

  static std::int64_t LastStream(const std::map<std::string, std::string>& contents) {
    std::int64_t last = 0;
    for (const auto& [name, bytes] : contents) last = std::max<std::int64_t>(last, std::stoll(name));
    return last;
  }

  void ExpectTheSameBehindAnExport(bool json) {
    const auto anna = Everything("anna");
    const auto bruno = Everything("bruno");
    EXPECT_GT(anna.size(), 100U);
    const std::string first = Export(json ? "first.json" : "first.yaml", json);
    StartWith(first);
    EXPECT_EQ(Everything("anna"), anna);
    EXPECT_EQ(Everything("bruno"), bruno);
    for (const auto& entry : std::filesystem::directory_iterator(directory_ / "second/content"))
      EXPECT_EQ(ReadFile(entry.path()), ReadFile(directory_ / "data/content" / entry.path().filename()))
          << entry;
    std::string again = ReadFile(Export(json ? "again.json" : "again.yaml", json));
    for (auto at = again.find("again."); at != std::string::npos; at = again.find("again."))
      again.replace(at, 5, "first");
    EXPECT_EQ(again, ReadFile(first));
  }
};

TEST_F(ExportTest, DemoComesBackTheSame) {
  Start();
  ExpectTheSameBehindAnExport(false);
}

TEST_F(ExportTest, WorkedStateComesBackTheSame) {
  Start();
  Work();
  ExpectTheSameBehindAnExport(false);
}

TEST_F(ExportTest, WorkedStateComesBackTheSameByJson) {
  Start();
  Work();
  ExpectTheSameBehindAnExport(true);
}

TEST_F(ExportTest, WorkGoesOnBehindAnExport) {
  Start();
  Work();
  StartWith(Export("first.yaml"));
  const auto uploaded = Upload({"third"});
  EXPECT_EQ(Outcome(documentsPath, CreateBody(Instruction("", "more.lxz", uploaded[0]))), "200");
}

TEST_F(ExportTest, LargeGeneratedContentIsToldByItsSizeAlone) {
  options_.seed.largeBytes = 5'000'000;
  Start();
  const std::string file = Export("state.yaml");
  EXPECT_LT(std::filesystem::file_size(file), 100'000U);
  EXPECT_NE(ReadFile(file).find("size: 5000000"), std::string::npos);
  StartWith(file);
  EXPECT_EQ(ReadFile(directory_ / "second/content/10090"), ReadFile(directory_ / "data/content/10090"));
}

// The bytes of D1001 come before those of D1003, which the second export can't read.
TEST_F(ExportTest, OlderExportStaysWholeWhenANewOneFails) {
  Start();
  const std::string state = Export("state.yaml");
  const std::filesystem::path files = state + ".files";
  const std::string text = ReadFile(state);
  std::map<std::string, std::string> before;
  for (const auto& entry : std::filesystem::directory_iterator(files))
    before[entry.path().filename().string()] = ReadFile(entry.path());
  ASSERT_GT(before.size(), 1U);
  const std::filesystem::path data = directory_ / "data/content";
  for (const auto& [name, bytes] : before)
    std::ofstream(data / name, std::ios::binary) << std::string(bytes.size(), 'x');
  // A link in the place of a content is refused.
  const std::string last = std::to_string(LastStream(before));
  std::filesystem::remove(data / last);
  std::filesystem::create_symlink(state, data / last);
  EXPECT_THROW(Export("state.yaml"), std::exception);
  EXPECT_EQ(ReadFile(state), text);
  for (const auto& [name, bytes] : before) EXPECT_EQ(ReadFile(files / name), bytes) << name;
  EXPECT_FALSE(std::filesystem::exists(state + ".part"));
  EXPECT_FALSE(std::filesystem::exists(files.string() + ".part"));
}

TEST_F(ExportTest, NewExportHasNothingOfOlderOnes) {
  Start();
  const std::string state = Export("state.yaml");
  const std::filesystem::path files = state + ".files";
  std::ofstream(files / "9999999") << "of the older one";
  std::set<std::string> names;
  ExportState({options_.dataDirectory, state, false});
  for (const auto& entry : std::filesystem::directory_iterator(files))
    names.insert(entry.path().filename().string());
  EXPECT_EQ(names.count("9999999"), 0U);
  EXPECT_GT(names.size(), 1U);
  EXPECT_FALSE(std::filesystem::exists(files.string() + ".part"));
  EXPECT_EQ(CheckState(state), 0);
  // What --check finds is the same as what a server would.
  std::filesystem::remove(files / *names.begin());
  EXPECT_EQ(CheckState(state), 1);
}

TEST_F(ExportTest, ContentsOfAnExportThatWasKilledAreNeverDeleted) {
  Start();
  const std::string state = Export("state.yaml");
  const std::string text = ReadFile(state);
  const std::string part = state + ".files.part";
  std::filesystem::create_directory(part);
  std::ofstream(part + "/10010") << "older";
  EXPECT_NE(ProblemWithExport(state).find(part + " is from an export that did not end"), std::string::npos);
  EXPECT_EQ(ReadFile(part + "/10010"), "older");
  EXPECT_EQ(ReadFile(state), text);
  std::filesystem::remove_all(part);
  EXPECT_EQ(ProblemWithExport(state), "");
}

TEST_F(ExportTest, DirectoryThatHoldsMoreThanAnExportIsNeverReplaced) {
  Start();
  const std::string state = Export("state.yaml");
  const std::string text = ReadFile(state);
  const std::filesystem::path files = state + ".files";
  const auto refuses = [&](const std::filesystem::path& foreign) {
    EXPECT_NE(ProblemWithExport(state).find(foreign.string() + " is "), std::string::npos) << foreign;
    EXPECT_TRUE(std::filesystem::exists(foreign)) << foreign;
    EXPECT_EQ(ReadFile(state), text);
    EXPECT_FALSE(std::filesystem::exists(state + ".part"));
    EXPECT_FALSE(std::filesystem::exists(files.string() + ".part"));
    std::filesystem::remove(foreign);
  };
  std::ofstream(files / "notes.txt") << "x";
  refuses(files / "notes.txt");
  std::filesystem::create_directory(files / "2024");
  refuses(files / "2024");
  std::filesystem::create_symlink(state, files / "2025");
  refuses(files / "2025");
  std::filesystem::rename(files, directory_ / "elsewhere");
  std::filesystem::create_directory_symlink(directory_ / "elsewhere", files);
  refuses(files);
  std::ofstream(files) << "x";
  refuses(files);
  EXPECT_EQ(ProblemWithExport(state), "");
}

// Nothing goes beside it, so nothing is replaced there.
TEST_F(ExportTest, ExportWithoutFilesLeavesADirectoryAlone) {
  options_.seed.kind = Seed::Kind::Empty;
  Start();
  const std::filesystem::path files = directory_ / "empty.yaml.files";
  std::filesystem::create_directory(files);
  std::ofstream(files / "notes.txt") << "x";
  Export("empty.yaml");
  EXPECT_EQ(ReadFile(files / "notes.txt"), "x");
}

TEST_F(ExportTest, DirectoryThatIsNoneIsRefusedAndLeftAlone) {
  const std::string missing = (directory_ / "missing").string();
  EXPECT_THROW(ExportState({missing, "", false}), std::exception);
  EXPECT_FALSE(std::filesystem::exists(missing));
  Start();
  // The running server holds its directory.
  EXPECT_THROW(ExportState({options_.dataDirectory, "", false}), std::exception);
}

TEST_F(ExportTest, EmptyStateTakesDocuments) {
  options_.seed.kind = Seed::Kind::Empty;
  Start();
  StartWith(Export("empty.yaml"));
  EXPECT_EQ(Outcome(documentsPath, CreateBody(Instruction("", "first.lxz", Upload({"x"})[0]))), "200");
}

}  // namespace
}  // namespace vantry_sim
