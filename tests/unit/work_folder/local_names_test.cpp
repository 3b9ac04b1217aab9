#include "hosts/cli/work_folder/local_names.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace vtdirect_cli {
namespace {

std::vector<std::string> NamesIn(const NamedEntries& entries) {
  std::vector<std::string> names;
  for (const auto& [name, document] : entries.documents) names.push_back(name);
  return names;
}

}  // namespace

TEST(LocalNames, AreThoseOfAPathMadeFitForADisk) {
  const auto entries = NameEntries({{"fork.lxz", "1", {}, {}},
                                    {".profile", "2", {}, {}},
                                    {"..", "3", {}, {}},
                                    {"a%2fb", "4", {}, {}},
                                    {"bell\x07", "5", {}, {}}},
                                   {".vtdirect", "Größen"});
  EXPECT_THAT(NamesIn(entries), ElementsAre("%2e.", "%2eprofile", "a%2fb", "bell%07", "fork.lxz"));
  EXPECT_EQ(entries.folders.at("%2evtdirect"), ".vtdirect");
  EXPECT_EQ(entries.folders.at("Größen"), "Größen");
  EXPECT_THAT(entries.nameless, IsEmpty());
}

TEST(LocalNames, TellOfAFolderWhoseNameAnotherOneTakes) {
  const auto entries = NameEntries({}, {"..", "%2e.", "a", "a"});
  EXPECT_EQ(entries.folders.at("%2e."), "..");
  EXPECT_EQ(entries.folders.size(), 2U);
  EXPECT_THAT(entries.nameless, ElementsAre("%2e."));
}

TEST(LocalNames, CountRowsOfOneDocumentOnce) {
  const auto entries =
      NameEntries({{"a", "7", {"A.1"}, {"D1"}}, {"a", "7", {"A.2", "A.1"}, {"D2", "D1"}}}, {});
  ASSERT_THAT(NamesIn(entries), ElementsAre("a"));
  EXPECT_THAT(entries.documents.at("a").ids, ElementsAre("D2", "D1"));
  const auto numberless =
      NameEntries({{"a", "", {"A.2", "A.1"}, {"D2", "D1"}}, {"a", "", {"A.1"}, {"D1"}}}, {});
  EXPECT_THAT(numberless.documents.at("a").ids, ElementsAre("D2", "D1"));
}

TEST(LocalNames, KeepTwoDocumentsOfOneNameApartWhateverTheirOrder) {
  const ListedDocument one{"fork.lxz", "0000100001", {"A.1"}, {"D1"}};
  const ListedDocument two{"fork.lxz", "0000100002", {"A.1"}, {"D2"}};
  for (const auto& entries : {NameEntries({one, two}, {}), NameEntries({two, one}, {})}) {
    ASSERT_THAT(NamesIn(entries), ElementsAre("fork%(0000100002).lxz", "fork.lxz"));
    EXPECT_THAT(entries.documents.at("fork.lxz").ids, ElementsAre("D1"));
    EXPECT_THAT(entries.documents.at("fork%(0000100002).lxz").ids, ElementsAre("D2"));
  }
}

// The first one comes after the second one, and goes again.
TEST(LocalNames, StayWithTheDocumentsThatHaveThem) {
  const ListedDocument one{"fork.lxz", "0000100001", {"A.1"}, {"D1"}};
  const ListedDocument two{"fork.lxz", "0000100002", {"A.2", "A.1"}, {"D3", "D2"}};
  const KeptNames keptOfTwo = {{"D2", {"fork.lxz", "fork.lxz"}}};
  const auto both = NameEntries({one, two}, {}, keptOfTwo);
  ASSERT_THAT(NamesIn(both), ElementsAre("fork%(0000100001).lxz", "fork.lxz"));
  EXPECT_THAT(both.documents.at("fork.lxz").ids, ElementsAre("D3", "D2"));
  const auto left = NameEntries({two}, {}, {{"D3", {"fork%(0000100002).lxz", "fork.lxz"}}});
  EXPECT_THAT(NamesIn(left), ElementsAre("fork%(0000100002).lxz"));
}

TEST(LocalNames, FollowADocumentThatIsCalledAnotherWay) {
  const ListedDocument renamed{"gabel.lxz", "0000100001", {"A.1"}, {"D1"}};
  EXPECT_THAT(NamesIn(NameEntries({renamed}, {}, {{"D1", {"fork.lxz", "fork.lxz"}}})),
              ElementsAre("gabel.lxz"));
}

TEST(LocalNames, AreNeverThoseOfTwoDocuments) {
  const ListedDocument one{"fork.lxz", "0000100001", {"A.1"}, {"D1"}};
  const ListedDocument two{"fork.lxz", "0000100002", {"A.1"}, {"D2"}};
  const auto entries =
      NameEntries({one, two}, {}, {{"D1", {"fork.lxz", "fork.lxz"}}, {"D2", {"fork.lxz", "fork.lxz"}}});
  EXPECT_THAT(NamesIn(entries), ElementsAre("fork%(0000100002).lxz", "fork.lxz"));
}

TEST(LocalNames, KeepDocumentsApartThatOnlyADiskTakesForOne) {
  const auto entries = NameEntries({{"\x01", "1", {}, {}}, {"%01", "2", {}, {}}}, {});
  EXPECT_EQ(entries.documents.size(), 2U);
}

TEST(LocalNames, KeepAFolderApartFromADocumentOfItsName) {
  const auto entries = NameEntries({{"notes", "1", {}, {}}}, {"notes"});
  EXPECT_THAT(NamesIn(entries), ElementsAre("notes"));
  EXPECT_EQ(entries.folders.at("notes%(folder)"), "notes");
}

// All that is in it would be fetched anew, beside what is here.
TEST(LocalNames, KeepThatOfAFolderWhenADocumentOfThatNameComesOrGoes) {
  const std::vector<ListedDocument> documents = {{"Frame", "7", {}, {}}};
  const auto come = NameEntries(documents, {"Frame"}, {}, {{"Frame", "Frame"}});
  EXPECT_THAT(come.folders, ElementsAre(Pair("Frame", "Frame")));
  EXPECT_THAT(NamesIn(come), ElementsAre("Frame%(7)"));
  const auto gone = NameEntries({}, {"Frame"}, {}, {{"Frame", "Frame%(folder)"}});
  EXPECT_THAT(gone.folders, ElementsAre(Pair("Frame%(folder)", "Frame")));
  // A name that was never made of the folder's is none to keep.
  const auto other = NameEntries(documents, {"Frame"}, {}, {{"Frame", "Fork"}});
  EXPECT_THAT(other.folders, ElementsAre(Pair("Frame%(folder)", "Frame")));
}

TEST(LocalNames, LeaveOutWhatCannotStandInAPath) {
  const auto entries = NameEntries({{"", "1", {}, {}}, {"a/../../b", "2", {}, {}}}, {"c/d"});
  EXPECT_THAT(NamesIn(entries), IsEmpty());
  EXPECT_TRUE(entries.folders.empty());
  EXPECT_THAT(entries.nameless, ElementsAre("", "a/../../b", "c/d"));
}

}  // namespace vtdirect_cli
