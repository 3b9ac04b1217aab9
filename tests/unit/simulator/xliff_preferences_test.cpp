// Where a source XLIFF goes, and whether what the preferences name can be found by the lists.
#include "simulator/store/xliff_preferences.h"

#include <algorithm>

#include "translation_fixture.h"

namespace vantry_sim {
namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

const std::string dataAdmin = "/servlet/odata/v1/DataAdmin/";

class XliffPreferencesTest : public TranslationTest {
 protected:
  static std::string Target(const std::string& id, const std::string& language = "en") {
    return servicePath + "XliffPreferences(oidForQ7zkDocument='" + id + "',sourceLanguage='" + language +
           "')";
  }

  /// Names and values of all pages, in order.
  Pairs All(std::string target, std::size_t* pages = nullptr) {
    Pairs all;
    while (!target.empty()) {
      const auto page = GetJson(target);
      for (const auto& preference : page["Preferences"].GetArray())
        all.emplace_back(preference["Name"].GetString(), preference["Value"].GetString());
      if (pages != nullptr) ++*pages;
      target = page.HasMember("@odata.nextLink") ? page["@odata.nextLink"].GetString() : "";
    }
    return all;
  }

  std::string Value(const std::string& id, const std::string& name) {
    for (const auto& [key, value] : All(Target(id))) {
      if (key == name) return value;
    }
    return "(missing)";
  }
};

TEST_F(XliffPreferencesTest, SayAllThatAnUploadNeeds) {
  EXPECT_EQ(All(Target("D1028", "en-US")), (Pairs{{"DB_CONTEXT_TYPE", "PRODUCT"},
                                                  {"DB_CONTEXT_NAME", "Trekking Bike"},
                                                  {"CABINET_OID", "OR:vn.folder.Cabinet:201"},
                                                  {"SUB_FOLDER_OID", "OR:vn.folder.SubFolder:218"},
                                                  {"ZVK_DD_TRANSLATE", "yes"},
                                                  {"ZVK_DD_LANGUAGE", "en-US"},
                                                  {"ZVK_DD_EXTENDED_DOC_TYPE", "x-raomSource"},
                                                  {"UPLOAD_SOFT_TYPE", xliffSoftType}}));
}

TEST_F(XliffPreferencesTest, PathStandsInPlaceOfTheIds) {
  options_.xliffFolder = XliffFolder::Path;
  EXPECT_EQ(Value("D1028", "SUB_FOLDER_PATH"), "/Trekking Bike/Translations");
  EXPECT_EQ(Value("D1028", "CABINET_OID"), "(missing)");
  EXPECT_EQ(Value("D1028", "SUB_FOLDER_OID"), "(missing)");
}

TEST_F(XliffPreferencesTest, ContextWithoutSuchAFolderHasItsRoot) {
  EXPECT_EQ(Value("D1020", "DB_CONTEXT_TYPE"), "LIBRARY");
  EXPECT_EQ(Value("D1020", "CABINET_OID"), "OR:vn.folder.Cabinet:204");
  EXPECT_EQ(Value("D1020", "SUB_FOLDER_OID"), "(missing)");
  simulator_.reset();
  options_.xliffFolder = XliffFolder::Path;
  EXPECT_EQ(Value("D1020", "SUB_FOLDER_PATH"), "/Standard Parts");
}

TEST_F(XliffPreferencesTest, ComeInPages) {
  const Pairs whole = All(Target("D1028"));
  simulator_.reset();
  options_.pageSize = 3;
  std::size_t pages = 0;
  EXPECT_EQ(All(Target("D1028"), &pages), whole);
  EXPECT_EQ(pages, 3U);  // eight of them
  simulator_.reset();
  options_.pageSize = 4;
  pages = 0;
  EXPECT_EQ(All(Target("D1028"), &pages), whole);
  EXPECT_EQ(pages, 2U);
}

TEST_F(XliffPreferencesTest, LeaveOutWhatTheyAreToldTo) {
  options_.missingPreferences = {"UPLOAD_SOFT_TYPE", "CABINET_OID"};
  const Pairs left = All(Target("D1028"));
  EXPECT_EQ(left.size(), 6U);
  for (const auto& [name, value] : left) {
    EXPECT_NE(name, "UPLOAD_SOFT_TYPE");
    EXPECT_NE(name, "CABINET_OID");
  }
}

TEST_F(XliffPreferencesTest, AreForDynamicDocumentsOfTheUser) {
  EXPECT_EQ(Get(Target("unknown")).status, 404);
  EXPECT_EQ(Get(Target("D1012")).status, 404);
  EXPECT_EQ(Get(Target("D1025")).status, 404);
  EXPECT_EQ(Get(Target("D1025"), "bruno").status, 200);
  EXPECT_EQ(Get(Target("D%271028")).status, 400);
  EXPECT_EQ(Get(Target("D%27%271028")).status, 404);
}

TEST_F(XliffPreferencesTest, QuestionThatCannotBeReadIsRefused) {
  const std::string function = servicePath + "XliffPreferences(";
  for (const char* arguments :
       {"oidForQ7zkDocument='D1028'", "sourceLanguage='en'", "oidForQ7zkDocument='D1028',sourceLanguage=''",
        "oidForQ7zkDocument='D1028',other='en'", "oidForQ7zkDocument=D1028,sourceLanguage=en",
        "oidForQ7zkDocument='D1028',sourceLanguage='en'x", "oidForQ7zkDocument='D1028',sourceLanguage='en",
        "oidForQ7zkDocument='D1028',oidForQ7zkDocument='D1028',sourceLanguage='en'"}) {
    EXPECT_EQ(Get(function + arguments + ")").status, 400) << arguments;
  }
  EXPECT_EQ(Get(function + "sourceLanguage='en',oidForQ7zkDocument='D1028')").status, 200);
  EXPECT_EQ(Get(Target("D1028") + "?$top=1").status, 501);
  EXPECT_EQ(Get(Target("D1028") + "?$nonsense=1").status, 400);
  for (const char* token : {"x", "-1", "8", "99999999999999999999", ""})
    EXPECT_EQ(Get(Target("D1028") + "?$skiptoken=" + token).status, 400) << token;
}

TEST_F(XliffPreferencesTest, CabinetStandsInOneContainerWithItsTypeAndName) {
  const std::string cabinet = Value("D1028", "CABINET_OID");
  const auto containers = GetJson(dataAdmin + "Containers?$expand=Folders");
  std::vector<std::string> found;
  for (const auto& container : containers["value"].GetArray()) {
    for (const auto& folder : container["Folders"].GetArray()) {
      if (folder["ID"].GetString() == cabinet)
        found.push_back(std::string(container["ID"].GetString()) + " " + container["Type"].GetString() + " " +
                        container["Name"].GetString());
    }
  }
  EXPECT_EQ(found, std::vector<std::string>{"OR:vn.product.Product:101 Product Trekking Bike"});
}

/// The folder with this name and location, in the first branch of the tree.
const rapidjson::Value* InFirstBranch(const rapidjson::Value& rows, const std::string& name,
                                      const std::string& location) {
  for (const auto& row : rows.GetArray()) {
    if (row["Name"].GetString() == name && row.HasMember("Location") &&
        row["Location"].GetString() == location)
      return &row;
    if (row.HasMember("Folders")) return InFirstBranch(row["Folders"], name, location);
  }
  return nullptr;
}

TEST_F(XliffPreferencesTest, PathLeadsToTheFolderThatTheIdsName) {
  const std::string folder = Value("D1028", "SUB_FOLDER_OID");
  simulator_.reset();
  options_.xliffFolder = XliffFolder::Path;
  const std::string path = Value("D1028", "SUB_FOLDER_PATH");
  const auto levels = std::to_string(std::count(path.begin(), path.end(), '/'));
  const auto tree =
      GetJson(dataAdmin + "Containers?$expand=Folders($select=ID,Name,Location;$levels=" + levels +
              ")&$select=Name,ID&$filter=Name%20eq%20%27Trekking%20Bike%27");
  const auto slash = path.rfind('/');
  const auto* found = InFirstBranch(tree["value"], path.substr(slash + 1), path.substr(0, slash));
  ASSERT_NE(found, nullptr);
  EXPECT_EQ((*found)["ID"].GetString(), folder);
}

TEST_F(XliffPreferencesTest, LocationIsWhereAFolderStands) {
  const auto tree = GetJson(
      dataAdmin +
      "Containers('OR:vn.product.Product:101')/Folders?$expand=Folders($levels=3;$select=Name,Location)");
  EXPECT_STREQ(tree["value"][0]["Location"].GetString(), "/");
  const auto& drivetrain = tree["value"][0]["Folders"][0];
  EXPECT_STREQ(drivetrain["Location"].GetString(), "/Trekking Bike");
  EXPECT_STREQ(drivetrain["Folders"][0]["Name"].GetString(), "Chains");
  EXPECT_STREQ(drivetrain["Folders"][0]["Location"].GetString(), "/Trekking Bike/Drivetrain");
}

TEST(XliffQuestion, TextsHoldDoubledApostrophes) {
  const auto question = ParseXliffQuestion("oidForQ7zkDocument='a''b,c=d',sourceLanguage='''e'''");
  ASSERT_TRUE(question);
  EXPECT_EQ(question->document, "a'b,c=d");
  EXPECT_EQ(question->language, "'e'");
  EXPECT_FALSE(ParseXliffQuestion(""));
}

}  // namespace
}  // namespace vantry_sim
