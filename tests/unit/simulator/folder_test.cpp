#include "simulator_fixture.h"

namespace vantry_sim {
namespace {

using Texts = std::vector<std::string>;

class FolderTest : public SimulatorTest {
 protected:
  Texts Names(const std::string& target) {
    const auto document = GetJson(target);
    Texts names;
    for (const auto& item : document["items"].GetArray()) {
      EXPECT_TRUE(item["id"].IsString());
      names.push_back(item["attributes"]["name"].GetString());
    }
    return names;
  }
};

TEST_F(FolderTest, ContextShowsWhatIsRightBelowItsRoots) {
  EXPECT_EQ(
      Names("/servlet/rest/v1/contexts/OR%3Avn.product.Product%3A101/folders"),
      (Texts{"Drivetrain", "Frame", "Größen & Maße", "Manuals", "Nothing yet", "Translations", "Jigs"}));
  EXPECT_EQ(Get("/servlet/rest/v1/contexts/unknown/folders").status, 404);
}

TEST_F(FolderTest, FolderShowsItsFolders) {
  EXPECT_EQ(Names("/servlet/rest/v1/folders/OR%3Avn.folder.SubFolder%3A212/folders"), Texts{"Chains"});
  EXPECT_EQ(Names("/servlet/rest/v1/folders/OR%3Avn.folder.SubFolder%3A213/folders"), Texts{});
  EXPECT_EQ(Get("/servlet/rest/v1/folders/unknown/folders").status, 404);
}

}  // namespace
}  // namespace vantry_sim
