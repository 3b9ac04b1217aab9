#include "simulator_fixture.h"

namespace vantry_sim {
namespace {

using Texts = std::vector<std::string>;

const std::string trekking =
    "/servlet/rest/snx_gw/organizations/Kettenblitz/vn.product.Product/Trekking%20Bike/folders";

class GatewayTest : public SimulatorTest {
 protected:
  /// The elements of a listing as they stand, sorted.
  Texts Listing(const std::string& target) {
    const auto document = GetJson(target);
    Texts elements;
    for (const auto& element : document["folderContent"].GetArray()) elements.push_back(element.GetString());
    std::sort(elements.begin(), elements.end());
    return elements;
  }
};

TEST_F(GatewayTest, FoldersHaveAPathAndFilesTheirNameBehindTheLastSlash) {
  EXPECT_EQ(Listing(trekking + "?path=Drivetrain%2FChains"),
            (Texts{"organizations/Kettenblitz/Trekking Bike/documents/chain guard 28 inch.lxz",
                   "organizations/Kettenblitz/Trekking Bike/documents/chain.lxz"}));
  const Texts drivetrain = Listing(trekking + "?path=Drivetrain");
  EXPECT_EQ(drivetrain.back(), "organizations/Kettenblitz/Trekking Bike/folders?path=Drivetrain/Chains");
  EXPECT_EQ(drivetrain.size(), 7U);
}

TEST_F(GatewayTest, EmptyPathIsTheDefaultRoot) {
  const Texts root = Listing(trekking);
  EXPECT_EQ(root, Listing(trekking + "?path="));
  EXPECT_EQ(root, Listing(trekking + "?path=%2F"));
  EXPECT_EQ(root.back(), "organizations/Kettenblitz/Trekking Bike/folders?path=Translations");
  EXPECT_EQ(root.size(), 10U);  // six folders, and D1009 to D1012
}

TEST_F(GatewayTest, FolderBelowAnotherRootIsFoundToo) {
  EXPECT_EQ(Listing(trekking + "?path=Jigs"),
            Texts{"organizations/Kettenblitz/Trekking Bike/documents/welding jig.lxz"});
}

TEST_F(GatewayTest, PathWithASlashAtItsEndIsTheSameFolder) {
  EXPECT_EQ(Listing(trekking + "?path=Drivetrain%2F"), Listing(trekking + "?path=Drivetrain"));
}

TEST_F(GatewayTest, DynamicDocumentsComeInFrontOfCadDocuments) {
  const auto document = GetJson(trekking);
  const auto& elements = document["folderContent"];
  EXPECT_STREQ(elements[elements.Size() - 1].GetString(),
               "organizations/Kettenblitz/Trekking Bike/documents/handlebar.asm");
}

TEST_F(GatewayTest, NamesAreRawUnlessTheServerEscapesThem) {
  const std::string place = "organizations/Kettenblitz/Trekking Bike/documents/";
  const Texts raw = Listing(trekking + "?path=Drivetrain");
  EXPECT_EQ(std::count(raw.begin(), raw.end(), place + "odd|\\/<>:\"?*%name.lxz"), 1);
  simulator_.reset();
  options_.gatewayEscapes = true;
  const Texts escaped = Listing(trekking + "?path=Drivetrain");
  EXPECT_EQ(std::count(escaped.begin(), escaped.end(), place + "odd%7c%5c%2f%3c%3e%3a%22%3f%2a%25name.lxz"),
            1);
  EXPECT_EQ(std::count(escaped.begin(), escaped.end(), place + "O'Ring 12mm.lxz"), 1);
}

TEST_F(GatewayTest, EveryGenerationHasTheGateway) {
  for (const auto generation :
       {Generation::Gateway, Generation::Schema1, Generation::Schema4, Generation::Schema5}) {
    simulator_.reset();
    options_.generation = generation;
    EXPECT_EQ(Listing(trekking + "?path=Frame").size(), 3U) << WordOf(generation);
  }
}

TEST_F(GatewayTest, UnknownPlacesAreRefused) {
  EXPECT_EQ(Get(trekking + "?path=Nowhere").status, 404);
  EXPECT_EQ(Get(trekking + "?path=Drivetrain%2FNowhere").status, 404);
  const std::string start = "/servlet/rest/snx_gw/organizations/";
  EXPECT_EQ(Get(start + "Other/vn.product.Product/Trekking%20Bike/folders").status, 404);
  EXPECT_EQ(Get(start + "Kettenblitz/vn.site.Site/Trekking%20Bike/folders").status, 404);
  EXPECT_EQ(Get(start + "Kettenblitz/%25/Trekking%20Bike/folders").status, 404);
  EXPECT_EQ(Get(start + "Kettenblitz/vn.product.Product/Trekking/folders").status, 404);
}

}  // namespace
}  // namespace vantry_sim
