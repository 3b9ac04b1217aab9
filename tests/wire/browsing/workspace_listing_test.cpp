#include "browsing/workspace_listing.h"

#include "tests/wire/browsing/browsing_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface::vantry;

class WorkspaceListing : public BrowsingTest {};

TEST_F(WorkspaceListing, FindsTheFirstOfANameTemporaryOnesIncluded) {
  const char* list = R"([{"id":"W1","name":"a"},{"id":"W2","name":"b"},{"id":"W3","name":"b"},
                         {"id":"W4","name":"FenloomTMP1"}])";
  transport.Then(200, list).Then(200, list).Then(200, list);
  EXPECT_EQ(FindWorkspaceIdByName(Begin(connection), "b", "C 5"), "W2");
  EXPECT_EQ(FindWorkspaceIdByName(Begin(connection), "FenloomTMP1", "C 5"), "W4");
  EXPECT_EQ(FindWorkspaceIdByName(Begin(connection), "B", "C 5"), "");
  EXPECT_EQ(transport.requests(), Requests(3, Rest("servlet/rest/v1/dkm/workspaces?contextId=C%205")));
}

TEST_F(WorkspaceListing, FindsNothingWhenTheListFails) {
  transport.Then(500).Then(200, "{").Then(200, R"({"id":"W1","name":"a"})");
  for (int answer = 0; answer < 3; ++answer)
    EXPECT_EQ(FindWorkspaceIdByName(Begin(connection), "a", "C5"), "");
}

TEST_F(WorkspaceListing, ADirectorysNameIsNotEscapedAndAFilesIs) {
  transport.Then(200, R"([{"id":"W1","name":"a|b"}])").Then(200, R"([{"epmMaster":{"cadName":"a|b"}}])");
  EXPECT_TRUE(ListWorkspaceDirs(Begin(connection), "C5", Collect(), Bits(2)));
  EXPECT_TRUE(ListWorkspaceFiles(Begin(connection), "W/1", Collect(), Bits(1)));
  EXPECT_THAT(entries, ElementsAre("dir a|b id=", "file a%7cb id="));
  EXPECT_EQ(transport.requests().back(), Rest("servlet/rest/v1/dkm/workspaces/W%2F1/documents"));
}

}  // namespace
}  // namespace vtdirect_test
