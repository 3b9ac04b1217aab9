#include <gmock/gmock.h>

#include <atomic>

#include "tests/e2e/cli/meddler.h"
#include "tests/e2e/cli/put_fixture.h"

using testing::HasSubstr;
using testing::Not;

namespace vtdirect_test {
namespace {

const std::string frameFolder = "//sim/Products/Trekking Bike/Folders/Frame/";
const std::string gearAddress = "//sim/Products/Trekking Bike/Folders/Drivetrain/gear.lxz";

// Whether the folder of a path leads to the document, or its name alone.
struct Generation {
  const char* name;
  bool looksIntoFolders;
};

constexpr Generation generations[] = {
    {"gateway", false}, {"schema1", false}, {"schema4", true}, {"schema5", true}};

}  // namespace

/// A new document whose name another one has in another folder. The library leads the path of the new one to
/// the other, as long as there is only that.
class PutBesideNamesake : public PutTest, public testing::WithParamInterface<Generation> {
 protected:
  void SetUp() override {
    Serve({"--generation", GetParam().name});
    WriteFile(Here("gear.lxz"), "a new gear");
    before_ = Content(gearAddress);
  }

  // The namesake is as it was.
  void TearDown() override {
    EXPECT_EQ(Content(gearAddress), before_);
    EXPECT_EQ(DocumentOf(server(), "D1003").version, "B.2");
    PutTest::TearDown();
  }

  std::string before_;
};

INSTANTIATE_TEST_SUITE_P(Generations, PutBesideNamesake, testing::ValuesIn(generations),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(PutBesideNamesake, CreatesADocument) {
  const ProcessResult result = Run({"put", "gear.lxz", frameFolder});
  EXPECT_EQ(result.status, 0) << result.err;
  const std::string id = IdIn(result.out);
  EXPECT_NE(id, "D1003");
  EXPECT_EQ(result.err, "vtdirect: created " + frameFolder + "gear.lxz from gear.lxz, 10 bytes\n");
  const ServerDocument document = DocumentOf(server(), id);
  EXPECT_EQ(document.name, "gear.lxz");
  EXPECT_EQ(document.folder, "/Trekking Bike/Frame");
  EXPECT_EQ(document.bytes, "a new gear");
}

// A server that is asked by the name alone leads the path to the other one still, and must not get a third.
TEST_P(PutBesideNamesake, NeverCreatesASecondDocumentInTheFolder) {
  const std::string first = IdIn(Run({"put", "gear.lxz", frameFolder}).out);
  WriteFile(Here("gear.lxz"), "a newer gear");
  const ProcessResult result = Run({"put", "gear.lxz", frameFolder + "gear.lxz"});
  if (GetParam().looksIntoFolders) {
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(DocumentOf(server(), IdIn(result.out)).version, "A.2");
    return;
  }
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err,
            "vtdirect: there is a document " + frameFolder +
                "gear.lxz already, and the server leads this path to another one of that name, " +
                server().Uid("D1003") +
                "&file=/gear.lxz; nothing was sent; give the UID of the document that is meant\n");
  EXPECT_EQ(DocumentOf(server(), first).bytes, "a new gear");
}

TEST_P(PutBesideNamesake, IsRefusedWhereAVersionSaysThatADocumentIsMeant) {
  const ProcessResult result = Run({"put", "gear.lxz", frameFolder + "gear.lxz|B.2"});
  EXPECT_EQ(result.status, 6);
  EXPECT_THAT(result.err, HasSubstr("is in korvufenloom-vfs://sim/Products/Trekking Bike/Folders/"
                                    "Drivetrain/; nothing was changed; "));
  EXPECT_THAT(server().Log(), Not(HasSubstr("\"POST\"")));
}

TEST_P(PutBesideNamesake, IsRefusedWithoutAFolder) {
  const ProcessResult result = Run({"put", "gear.lxz", "//sim/Products/Trekking Bike/Folders/None/gear.lxz"});
  EXPECT_EQ(result.status, 6);
  EXPECT_THAT(result.err, HasSubstr("there is no folder"));
  EXPECT_THAT(server().Log(), Not(HasSubstr("\"POST\"")));
}

/// With the services of today.
class PutBesideNamesakeFails : public PutTest {};

// The document that the name leads to is not taken for that of the path.
TEST_F(PutBesideNamesakeFails, WhenItIsNotKnownWhereTheNamesakeIs) {
  Serve();
  WriteFile(Here("gear.lxz"), "a new gear");
  const std::string before = Content(gearAddress);
  for (int at = 0; at < 6; ++at) {
    std::atomic<int> number = 0;
    Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
      if (request.target.ends_with("/documents/D1003") && number++ == at) return peer.Answer(503, "{}");
      peer.Send(forward());
    });
    environment_["http_proxy"] = meddler.Url();
    static_cast<void>(Run({"put", "gear.lxz", frameFolder}));
    environment_.erase("http_proxy");
    EXPECT_EQ(Content(gearAddress), before) << at;
  }
}

TEST_F(PutBesideNamesakeFails, WhenTheFolderCannotBeListed) {
  Serve({"--fault", "GET *FolderContents/ZVK.DynamicDocMgmt.DynamicDocument?*=503"});
  WriteFile(Here("gear.lxz"), "a new gear");
  const ProcessResult result = Run({"put", "gear.lxz", frameFolder});
  EXPECT_NE(result.status, 0);
  EXPECT_THAT(result.err, HasSubstr("nothing was sent"));
  EXPECT_THAT(server().Log(), Not(HasSubstr("\"POST\"")));
}

}  // namespace vtdirect_test
