#include "public/object_address.h"
#include "public/vt_direct_manager.h"
#include "tests/unit/public/fake_server.h"

namespace {

using namespace VtDirectManager;
using namespace lxservices::cms_interface;
using namespace vtdirect_test;

using UidConversion = FakeServerTest;
using LatestPath = FakeServerTest;
using VersionedPath = FakeServerTest;
using FolderPath = FakeServerTest;
using ServerQuestions = FakeServerTest;
using ObjectAddress = FakeServerTest;

FileInfo Info(const char* id, const char* cadName) {
  FileInfo info;
  info.id = id;
  info.cadName = cadName;
  return info;
}

constexpr const char* uidOfD1 = "korvufenloom-vt://plm.example/vt/?id=D1";

TEST_F(UidConversion, OfAUidWithANameMakesNoRequestAndDropsOtherParameters) {
  EXPECT_EQ(GetUID("korvufenloom-vt://plm.example/vt/?file=/a%20b.lxz&x=1&id=D1|W2"),
            "korvufenloom-vt://plm.example/vt/?id=D1|W2&file=/a%20b.lxz");
  EXPECT_TRUE(answers.calls.empty());
}

TEST_F(UidConversion, OfAUidKeepsANameOfForbiddenCharacters) {
  EXPECT_EQ(GetUID("korvufenloom-vt://plm.example/vt/?id=D1&file=/a%7Cb%25%2F.lxz"),
            "korvufenloom-vt://plm.example/vt/?id=D1&file=/a%7Cb%25%2F.lxz");
}

// Even the server need not be known, since the text holds all there is to say.
TEST_F(UidConversion, OfAUidWithANameAsksForNoServer) {
  EXPECT_EQ(GetUID("korvufenloom-vt://other/?id=D1&file=/a"), "korvufenloom-vt://other/?id=D1&file=/a");
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(UidConversion, OfAUidWithoutANameAsksForTheName) {
  answers.infos["D1"] = Info("D9", "a|b.lxz");
  EXPECT_EQ(GetUID("korvufenloom-vt://plm.example/vt/?id=D1&x=1"),
            "korvufenloom-vt://plm.example/vt/?id=D1&file=/a%7Cb.lxz");
  EXPECT_EQ(answers.calls, Lines{"GetFileInfo(D1)"});
}

TEST_F(UidConversion, OfAUidWhoseNameCannotBeFoundHasNone) {
  EXPECT_EQ(GetUID(uidOfD1), uidOfD1);
  EXPECT_EQ(trace.lines(), (Traces{{3, "VtDirect", std::string("Failed to find file ") + uidOfD1}}));
}

TEST_F(UidConversion, OfAPathAsksForTheObject) {
  answers.idsByPath["Products/Bike/a"] = "D1|W2";
  answers.infos["D1|W2"] = Info("D1|W2", "fork 1.lxz");
  EXPECT_EQ(GetUID("//plm/Products/Bike/a"), "korvufenloom-vt://plm.example/vt/?id=D1|W2&file=/fork%201.lxz");
  EXPECT_EQ(answers.calls, (Lines{"ResolvePath(Products/Bike/a)", "GetFileInfo(D1|W2)"}));
}

TEST_F(UidConversion, OfAPathFailsWhenTheObjectCannotBeRead) {
  answers.idsByPath["a"] = "D1";
  EXPECT_EQ(GetUID("//plm/a"), "");
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(UidConversion, OfAUidWithAnEmptyIdLooksForAnObject) {
  EXPECT_EQ(GetUID("korvufenloom-vt://plm.example/vt/?id=&file=/a"), "");
  EXPECT_EQ(answers.calls, Lines{"ResolvePath()"});
  EXPECT_EQ(trace.lines().front().type, 1);
}

TEST_F(LatestPath, OfAPathIsThatPathWithoutItsVersionAndMakesNoRequest) {
  EXPECT_EQ(GetVFSPathLatest("//plm/K/C/B/a|B.3"), "korvufenloom-vfs://plm/K/C/B/a");
  EXPECT_EQ(GetVFSPathLatest("korvufenloom-vfs://plm/K/C/B/a"), "korvufenloom-vfs://plm/K/C/B/a");
  EXPECT_EQ(GetVFSPathLatest("//plm/a|x|y"), "korvufenloom-vfs://plm/a|x");
  EXPECT_EQ(GetVFSPathLatest("//plm/a|"), "korvufenloom-vfs://plm/a");
  EXPECT_EQ(GetVFSPathLatest("//plm"), "korvufenloom-vfs://plm/");
  EXPECT_TRUE(answers.calls.empty());
}

TEST_F(LatestPath, OfAPathKeepsABarBeforeTheLastSlash) {
  EXPECT_EQ(GetVFSPathLatest("korvufenloom-vfs://plm/K/C/B/a|x/b"), "korvufenloom-vfs://plm/K/C/B/a|x/b");
  EXPECT_EQ(GetVFSPathLatest("//plm/a|x/"), "korvufenloom-vfs://plm/a|x/");
}

TEST_F(LatestPath, TakesTheFirstNicknameOfTheServer) {
  Put<FakeVantry>("alpha", plmKey, plmUrl);
  EXPECT_EQ(GetVFSPathLatest("//plm/a"), "korvufenloom-vfs://alpha/a");
}

TEST_F(LatestPath, TakesTheConfiguredScheme) {
  SetAppConfig(ConfigUriStem, "acme");
  EXPECT_EQ(GetVFSPathLatest("//plm/a"), "acme-vfs://plm/a");
}

TEST_F(LatestPath, OfAUidIsAskedForInItsLatestForm) {
  answers.vfsPath = "Products/Bike/a";
  EXPECT_EQ(GetVFSPathLatest(uidOfD1), "korvufenloom-vfs://plm/Products/Bike/a");
  EXPECT_EQ(answers.calls, Lines{"GetVFSPath(D1 latest)"});
}

TEST_F(LatestPath, IsEmptyOnEveryFailure) {
  EXPECT_EQ(GetVFSPathLatest(uidOfD1), "");
  EXPECT_EQ(GetVFSPathLatest("//nobody/a"), "");
  EXPECT_EQ(GetVFSPathLatest("x"), "");
}

TEST_F(VersionedPath, OfAUidIsAskedFor) {
  answers.vfsPath = "Products/Bike/a|B.3";
  EXPECT_EQ(GetVFSPathVersioned(uidOfD1), "korvufenloom-vfs://plm/Products/Bike/a|B.3");
  EXPECT_EQ(answers.calls, Lines{"GetVFSPath(D1)"});
}

TEST_F(VersionedPath, OfAPathIsThatOfItsObject) {
  answers.idsByPath["a"] = "D1";
  answers.vfsPath = "Products/Bike/a";
  EXPECT_EQ(GetVFSPathVersioned("//plm/a"), "korvufenloom-vfs://plm/Products/Bike/a");
  EXPECT_EQ(answers.calls, (Lines{"ResolvePath(a)", "GetVFSPath(D1)"}));
}

// The path is walked as it is: only an id of a UID spares the walk here.
TEST_F(VersionedPath, OfAPathByIdIsWalkedToo) {
  EXPECT_EQ(GetVFSPathVersioned("//plm/?id=D1"), "");
  EXPECT_EQ(answers.calls, Lines{"ResolvePath(?id=D1)"});
}

TEST_F(VersionedPath, IsEmptyOnEveryFailureWithoutATraceOfItsOwn) {
  EXPECT_EQ(GetVFSPathVersioned("//plm/a"), "");
  EXPECT_EQ(GetVFSPathVersioned(uidOfD1), "");
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(FolderPath, IsAskedForAsAFolder) {
  answers.idsByPath["a"] = "D1";
  answers.vfsPath = "Products/Bike/";
  EXPECT_EQ(GetVFSFolderPath("//plm/a"), "korvufenloom-vfs://plm/Products/Bike/");
  EXPECT_EQ(GetVFSFolderPath(uidOfD1), "korvufenloom-vfs://plm/Products/Bike/");
  EXPECT_EQ(answers.calls, (Lines{"ResolvePath(a)", "GetVFSPath(D1 folder)", "GetVFSPath(D1 folder)"}));
}

TEST_F(FolderPath, IsEmptyOnEveryFailure) {
  EXPECT_EQ(GetVFSFolderPath("//plm/a"), "");
  EXPECT_EQ(GetVFSFolderPath(uidOfD1), "");
}

TEST_F(ServerQuestions, GiveTheUrlAsTheServerHasIt) {
  EXPECT_EQ(GetServerURL("//plm/a"), plmUrl);
  EXPECT_EQ(GetServerURL(uidOfD1), plmUrl);
  EXPECT_EQ(GetServerURL("//nobody/a"), "");
  EXPECT_TRUE(answers.calls.empty());
}

TEST_F(ServerQuestions, GiveTheNicknameOfThePathAsItStands) {
  Put<FakeVantry>("alpha", plmKey, plmUrl);
  EXPECT_EQ(GetServerNickname("//plm/a"), "plm");
  EXPECT_EQ(GetServerNickname("korvufenloom-vfs://alpha"), "alpha");
}

TEST_F(ServerQuestions, GiveTheFirstNicknameOfAUidsServer) {
  Put<FakeVantry>("alpha", plmKey, plmUrl);
  EXPECT_EQ(GetServerNickname(uidOfD1), "alpha");
  EXPECT_EQ(GetServerNickname("korvufenloom-vt://other/?id=D1"), "");
}

TEST_F(ObjectAddress, PutsTheServersKeyBeforeIdExtraAndName) {
  FakeVantry server(plmKey, plmUrl, answers);
  EXPECT_EQ(UidOfInfo(server, Info("D1", "a b"), "x=1"),
            "korvufenloom-vt://plm.example/vt/?id=D1&x=1&file=/a%20b");
  EXPECT_EQ(UidOfInfo(server, Info("D1", "")), uidOfD1);
}

TEST_F(ObjectAddress, OfAnIdTakesTheIdThatTheServerGives) {
  FakeVantry server(plmKey, plmUrl, answers);
  answers.infos["D1"] = Info("D2", "a");
  EXPECT_EQ(UidOfId(server, "D1"), "korvufenloom-vt://plm.example/vt/?id=D2&file=/a");
  EXPECT_EQ(UidOfId(server, "D9"), "");
}

TEST_F(ObjectAddress, OfAPathNeedsAServer) {
  EXPECT_EQ(VfsPathOf(nullptr, {}, "a"), "");
}

}  // namespace
