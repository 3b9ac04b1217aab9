// What a host's own tests may look like: a reset before each, faults by the admin port, and a look at what
// was asked.
#include <vtdirect/vt_direct_manager.h>

#include <fstream>
#include <iterator>

#include "vantry_sim.h"

using namespace VtDirectManager;

namespace {

class Documents : public VantrySim {
 protected:
  void SetUp() override {
    VantrySim::SetUp();
    UpdateServerList({{"plm", url.c_str()}});
  }

  bool Fetch(const char* path) {
    std::string uid;
    return GetFile(path, file.c_str(), uid, {}, {});
  }

  const char* const frame = "//plm/Products/Trekking Bike/Folders/Frame/frame.lxz";
  const std::string file = directory + "/fetched";
};

TEST_F(Documents, AreFetchedByTheirPath) {
  ASSERT_TRUE(Fetch(frame));
  std::ifstream stream(file);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), "The second frame.");
}

TEST_F(Documents, AreNotFetchedHalf) {
  Control("POST", "faults", R"({"rule": "GET *content/streams/*=cut:7"})");
  EXPECT_FALSE(Fetch(frame));
}

TEST_F(Documents, AreFetchedAgainInTheNextTest) {
  EXPECT_TRUE(Fetch(frame));
  EXPECT_NE(Control("GET", "requests?path=*content/streams/*&count=1&wait=5000").find("\"status\":200"),
            std::string::npos);
}

TEST_F(Documents, AreSeenAsSomebodyElseLeavesThem) {
  ASSERT_TRUE(FileExists("//plm/?id=D2"));
  Control("DELETE", "documents/D2");
  ShouldInvalidateCache(true);
  EXPECT_FALSE(FileExists("//plm/?id=D2"));
}

}  // namespace
