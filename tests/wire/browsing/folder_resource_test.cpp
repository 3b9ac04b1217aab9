#include "browsing/folder_tree.h"

#include "tests/wire/browsing/browsing_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface::vantry;

class FolderResource : public BrowsingTest {
 protected:
  static std::string Resource(const std::shared_ptr<VtConnection>& connection,
                              const std::string& folderPath) {
    return ResolveFolderResource(Begin(connection), "Gadget", "ZVK.DataAdmin.ProductContainer", folderPath);
  }
  static SentRequest Expand(const std::string& levels) {
    return OData(
        "servlet/odata/v1/DataAdmin/Containers/ZVK.DataAdmin.ProductContainer?$expand=Folders($levels=" +
        levels + ";$select=ID,Name)&$select=ID&$filter=Name%20eq%20%27Gadget%27");
  }
};

constexpr const char* defaultRoot =
    R"({"ID":"F1","Name":"Default","Folders":[{"ID":"F2","Name":"Sub","Folders":[{"ID":"F3","Name":"Deep"}]}]})";
constexpr const char* otherRoot =
    R"({"ID":"R1","Name":"Other","Folders":[{"ID":"R2","Name":"Sub","Folders":[{"ID":"R3","Name":"Deep"}]}]})";

std::string Container(const std::string& id, const std::string& roots) {
  return R"({"ID":")" + id + R"(","Folders":[)" + roots + "]}";
}

std::string Page(const std::string& rows, const std::string& nextLink = {}) {
  return R"({"value":[)" + rows + "]" +
         (nextLink.empty() ? "" : R"(,"@odata.nextLink":")" + nextLink + "\"") + "}";
}

TEST_F(FolderResource, IsFoundInOneRequestWithOneLevelMoreThanThePathHas) {
  transport.Then(200, Page(Container("C100", defaultRoot)));
  EXPECT_EQ(Resource(connection, "Sub/Deep/"),
            "Containers('C100')/Folders('F1')/Folders('F2')/Folders('F3')");
  EXPECT_EQ(transport.requests(), Requests{Expand("3")});
}

TEST_F(FolderResource, OfAnEmptyPathIsTheRootFolder) {
  transport.Then(200, Page(Container("C100", defaultRoot)));
  EXPECT_EQ(Resource(connection, ""), "Containers('C100')/Folders('F1')");
  EXPECT_EQ(transport.requests(), Requests{Expand("1")});
}

TEST_F(FolderResource, GoesThroughTheDefaultRootWhicheverComesFirst) {
  transport.Then(200, Page(Container("C100", std::string(otherRoot) + "," + defaultRoot)))
      .Then(200, Page(Container("C100", std::string(defaultRoot) + "," + otherRoot)));
  EXPECT_EQ(Resource(connection, "Sub"), "Containers('C100')/Folders('F1')/Folders('F2')");
  EXPECT_EQ(Resource(connection, "Sub"), "Containers('C100')/Folders('F1')/Folders('F2')");
}

TEST_F(FolderResource, OfNoDefaultRootIsTheLastRootsAndALaterContainerIsThenTried) {
  const std::string emptyRoot = R"({"ID":"E1","Name":"Empty","Folders":[]})";
  transport.Then(200, Page(Container("C1", std::string(otherRoot) + "," + emptyRoot)))
      .Then(200, Page(Container("C1", std::string(otherRoot) + "," + emptyRoot) + "," +
                      Container("C2", otherRoot)));
  EXPECT_EQ(Resource(connection, "Sub"), "");
  EXPECT_EQ(Resource(connection, "Sub"), "Containers('C2')/Folders('R1')/Folders('R2')");
}

TEST_F(FolderResource, KeepsTheFirstContainerUntilOneHasADefaultRoot) {
  transport
      .Then(200,
            Page(Container("C1", otherRoot) + "," + Container("C2", otherRoot), "https://plm.example/vt/p2"))
      .Then(200, Page(Container("C3", defaultRoot) + "," + Container("C4", defaultRoot),
                      "https://plm.example/vt/p3"));
  EXPECT_EQ(Resource(connection, "Sub"), "Containers('C3')/Folders('F1')/Folders('F2')");
  EXPECT_EQ(transport.requests(), (Requests{Expand("2"), NextPage("https://plm.example", "/vt/p2")}));
}

TEST_F(FolderResource, OfAnEarlierPageStandsWhenALaterOneFails) {
  transport.Then(200, Page(Container("C1", otherRoot), "https://plm.example/vt/p2")).Then(500);
  EXPECT_EQ(Resource(connection, "Sub"), "Containers('C1')/Folders('R1')/Folders('R2')");
}

TEST_F(FolderResource, NeedsAContainerWithATextIdAndAnArrayOfFolders) {
  transport.Then(200, R"({"value":[7,{"Folders":[)" + std::string(defaultRoot) + R"(]},{"ID":7,"Folders":[)" +
                          defaultRoot + R"(]},{"ID":"C1","Folders":)" + defaultRoot + R"(},{"ID":"C2"}]})");
  EXPECT_EQ(Resource(connection, "Sub"), "");
}

TEST_F(FolderResource, IsEmptyOnAFailure) {
  transport.Then(404).Then(200, "{\"value\":[").ThenFail(du::http::ErrorCode::TimedOut);
  for (int answer = 0; answer < 3; ++answer) EXPECT_EQ(Resource(connection, "Sub"), "");
}

TEST_F(FolderResource, OfAnAnswerNestedTooDeeplyIsEmpty) {
  std::string open;
  std::string close;
  for (int level = 0; level < 100'000; ++level) {
    open += R"({"ID":"i","Name":"n","Folders":[)";
    close += "]}";
  }
  transport.Then(200, Page(Container("C1", open + close)));
  EXPECT_EQ(Resource(connection, "n"), "");
}

TEST_F(FolderResource, LeavesOutEmptyComponentsAndEscapesTheContextsName) {
  transport.Then(200, Page(Container("C100", defaultRoot)));
  EXPECT_EQ(ResolveFolderResource(Begin(connection), "A'b c", "ZVK.DataAdmin.Site", "//Sub//"),
            "Containers('C100')/Folders('F1')/Folders('F2')");
  EXPECT_EQ(
      transport.requests(),
      Requests{OData("servlet/odata/v1/DataAdmin/Containers/ZVK.DataAdmin.Site?$expand=Folders($levels=2;"
                     "$select=ID,Name)&$select=ID&$filter=Name%20eq%20%27A%27b%20c%27")});
}

}  // namespace
}  // namespace vtdirect_test
