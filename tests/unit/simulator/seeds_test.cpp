#include "simulator/seed/seeds.h"

#include <set>

#include "simulator_fixture.h"

namespace vantry_sim {
namespace {

TEST_F(SimulatorTest, EmptySeedHoldsNoDocumentAndAPlaceForOne) {
  options_.seed.kind = Seed::Kind::Empty;
  ASSERT_EQ(GetJson("/servlet/rest/v1/contexts")["items"].Size(), 1U);
  EXPECT_EQ(Column("/servlet/odata/v1/DynamicDocMgmt/DynamicDocuments", "ID").size(), 0U);
  EXPECT_EQ(
      Outcome("/servlet/rest/v1/dkm/workspaces", R"({"name":"w","contextId":"OR:vn.product.Product:101"})"),
      "200");
}

TEST_F(SimulatorTest, BulkSeedTakesTheShapeThatItIsGiven) {
  options_.seed.kind = Seed::Kind::Bulk;
  options_.seed.bulk = *ReadBulkShape("6,folders=2,depth=3,versions=2,name=20-22,size=100-102");
  const auto fourth = GetJson("/servlet/rest/v1/dkm/documents/D1000004");
  EXPECT_STREQ(fourth["locationFolder"]["path"].GetString(), "/Bulk/Level 1/Level 2/Parts 00002");
  EXPECT_STREQ(fourth["iteration"].GetString(), "2");
  EXPECT_EQ(
      GetJson("/servlet/rest/v1/dkm/documents/D1000004/versions?contextId=OR:vn.product.Product:101").Size(),
      2U);
  std::set<std::size_t> names;
  std::set<int> sizes;
  for (int i = 1; i <= 6; ++i) {
    const auto document = GetJson("/servlet/rest/v1/dkm/documents/D100000" + std::to_string(i));
    names.insert(std::string(document["epmMaster"]["cadName"].GetString()).size());
    sizes.insert(document["cadContent"]["contentSections"][0]["fileSize"].GetInt());
  }
  EXPECT_EQ(names, (std::set<std::size_t>{20, 21, 22}));
  EXPECT_EQ(sizes, (std::set<int>{100, 101, 102}));
}

TEST(BulkShape, IsReadWithBoundsThatASlipOfTheFingerMeets) {
  EXPECT_EQ(ReadBulkShape("250")->documents, 250U);
  const auto shape = ReadBulkShape("10,size=5,name=30-40,versions=3,depth=2,folders=4");
  ASSERT_TRUE(shape);
  EXPECT_EQ(shape->folders, 4U);
  EXPECT_EQ(shape->depth, 2U);
  EXPECT_EQ(shape->versions, 3U);
  EXPECT_EQ(shape->name->least, 30U);
  EXPECT_EQ(shape->name->most, 40U);
  EXPECT_EQ(shape->size->least, 5U);
  EXPECT_EQ(shape->size->most, 5U);
  for (const char* wrong :
       {"", "0", "x", "5000001", "10,", "10,folders", "10,folders=0", "10,depth=101", "10,name=9-3",
        "10,name=241", "10,size=-1", "10,colour=3", "5000000,versions=2", ",folders=2"}) {
    EXPECT_FALSE(ReadBulkShape(wrong)) << wrong;
  }
}

TEST_F(SimulatorTest, BulkSeedMakesAsManyDocumentsAsAsked) {
  options_.seed.kind = Seed::Kind::Bulk;
  options_.seed.bulk.documents = 300;
  const auto first = GetJson("/servlet/rest/v1/dkm/documents/D1000001");
  EXPECT_STREQ(first["epmMaster"]["cadName"].GetString(), "part 0000001.lxz");
  EXPECT_STREQ(first["locationFolder"]["path"].GetString(), "/Bulk/Parts");
  const auto last = GetJson("/servlet/rest/v1/dkm/documents/D1000300");
  EXPECT_STREQ(last["epmMaster"]["number"].GetString(), "BULK-0000300");
  EXPECT_EQ(Get("/servlet/rest/v1/dkm/documents/D1000301").status, 404);
}

TEST_F(SimulatorTest, EveryDemoContentIsAFileOfItsAnnouncedSize) {
  Start();
  simulator_.reset();
  Database database((directory_ / "data/vantry-sim.db").string());
  auto streams = database.Prepare("SELECT id, size FROM streams");
  int count = 0;
  for (; streams.Step(); ++count) {
    const auto file = directory_ / "data/content" / std::to_string(streams.Integer(0));
    EXPECT_EQ(std::filesystem::file_size(file), static_cast<std::uintmax_t>(streams.Integer(1))) << file;
  }
  EXPECT_GT(count, 40);
}

TEST_F(SimulatorTest, DemoLargeContentIsAsLongAsAskedAndTheSameEverywhere) {
  options_.seed.largeBytes = 100'003;
  Start();
  const std::string bytes = ReadFile(directory_ / "data/content/10090");
  ASSERT_EQ(bytes.size(), 100'003U);
  // The first word of xorshift64 from 0x9E3779B97F4A7C15 ^ 10090, worked out apart, little-endian.
  constexpr unsigned char firstBytes[] = {0x09, 0xF0, 0x5F, 0x74, 0x67, 0x7E, 0x1B, 0xDC};
  for (std::size_t i = 0; i < 8; ++i) EXPECT_EQ(static_cast<unsigned char>(bytes[i]), firstBytes[i]) << i;
}

TEST_F(SimulatorTest, DemoHasExactlyOneLatestVersionPerCheckedInMaster) {
  Start();
  simulator_.reset();
  Database database((directory_ / "data/vantry-sim.db").string());
  auto odd = database.Prepare(
      "SELECT m.cad_name FROM masters m WHERE (SELECT count(*) FROM iterations i WHERE i.master = m.id AND "
      "i.is_latest = 1) <> 1");
  while (odd.Step()) ADD_FAILURE() << odd.Text(0);
}

TEST_F(SimulatorTest, DemoTellsOfTwoRootsTwoUsersAndTheirWorkspaces) {
  Start();
  simulator_.reset();
  Database database((directory_ / "data/vantry-sim.db").string());
  const auto count = [&](const char* sql) {
    auto statement = database.Prepare(sql);
    return statement.Step() ? statement.Integer(0) : -1;
  };
  EXPECT_EQ(
      count("SELECT count(*) FROM folders f JOIN contexts c ON c.id = f.context WHERE f.parent IS NULL AND "
            "c.name = 'Trekking Bike'"),
      2);
  EXPECT_EQ(count("SELECT count(*) FROM users"), 2);
  EXPECT_EQ(count("SELECT count(*) FROM workspaces w JOIN users u ON u.id = w.owner WHERE u.name = 'anna'"),
            2);
  EXPECT_EQ(count("SELECT count(*) FROM workspaces w JOIN users u ON u.id = w.owner WHERE u.name = 'bruno'"),
            1);
}

TEST_F(SimulatorTest, DemoXliffNamesItsLanguages) {
  Start();
  const std::pair<const char*, const char*> languages[] = {
      {"10290", "source-language=\"en\" datatype"},
      {"10300", "source-language=\"en\" target-language=\"de\""},
      {"10310", "source-language=\"en\" target-language=\"fr\""}};
  for (const auto& [stream, text] : languages) {
    const std::string xliff = ReadFile(directory_ / "data/content" / stream);
    EXPECT_NE(xliff.find("<xliff xmlns=\"urn:oasis:names:tc:xliff:document:1.2\" version=\"1.2\">"),
              std::string::npos)
        << stream;
    EXPECT_NE(xliff.find(text), std::string::npos) << stream;
    EXPECT_NE(xliff.find("Wear gloves."), std::string::npos) << stream;
  }
}

TEST_F(SimulatorTest, SecondStartKeepsWhatIsThereWhateverTheSeed) {
  Start();
  options_.seed.kind = Seed::Kind::Empty;
  Start();
  EXPECT_EQ(Get("/servlet/rest/v1/dkm/documents/D1001").status, 200);
}

TEST_F(SimulatorTest, SeedingThatWasCutOffStartsAnew) {
  std::filesystem::create_directories(directory_ / "data/content");
  { std::ofstream(directory_ / "data/content/10010") << "half"; }
  const auto document = GetJson("/servlet/rest/v1/dkm/documents/D1001");
  const auto size = document["cadContent"]["contentSections"][0]["fileSize"].GetUint64();
  EXPECT_EQ(std::filesystem::file_size(directory_ / "data/content/10010"), size);
  EXPECT_GT(size, 4U);
}

TEST_F(SimulatorTest, DataDirectoryIsForOneSimulatorAtATime) {
  Start();
  EXPECT_THROW(Simulator second(options_), std::runtime_error);
}

TEST_F(SimulatorTest, WhoCanLogInIsAUser) {
  options_.users = {{"carla", "pw"}};
  Start();
  simulator_.reset();
  Database database((directory_ / "data/vantry-sim.db").string());
  auto user = database.Prepare("SELECT 1 FROM users WHERE name = 'carla'");
  EXPECT_TRUE(user.Step());
}

}  // namespace
}  // namespace vantry_sim
