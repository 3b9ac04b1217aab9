#include <gmock/gmock.h>

#include "tests/e2e/cli/checkout_fixture.h"

using testing::HasSubstr;

namespace vtdirect_test {
namespace {

constexpr const char* newPath = "//sim/Products/Trekking Bike/Folders/Frame/new.lxz";
// Another gear.lxz is in the folder Drivetrain.
constexpr const char* besideNamesake = "//sim/Products/Trekking Bike/Folders/Frame/gear.lxz";
// SHA-256 of "new content", as sha256sum tells it.
constexpr const char* sum = "fe32608c9ef5b6cf7e3f946480253ff76f24f4ec0678f3d0f07f9844cbff9601";

}  // namespace

/// What `recover` finds out about a document whose creation was not confirmed.
class RecoveredCreation : public CheckoutTest {
 protected:
  void SetUp() override { WriteFile(Here("f"), "new content"); }

  void LeaveCreationOpen(const std::string& path) {
    WriteHome(
        ".local/state/vtdirect/journal",
        "vtdirect-journal 1\n1:1\t2026-01-31T09:00:00Z\tcreate\t" + path + "\t" + path + "\tf\t" + sum + "\n",
        0600);
  }

  void ExpectSettled(const std::string& path, const std::string& words) {
    LeaveCreationOpen(path);
    const ProcessResult result = Run({"recover"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("\tcreate\t" + path + "\tyes\t"));
    EXPECT_THAT(result.out, HasSubstr(words));
    EXPECT_EQ(Run({"recover"}).out, "");
  }

  void ExpectOpen(const std::string& path) {
    LeaveCreationOpen(path);
    const std::string before = ReadFile(Home(".local/state/vtdirect/journal"));
    const ProcessResult result = Run({"recover"});
    EXPECT_EQ(result.status, 11) << result.out;
    EXPECT_THAT(result.out, HasSubstr("could not be found out"));
    EXPECT_EQ(ReadFile(Home(".local/state/vtdirect/journal")), before);
  }
};

TEST_F(RecoveredCreation, IsStoredWhenTheDocumentHasTheBytes) {
  Serve();
  ASSERT_EQ(Run({"put", "f", newPath}).status, 0);
  ExpectSettled(newPath, "f is stored in " + server().Uid(""));
}

TEST_F(RecoveredCreation, IsNotTakenForStoredWhenTheDocumentHasOtherBytes) {
  Serve();
  WriteFile(Here("g"), "somebody else's");
  ASSERT_EQ(Run({"put", "g", newPath}).status, 0);
  ExpectSettled(newPath, " has another content than f had");
}

TEST_F(RecoveredCreation, IsNotDoneWhenThereIsNoDocument) {
  Serve();
  for (const char* path : {newPath, besideNamesake}) {
    ExpectSettled(path,
                  "f was not stored: there is no document " + std::string(path) + "; it can be put again");
  }
}

TEST_F(RecoveredCreation, BesideANamesakeIsThereWhereThePathLeadsToTheNamesake) {
  Serve({"--generation", "gateway"});
  ASSERT_EQ(Run({"put", "f", besideNamesake}).status, 0);
  ExpectSettled(besideNamesake,
                "there is a document " + std::string(besideNamesake) + " now, which was not there");
}

TEST_F(RecoveredCreation, StaysOpenWhileTheServerDoesNotAnswer) {
  Serve();
  ASSERT_EQ(Run({"put", "f", newPath}).status, 0);
  for (const char* fault : {"GET *=503", "GET *documents*=503", "GET *content*=503"}) {
    Restart({"--fault", fault});
    ExpectOpen(newPath);
  }
}

}  // namespace vtdirect_test
