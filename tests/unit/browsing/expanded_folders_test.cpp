#include "browsing/expanded_folders.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "connection/json_parsing.h"
#include "platform/files.h"

namespace lxservices::cms_interface::vantry {
namespace {

rapidjson::Document Parse(const std::string& text) {
  rapidjson::Document document;
  EXPECT_TRUE(ParseJson(text, document)) << text;
  return document;
}

// A path's components, kept alive beside the iterators.
struct Path {
  explicit Path(const std::string& path) { spec.SetDirPath(path); }
  [[nodiscard]] FolderComponents components() const { return {spec.DirBegin(), spec.DirEnd()}; }
  du::FileSpec spec;
};

std::string Walk(const std::string& json, const std::string& path) {
  const rapidjson::Document document = Parse(json);
  const FolderWalk walk = WalkFolderTree(document, Path(path).components());
  return walk.resource + (walk.isDefault ? " default" : "");
}

std::string IdBelow(const std::string& json, const std::string& path) {
  const rapidjson::Document document = Parse(json);
  return FindFolderIdBelow(document, Path(path).components());
}

constexpr const char* defaultHolding =
    R"({"ID":"F1","Name":"Default","Folders":[{"ID":"F2","Name":"Sub","Folders":[{"ID":"F3","Name":"Deep"}]}]})";
constexpr const char* otherHolding =
    R"({"ID":"R1","Name":"Other","Folders":[{"ID":"R2","Name":"Sub","Folders":[{"ID":"R3","Name":"Deep"}]}]})";
constexpr const char* otherEmpty = R"({"ID":"E1","Name":"Empty","Folders":[]})";

std::string Roots(std::initializer_list<const char*> roots) {
  std::string text = "[";
  for (const char* root : roots) text.append(text.size() > 1 ? "," : "").append(root);
  return text + "]";
}

TEST(FolderWalkTest, AnEmptyPathGivesTheRootFolder) {
  EXPECT_EQ(Walk(defaultHolding, ""), "Folders('F1') default");
  EXPECT_EQ(Walk(otherHolding, ""), "Folders('R1')");
}

TEST(FolderWalkTest, AComponentIsLookedForUnderTheRootFolder) {
  EXPECT_EQ(Walk(defaultHolding, "Sub"), "Folders('F1')/Folders('F2') default");
  EXPECT_EQ(Walk(defaultHolding, "Sub/Deep/"), "Folders('F1')/Folders('F2')/Folders('F3') default");
  EXPECT_EQ(Walk(defaultHolding, "Default"), "");
  EXPECT_EQ(Walk(defaultHolding, "sub"), "");
}

TEST(FolderWalkTest, TheDefaultRootWinsWhereverItStands) {
  EXPECT_EQ(Walk(Roots({otherHolding, defaultHolding}), "Sub"), "Folders('F1')/Folders('F2') default");
  EXPECT_EQ(Walk(Roots({defaultHolding, otherHolding}), "Sub"), "Folders('F1')/Folders('F2') default");
}

TEST(FolderWalkTest, WithoutADefaultRootTheLastElementStandsEvenWhenItIsEmpty) {
  EXPECT_EQ(Walk(Roots({otherEmpty, otherHolding}), "Sub"), "Folders('R1')/Folders('R2')");
  EXPECT_EQ(Walk(Roots({otherHolding, otherEmpty}), "Sub"), "");
  EXPECT_EQ(Walk(Roots({otherHolding, "7"}), "Sub"), "");
  EXPECT_EQ(Walk(Roots({otherHolding, otherEmpty}), ""), "Folders('E1')");
}

TEST(FolderWalkTest, ADefaultRootThatDoesNotHoldThePathDoesNotEndTheWalk) {
  const char* emptyDefault = R"({"ID":"F1","Name":"Default","Folders":[]})";
  EXPECT_EQ(Walk(Roots({emptyDefault, otherHolding}), "Sub"), "Folders('R1')/Folders('R2')");
}

TEST(FolderWalkTest, NothingComesOfAnEmptyArrayOrAnotherType) {
  for (const char* json : {"[]", "null", "7", R"("Default")", "true", "[[],[[]]]"}) {
    EXPECT_EQ(Walk(json, ""), "") << json;
  }
}

TEST(FolderWalkTest, ARootWithoutAnIdGivesAnEmptyOne) {
  EXPECT_EQ(Walk(R"({"Name":"Default"})", ""), "Folders('') default");
  EXPECT_EQ(Walk(R"({"ID":7,"Name":"Default","Folders":[{"ID":"F2","Name":"Sub"}]})", "Sub"),
            "Folders('')/Folders('F2') default");
}

TEST(FolderWalkTest, AFolderOnTheWayNeedsAnId) {
  for (const char* id : {R"("ID":"",)", R"("ID":7,)", R"("ID":null,)", ""}) {
    const std::string json = std::string(R"({"ID":"F1","Name":"Default","Folders":[{)") + id +
                             R"("Name":"Sub","Folders":[{"ID":"F3","Name":"Deep"}]}]})";
    EXPECT_EQ(Walk(json, "Sub"), "") << json;
    EXPECT_EQ(Walk(json, "Sub/Deep"), "") << json;
    EXPECT_EQ(IdBelow(json, "Sub"), "") << json;
    EXPECT_EQ(IdBelow(json, "Sub/Deep"), "F3") << json;
  }
}

TEST(FolderWalkTest, TheFirstChildOfANameIsTakenWithoutAWayBack) {
  const char* json =
      R"({"ID":"F1","Name":"Default","Folders":[{"ID":"F2","Name":"Sub"},
          {"ID":"F4","Name":"Sub","Folders":[{"ID":"F5","Name":"Deep"}]}]})";
  EXPECT_EQ(Walk(json, "Sub"), "Folders('F1')/Folders('F2') default");
  EXPECT_EQ(Walk(json, "Sub/Deep"), "");
}

TEST(FolderWalkTest, ChildrenAreFoundDepthFirstThroughArraysAndInASingleObject) {
  EXPECT_EQ(Walk(R"({"ID":"F1","Name":"Default","Folders":[1,[[{"ID":"F2","Name":"Sub"}]],null]})", "Sub"),
            "Folders('F1')/Folders('F2') default");
  EXPECT_EQ(Walk(R"({"ID":"F1","Name":"Default","Folders":{"ID":"F2","Name":"Sub"}})", "Sub"),
            "Folders('F1')/Folders('F2') default");
}

TEST(FolderWalkTest, ANameMayHoldAZeroByte) {
  const std::string json = R"({"ID":"F1","Name":"Default","Folders":[{"ID":"F2","Name":"Sub\u0000x"}]})";
  EXPECT_EQ(Walk(json, "Sub"), "");
  EXPECT_EQ(Walk(json, std::string("Sub\0x", 5)), "Folders('F1')/Folders('F2') default");
}

TEST(FolderWalkTest, TheDeepestTreeThatIsReadCanBeWalked) {
  std::string open;
  std::string close;
  std::string path;
  for (std::size_t level = 0; level < maximumJsonDepth / 2; ++level) {
    open += R"({"ID":"i","Name":"n","Folders":[)";
    close += "]}";
    path += "n/";
  }
  const std::string json = open + close;
  path.resize(path.size() - 2);
  EXPECT_EQ(Walk(json, path).size(), std::string("Folders('i')/").size() * maximumJsonDepth / 2 - 1);
  EXPECT_EQ(IdBelow(json, path), "i");
  EXPECT_EQ(Walk(json, path + "n/n/n"), "");
}

TEST(FolderWalkTest, APathOfAMillionComponentsCostsNoStack) {
  std::string path;
  for (int component = 0; component < 1'000'000; ++component) path += "Sub/";
  EXPECT_EQ(Walk(defaultHolding, path), "");
  EXPECT_EQ(IdBelow(defaultHolding, path), "");
}

TEST(FolderIdBelow, AnEmptyPathGivesNothing) {
  EXPECT_EQ(IdBelow(defaultHolding, ""), "");
  EXPECT_EQ(IdBelow(defaultHolding, "/"), "");
  EXPECT_EQ(IdBelow(defaultHolding, "Sub/Deep"), "F3");
  EXPECT_EQ(IdBelow(defaultHolding, "Sub/Nowhere"), "");
  EXPECT_EQ(IdBelow("[]", "Sub"), "");
}

}  // namespace
}  // namespace lxservices::cms_interface::vantry
