#include <gmock/gmock.h>
#include <rapidjson/document.h>

#include <filesystem>
#include <set>
#include <sstream>

#include "tests/e2e/cli/vtdirect_fixture.h"

namespace vtdirect_test {
namespace {

struct Member {
  std::string type;
  bool always = false;
};

// Section of docs/json-output.md, by its heading, to the members that it documents.
using Document = std::map<std::string, std::map<std::string, Member>>;

std::vector<std::string> CellsOf(const std::string& row) {
  std::vector<std::string> cells;
  std::istringstream stream(row);
  for (std::string cell; std::getline(stream, cell, '|');) {
    const std::size_t start = cell.find_first_not_of(' ');
    cells.push_back(start == std::string::npos ? ""
                                               : cell.substr(start, cell.find_last_not_of(' ') - start + 1));
  }
  return cells;
}

Document ReadDocument() {
  Document document;
  std::string heading;
  std::istringstream stream(ReadFile(JSON_DOCUMENT));
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with("## ")) heading = line.substr(3);
    // These tell of members and classes, and are no members of an object.
    if (heading == "One name, one meaning" || heading == "Classes of failures") continue;
    if (!line.starts_with("| `")) continue;
    const std::vector<std::string> cells = CellsOf(line);
    document[heading][cells.at(1).substr(1, cells.at(1).size() - 2)] = {cells.at(2), cells.at(3) == "always"};
  }
  return document;
}

bool IsOfType(const rapidjson::Value& value, const std::string& type) {
  if (type == "text") return value.IsString();
  if (type == "flag") return value.IsBool();
  if (type == "number") return value.IsUint64();
  if (type != "texts" || !value.IsArray()) return false;
  for (const auto& element : value.GetArray()) {
    if (!element.IsString()) return false;
  }
  return true;
}

class JsonOutput : public VtDirect {
 protected:
  // Runs a command and holds each line of both outputs to the document.
  ProcessResult Check(std::vector<std::string> words, int status = 0) {
    const std::string command = words.front() == "xliff" ? "xliff " + words.at(1) : words.front();
    words.insert(words.begin(), "--json");
    const ProcessResult result = Run(words);
    EXPECT_EQ(result.status, status) << testing::PrintToString(words) << result.err;
    CheckLines(result.out, command, command);
    CheckErrors(result.err, command);
    return result;
  }

  // As a run leaves it that was killed before the answer.
  void LeaveOpenCheckin(const std::string& uid) {
    WriteHome(".local/state/vtdirect/journal",
              "vtdirect-journal 1\n1:1\t2026-01-31T09:00:00Z\tcheckin\t" + uid + "\t" + uid + "\t\t\n", 0600);
  }

  // What looks for something, or opens it in another program.
  void CheckWhatLooksAround(const std::string& document) {
    Check({"doctor", "sim"});
    Check({"find", "//sim/Products/Trekking Bike/Folders/Frame/", "--newer", "A.1"});
    environment_["BROWSER"] = "true";
    Check({"open", document});
    environment_["VISUAL"] = "true";
    Check({"edit", server().Uid("D1003"), "--dry-run"});
    Check({"edit", server().Uid("D1003")});
    Check({"support-bundle", "bundle"});
  }

  void ExpectAllWasShown() {
    for (const auto& [section, members] : document_) {
      // These want a mount, and this one a terminal: their own tests hold what they show.
      if (section == "mount" || section == "refresh" || section == "unmount" || section == "login") continue;
      for (const auto& [name, member] : members) {
        EXPECT_TRUE(seen_[section].contains(name)) << section << " never showed " << name;
      }
    }
  }

  void CheckErrors(const std::string& text, const std::string& command) {
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
      const bool isWarning = line.find("\"warning\":") != std::string::npos;
      CheckLine(line, isWarning ? "A warning" : "A failure", command);
    }
  }

  void CheckLines(const std::string& text, const std::string& section, const std::string& command) {
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) CheckLine(line, section, command);
  }

  void CheckLine(const std::string& line, const std::string& section, const std::string& command) {
    SCOPED_TRACE(section + ": " + line);
    for (const char c : line) EXPECT_TRUE(c >= 0x20 && c < 0x7F);
    rapidjson::Document json;
    json.Parse(line.c_str());
    ASSERT_TRUE(!json.HasParseError() && json.IsObject());
    CheckMembers(json, section);
    for (const std::string& part : {std::string("Every object"), section}) {
      for (const auto& [name, member] : document_[part]) {
        EXPECT_TRUE(!member.always || json.HasMember(name.c_str())) << name;
      }
    }
    EXPECT_EQ(json["schema"].GetInt(), 2);
    EXPECT_EQ(json["command"].GetString(), command);
  }

  void CheckMembers(const rapidjson::Value& json, const std::string& section) {
    std::set<std::string> names;
    for (const auto& [key, value] : json.GetObject()) {
      const std::string name = key.GetString();
      EXPECT_TRUE(names.insert(name).second) << name << " comes twice";
      const bool common = document_["Every object"].contains(name);
      const auto& members = document_[common ? "Every object" : section];
      const auto member = members.find(name);
      ASSERT_NE(member, members.end()) << name << " is not documented";
      EXPECT_TRUE(IsOfType(value, member->second.type)) << name;
      seen_[common ? "Every object" : section].insert(name);
    }
  }

  void CheckTranslations() {
    Check({"xliff", "source", "//sim/?id=D1028"});
    Check({"xliff", "list", "//sim/?id=D1028"});
    Check({"xliff", "get", "//sim/?id=D1028", "--language", "de", "--dry-run"});
    Check({"xliff", "get", "//sim/?id=D1028", "--language", "de"});
    Check({"xliff", "publish", "//sim/?id=D1031", "--dry-run"});
    Check({"xliff", "publish", "//sim/?id=D1031"});
    WriteFile(
        Here("a.xlf"),
        "<xliff version='2.0' srcLang='en' xmlns='urn:oasis:names:tc:xliff:document:2.0'><file/></xliff>");
    Check({"xliff", "put", "//sim/?id=D1032", "a.xlf", "--language", "en", "--dry-run"});
    Check({"xliff", "put", "//sim/?id=D1032", "a.xlf", "--language", "en"});
    Check({"xliff", "put", "//sim/?id=D1032", "a.xlf", "--language", "de"}, 8);
  }

  // A work folder is made of an empty directory.
  void CheckWorkFolder() {
    for (const std::string& name : HereNames()) std::filesystem::remove_all(Here(name));
    Check({"clone", "//sim/Products/Trekking Bike/Folders/Frame/", "."});
    Check({"checkout", "frame.lxz"});
    WriteFile(Here("fork.lxz"), "changed");
    Check({"st"});
    Check({"diff", "fork.lxz"});
    Check({"commit"});
    Check({"commit", "nonsense"}, 2);
    WriteFile(Here("fork.lxz"), "changed once more");
    Check({"revert", "fork.lxz", "--dry-run"});
    Check({"revert", "fork.lxz"});
    std::filesystem::remove(Here("fork.lxz"));
    Check({"pull"});
    Check({"log", "fork.lxz"});
    Check({"undo", "frame.lxz"});
  }

  Document document_ = ReadDocument();
  std::map<std::string, std::set<std::string>> seen_;
};

}  // namespace

TEST_F(JsonOutput, IsWhatTheDocumentSaysAndAllOfIt) {
  Serve();
  const std::string fork = "//sim/Products/Trekking Bike/Folders/Frame/fork.lxz";
  const std::string dead = "http://127.0.0.1:" + std::to_string(UnusedPort()) + "/";
  const TemporaryDirectory directory;
  const Simulator other(directory.path(), {"--codebase-url", "http://" + server().authority()});

  Check({"servers"});
  Check({"check", "sim"});
  Check({"check", other.url()});
  Check({"check", dead}, 3);
  Check({"ls"});
  Check({"ls", "//sim"});
  Check({"ls", "-l", "--versions", "//sim/Products/Trekking Bike/Folders/Drivetrain"});
  Check({"ls", "//sim/Products/Trekking Bike/Folders/none"}, 6);
  Check({"tree", "//sim/Products"});
  Check({"info", fork});
  Check({"info", server().Uid("D1015")});
  Check({"info", "//sim/Products/Trekking Bike/Folders"});
  Check({"info", "//sim/?id=D9999"}, 6);
  Check({"status", server().Uid("D1101"), server().Uid("D1015"), fork}, 10);
  Check({"status", server().Uid("D9999")}, 6);
  Check({"versions", fork});
  Check({"uid", fork});
  Check({"path", server().Uid("D1001")});
  Check({"url", fork});
  Check({"get", fork, "--dry-run"});
  Check({"get", fork});
  Check({"get", "nonsense"}, 2);
  Check({"put", "fork.lxz", "//sim/Products/Trekking Bike/Folders/Frame/"});
  Check({"links", fork});
  Check({"edit-url", server().Uid("D1026|W301")});
  Check({"browse-url", fork});
  CheckWhatLooksAround(fork);
  Check({"checkout", server().Uid("D1002")});
  Check({"checkout", server().Uid("D1002")}, 1);
  Check({"verify", server().Uid("D1002")});
  Check({"verify", server().Uid("D1015")}, 1);
  Check({"checkouts"});
  Check({"checkouts", "--on", "sim"});
  LeaveOpenCheckin(server().Uid("D1002"));
  Check({"uid", fork});
  Check({"recover", "--dry-run"});
  Check({"recover"});
  Check({"undo", server().Uid("D1002"), "--dry-run"});
  Check({"undo", server().Uid("D1002")});
  Check({"put", "fork.lxz", fork, "--dry-run"});
  Check({"checkout", server().Uid("D1002"), "--dry-run"});
  Check({"checkout", server().Uid("D1002")});
  Check({"checkin", server().Uid("D1002"), "--dry-run"});
  Check({"checkin", server().Uid("D1002")});
  CheckTranslations();
  CheckWorkFolder();

  ExpectAllWasShown();
}

TEST_F(JsonOutput, OfTheOldestGenerationIsWhatTheDocumentSays) {
  Serve({"--generation", "gateway"});
  Check({"ls", "-l", "--versions", "//sim/Products/Trekking Bike/Folders/Drivetrain"});
  Check({"tree", "//sim/Products"});
  Check({"info", "//sim/Products/Trekking Bike/Folders/Frame/fork.lxz"});
  Check({"versions", "//sim/Products/Trekking Bike/Folders/Frame/fork.lxz|A.2"});
  Check({"status", server().Uid("D1101")}, 10);
}

TEST_F(JsonOutput, IsThatOfAWrongCommandLineToo) {
  Check({"get"}, 2);
  Check({"get", "//sim/a", "--bogus"}, 2);
  Check({"get", "//sim/a", "--stall-timeout", "0"}, 2);
  Check({"xliff", "list"}, 2);
  const ProcessResult none = Run({"--json"});
  EXPECT_EQ(none.out, "");
  EXPECT_EQ(
      none.err,
      "{\"schema\":2,\"command\":\"\",\"error\":\"usage\",\"exit\":2,\"message\":\"no command is given; "
      "see vtdirect --help\",\"retryable\":false,\"advice\":\"see vtdirect --help\"}\n");
}

// What a script does next depends on it.
TEST_F(JsonOutput, TellsWhyACheckoutFailed) {
  const auto classAfter = [this](const std::string& fault) {
    Serve({"--fault", fault});
    const ProcessResult result = Run({"--json", "checkout", server().Uid("D1002")});
    CheckErrors(result.err, "checkout");
    EXPECT_EQ(result.status, 1) << fault << result.err;
    rapidjson::Document json;
    json.Parse(result.err.c_str());
    return std::string(json["error"].GetString()) + (json["retryable"].GetBool() ? " again" : "");
  };
  EXPECT_EQ(classAfter("POST *checkout=409"), "conflict");
  EXPECT_EQ(classAfter("POST *checkout=423"), "locked again");
  EXPECT_EQ(classAfter("POST *checkout=403"), "refused");
  // The server says afterwards that nobody has it checked out.
  EXPECT_EQ(classAfter("POST *checkout=503*1"), "unavailable again");
}

}  // namespace vtdirect_test
