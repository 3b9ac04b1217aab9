// Lists that come in pages, and where their later pages are.
#include <set>
#include <thread>

#include "raw_client.h"
#include "simulator/wire/server_group.h"
#include "simulator_fixture.h"

namespace vantry_sim {
namespace {

const std::string bulkFolder =
    "/servlet/odata/v5/DataAdmin/Containers('OR:vn.product.Product:101')/Folders('OR:vn.folder.Cabinet:201')"
    "/Folders('OR:vn.folder.SubFolder:211')/FolderContents/"
    "ZVK.DynamicDocMgmt.DynamicDocument?$select=CADName,ID";
const std::string drivetrainFolder =
    "/servlet/odata/v5/DataAdmin/Containers('OR:vn.product.Product:101')/Folders('OR:vn.folder.Cabinet:201')"
    "/Folders('OR:vn.folder.SubFolder:212')/FolderContents/ZVK.DynamicDocMgmt.DynamicDocument";

class PagingTest : public SimulatorTest {
 protected:
  void SeedBulk(std::uint32_t documents) {
    options_.seed.kind = Seed::Kind::Bulk;
    options_.seed.bulk.documents = documents;
  }

  /// The IDs of every page, in order; each page's size goes to `sizes`.
  std::vector<std::string> AllIds(std::string target, std::vector<std::size_t>* sizes = nullptr,
                                  const std::string& prefer = {}) {
    std::vector<std::string> ids;
    for (int page = 0; page < 1000 && !target.empty(); ++page) {
      const Response response = Get(target, "anna", prefer);
      EXPECT_EQ(response.status, 200) << target;
      rapidjson::Document document;
      document.Parse(response.body.c_str());
      if (sizes != nullptr) sizes->push_back(document["value"].Size());
      for (const auto& row : document["value"].GetArray()) ids.push_back(row["ID"].GetString());
      target = document.HasMember("@odata.nextLink") ? document["@odata.nextLink"].GetString() : "";
    }
    return ids;
  }
};

TEST_F(PagingTest, EveryRowComesOnceHoweverSmallThePages) {
  SeedBulk(250);
  const std::vector<std::string> whole = AllIds(bulkFolder);
  ASSERT_EQ(whole.size(), 250U);
  EXPECT_EQ(std::set<std::string>(whole.begin(), whole.end()).size(), 250U);
  for (const std::uint32_t size : {1U, 7U, 50U, 125U, 249U, 250U, 251U}) {
    simulator_.reset();
    options_.pageSize = size;
    EXPECT_EQ(AllIds(bulkFolder), whole) << size;
    EXPECT_EQ(AllIds(bulkFolder + "&$orderby=Version%20desc"), whole) << size;
  }
}

TEST_F(PagingTest, LastPageHasNoLinkEvenWhenItIsFull) {
  SeedBulk(20);
  options_.pageSize = 10;
  std::vector<std::size_t> sizes;
  EXPECT_EQ(AllIds(bulkFolder, &sizes).size(), 20U);
  EXPECT_EQ(sizes, (std::vector<std::size_t>{10, 10}));
}

TEST_F(PagingTest, PagesGoOnAcrossRowsOfDifferentAndOfEqualVersions) {
  const std::vector<std::string> newestFirst{"D1003", "D1007", "D1006", "D1008", "D1015", "D1016"};
  options_.pageSize = 1;
  EXPECT_EQ(AllIds(drivetrainFolder + "?$orderby=Version%20desc"), newestFirst);
  EXPECT_EQ(AllIds(drivetrainFolder + "?$orderby=Version"),
            (std::vector<std::string>{"D1006", "D1008", "D1015", "D1016", "D1007", "D1003"}));
  EXPECT_EQ(AllIds(drivetrainFolder + "?$orderby=Version%20desc,CADName%20desc"),
            (std::vector<std::string>{"D1003", "D1007", "D1016", "D1015", "D1006", "D1008"}));
}

TEST_F(PagingTest, PreferredPageSizeCountsBelowTheServersOwn) {
  SeedBulk(30);
  options_.pageSize = 20;
  std::vector<std::size_t> sizes;
  AllIds(bulkFolder, &sizes, "odata.maxpagesize=10000");
  EXPECT_EQ(sizes, (std::vector<std::size_t>{20, 10}));
  sizes.clear();
  AllIds(bulkFolder, &sizes, "odata.maxpagesize=12");
  EXPECT_EQ(sizes, (std::vector<std::size_t>{12, 12, 6}));
  const Response response = Get(bulkFolder, "anna", "odata.maxpagesize=12");
  EXPECT_EQ(response.headers.back(),
            (std::pair<std::string, std::string>("Preference-Applied", "odata.maxpagesize=12")));
}

TEST_F(PagingTest, TopCountsOverAllPages) {
  SeedBulk(30);
  options_.pageSize = 10;
  std::vector<std::size_t> sizes;
  EXPECT_EQ(AllIds(bulkFolder + "&$top=25", &sizes).size(), 25U);
  EXPECT_EQ(sizes, (std::vector<std::size_t>{10, 10, 5}));
}

TEST_F(PagingTest, NextLinkIsAbsoluteAndKeepsTheQuestion) {
  SeedBulk(30);
  options_.pageSize = 10;
  options_.prefix = "/vt";
  const auto page = GetJson("/vt" + bulkFolder +
                            "&$filter=CADName%20eq%20'part%200000001.lxz'%20or%20Version%20eq%20'A.1'");
  const std::string link = page["@odata.nextLink"].GetString();
  EXPECT_EQ(link.rfind("http://sim.example:8080/vt/servlet/odata/v5/DataAdmin/Containers(", 0), 0U) << link;
  EXPECT_NE(link.find("$select=CADName%2CID&"), std::string::npos) << link;
  EXPECT_NE(link.find("$filter=CADName%20eq%20%27part%200000001.lxz%27"), std::string::npos) << link;
  EXPECT_EQ(link.find(' '), std::string::npos) << link;
  simulator_.reset();
  options_.codebaseUrl = "https://proxy.example/vt";
  const auto after = GetJson("/vt" + bulkFolder);
  EXPECT_EQ(
      std::string(after["@odata.nextLink"].GetString()).rfind("https://proxy.example/vt/servlet/odata/", 0),
      0U);
}

TEST_F(PagingTest, RowsThatGoMeanwhileLoseNoOther) {
  SeedBulk(30);
  options_.pageSize = 10;
  auto page = GetJson(bulkFolder);
  const std::string next = page["@odata.nextLink"].GetString();
  simulator_.reset();
  {
    Database database((directory_ / "data/vantry-sim.db").string());
    database.Execute("UPDATE iterations SET is_latest = 0 WHERE oid IN ('D1000003', 'D1000010', 'D1000011')");
  }
  const auto rest = AllIds(next);
  ASSERT_EQ(rest.size(), 19U);
  EXPECT_EQ(rest.front(), "D1000012");
  EXPECT_EQ(rest.back(), "D1000030");
}

TEST_F(PagingTest, PagePortServesWhatFollows) {
  SeedBulk(25);
  options_.pageSize = 10;
  options_.port = 0;
  options_.pagePort = 0;
  RequestLog log("");
  ServerGroup servers(Start(), log);
  ASSERT_EQ(servers.Bind(), -1);
  std::thread thread([&] { servers.Run(); });
  {
    const std::string host = "127.0.0.1:" + std::to_string(servers.port());
    RawClient first(servers.port());
    first.Send("GET " + bulkFolder + " HTTP/1.1\r\nHost: " + host + "\r\n\r\n");
    rapidjson::Document page;
    page.Parse(first.Read().body.c_str());
    std::string link = page["@odata.nextLink"].GetString();
    ASSERT_EQ(link.rfind("http://127.0.0.1:", 0), 0U) << link;
    const auto slash = link.find('/', 7);
    const int port = std::atoi(link.substr(17, slash - 17).c_str());
    EXPECT_NE(port, servers.port());
    RawClient second(port);
    const auto answer = second.Get(link.substr(slash));
    ASSERT_EQ(answer.status, 200);
    page.Parse(answer.body.c_str());
    EXPECT_EQ(page["value"].Size(), 10U);
    EXPECT_STREQ(page["value"][0]["ID"].GetString(), "D1000011");
    EXPECT_TRUE(page.HasMember("@odata.nextLink"));
  }
  servers.Stop();
  thread.join();
}

}  // namespace
}  // namespace vantry_sim
