#include <stdexcept>

#include "browsing/folder_contents.h"
#include "tests/wire/browsing/browsing_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;

constexpr const char* folder = "Containers('C100')/Folders('F1')";

std::string Page(const std::string& rows, const std::string& nextLink) {
  return R"({"value":[)" + rows + R"(],"@odata.nextLink":")" + nextLink + R"("})";
}

class FolderPaging : public BrowsingTest {
 protected:
  bool List() { return ListDynamicDocuments(Begin(connection), folder, Collect(), false); }
};

TEST_F(FolderPaging, AnEmptyPageWithoutANextLinkIsTheEnd) {
  transport.Then(200, R"({"value":[]})");
  EXPECT_TRUE(List());
  EXPECT_THAT(entries, IsEmpty());
}

TEST_F(FolderPaging, ANextLinkIsFollowedOnAConnectionOfItsOwn) {
  transport.Then(200, Page(R"({"CADName":"a","ID":"1"})", "https://plm.example/vt/servlet/p2?$skiptoken=x"))
      .Then(200, Page(R"({"CADName":"b","ID":"2"})", "http://other.example:8080/p3"))
      .Then(200, R"({"value":[{"CADName":"c","ID":"3"}]})");
  EXPECT_TRUE(List());
  EXPECT_THAT(entries, ElementsAre("file a id=1", "file b id=2", "file c id=3"));
  ASSERT_EQ(transport.requests().size(), 3U);
  EXPECT_EQ(transport.requests()[1], NextPage("https://plm.example", "/vt/servlet/p2?$skiptoken=x"));
  EXPECT_EQ(transport.requests()[2], NextPage("http://other.example:8080", "/p3"));
}

TEST_F(FolderPaging, ANextLinkIsFollowedWithTheSameAuthentication) {
  std::vector<std::string> askedFor;
  connection = std::make_shared<VtConnection>(serverUrl, [&askedFor](const char* url) {
    askedFor.emplace_back(url);
    return true;
  });
  transport.Then(200, Page("", "http://other.example/p2"));
  Answer demanding;
  demanding.body = R"({"value":[]})";
  demanding.demands = 1;
  transport.Then(demanding);
  EXPECT_TRUE(List());
  EXPECT_THAT(askedFor, ElementsAre("http://other.example"));
}

TEST_F(FolderPaging, TheNeighbourRuleStartsAnewOnEachPage) {
  transport.Then(200, Page(R"({"CADName":"a","ID":"1"},{"CADName":"a","ID":"2"})", "http://other.example/p2"))
      .Then(200, R"({"value":[{"CADName":"a","ID":"3"}]})");
  EXPECT_TRUE(List());
  EXPECT_THAT(entries, ElementsAre("file a id=1", "file a id=3"));
}

TEST_F(FolderPaging, RowsBeforeAFailedPageStayDelivered) {
  std::string rows;
  for (int row = 0; row < 10'000; ++row) {
    rows += (row > 0 ? ",{\"CADName\":\"n" : "{\"CADName\":\"n") + std::to_string(row) + "\",\"ID\":\"i\"}";
  }
  transport.Then(200, Page(rows, "http://other.example/p2")).Then(500);
  EXPECT_FALSE(List());
  EXPECT_EQ(entries.size(), 10'000U);
}

TEST_F(FolderPaging, ABrokenPageFailsWithWhatItHeldBefore) {
  transport.Then(200, R"({"value":[{"CADName":"a","ID":"1"},)").Then(200, R"({"value":[]} x)").Then(204);
  for (int page = 0; page < 3; ++page) EXPECT_FALSE(List());
  EXPECT_THAT(entries, ElementsAre("file a id=1"));
}

TEST_F(FolderPaging, ALongPageIsReadFromATemporaryFileThatIsGoneAfterwards) {
  std::string rows;
  for (int row = 0; row < 30'000; ++row) {
    rows += (row > 0 ? ",{\"CADName\":\"n" : "{\"CADName\":\"n") + std::to_string(row) + "\",\"ID\":\"i\"}";
  }
  ASSERT_GT(rows.size(), 524'288U);
  transport.Then(200, Page(rows, "http://other.example/p2"))
      .Then(200, R"({"value":[)" + rows + "]} trailing");
  EXPECT_FALSE(List());
  EXPECT_EQ(entries.size(), 60'000U);
  EXPECT_EQ(entries.back(), "file n29999 id=i");
}

TEST_F(FolderPaging, ANextLinkToItselfIsFollowedUntilTheServerStops) {
  for (int page = 0; page < 50; ++page) {
    transport.Then(200, Page(R"({"CADName":"a","ID":"1"})", "http://other.example/same"));
  }
  EXPECT_FALSE(List());
  EXPECT_EQ(entries.size(), 50U);
  EXPECT_EQ(transport.requests().size(), 51U);
}

TEST_F(FolderPaging, ACallbackThatThrowsEndsAListingAndLeavesNothingBehind) {
  std::string rows;
  for (int row = 0; row < 30'000; ++row) {
    rows += (row > 0 ? ",{\"CADName\":\"n" : "{\"CADName\":\"n") + std::to_string(row) + "\",\"ID\":\"i\"}";
  }
  transport.Then(200, Page(rows, "http://other.example/same"));
  EXPECT_THROW((void)ListDynamicDocuments(
                   Begin(connection), folder,
                   [](const DirEntryInfoExt&) { throw std::runtime_error("enough"); }, false),
               std::runtime_error);
  EXPECT_THAT(directory.Entries(), IsEmpty());
}

TEST_F(FolderPaging, ANextLinkWithoutASchemeEndsTheListing) {
  for (const char* link : {"/servlet/p2", "servlet/p2"}) {
    transport.Then(200, Page(R"({"CADName":"a","ID":"1"})", link));
    entries.clear();
    EXPECT_FALSE(List()) << link;
    EXPECT_THAT(entries, ElementsAre("file a id=1")) << link;
  }
  EXPECT_EQ(transport.requests().size(), 2U);
}

TEST_F(FolderPaging, ANextLinkWithoutAPathAsksForTheHostsRoot) {
  transport.Then(200, Page("", "http://other.example")).Then(200, R"({"value":[]})");
  EXPECT_TRUE(List());
  EXPECT_EQ(transport.requests()[1], NextPage("http://other.example", ""));
}

TEST_F(FolderPaging, AHostThatCannotBeConnectedEndsTheListing) {
  transport.Then(200, Page(R"({"CADName":"a","ID":"1"})", "http://other.example/p2"));
  transport.RefuseConnections(2);
  EXPECT_FALSE(ListDynamicDocuments(
      Begin(connection), folder,
      [this](const DirEntryInfoExt& entry) { entries.push_back(EntryText(entry)); }, false));
  EXPECT_THAT(entries, ElementsAre("file a id=1"));
}

TEST_F(FolderPaging, SubfoldersArePagedToo) {
  transport.Then(200, Page(R"({"Name":"A"})", "http://other.example/p2"))
      .Then(200, Page(R"({"Name":"B"})", ""));
  EXPECT_TRUE(ListSubfolders(Begin(connection), folder, Collect()));
  EXPECT_THAT(entries, ElementsAre("dir A id=", "dir B id="));
  transport.Then(200, Page(R"({"Name":"C"})", "http://other.example/p2")).Then(500);
  EXPECT_FALSE(ListSubfolders(Begin(connection), folder, Collect()));
  EXPECT_THAT(entries, ElementsAre("dir A id=", "dir B id=", "dir C id="));
}

}  // namespace
}  // namespace vtdirect_test
