#include "hosts/cli/browsing/address.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vtdirect/vt_direct_manager.h>

using testing::HasSubstr;

namespace vtdirect_cli {
namespace {

AddressKind KindOf(const std::string& address) {
  const auto kind = ClassifyAddress(address);
  EXPECT_TRUE(kind) << address;
  return kind ? *kind : AddressKind{};
}

std::string FaultOf(const std::string& address) {
  const auto kind = ClassifyAddress(address);
  EXPECT_FALSE(kind) << address;
  if (kind) return "";
  EXPECT_EQ(kind.failure().code, ExitCode::Usage);
  return kind.failure().message;
}

}  // namespace

TEST(Address, IsAPathInEitherFormOrAUid) {
  EXPECT_EQ(KindOf("korvufenloom-vfs://plm/Products/Bike"), AddressKind::Path);
  EXPECT_EQ(KindOf("//plm/Products/Bike"), AddressKind::Path);
  EXPECT_EQ(KindOf("//plm"), AddressKind::Path);
  EXPECT_EQ(KindOf("//plm/?id=D1001"), AddressKind::Path);
  EXPECT_EQ(KindOf("korvufenloom-vt://plm.example/vt/?id=D1001"), AddressKind::Uid);
}

TEST(Address, ThatIsNeitherIsRefusedWithAReason) {
  EXPECT_THAT(FaultOf("fork.lxz"),
              HasSubstr("neither a path (korvufenloom-vfs://NICK/... or //NICK/...) nor a UID"));
  EXPECT_THAT(FaultOf(""), HasSubstr("neither a path"));
  EXPECT_THAT(FaultOf("/plm/x"), HasSubstr("neither a path"));
  EXPECT_THAT(FaultOf("korvufenloom-vfs:x"), HasSubstr("neither a path"));
  EXPECT_THAT(FaultOf("https://plm.example/vt"), HasSubstr("is a URL"));
  EXPECT_THAT(FaultOf("korvufenloom-vt://plm.example/vt/"), HasSubstr("UID without an id"));
  EXPECT_THAT(FaultOf("//"), HasSubstr("names no server"));
  EXPECT_THAT(FaultOf("korvufenloom-vfs:///x"), HasSubstr("names no server"));
}

TEST(Address, OfAnUnlistedServerTellsHowToListIt) {
  const auto path = RequireListedServer("//plm/x", AddressKind::Path);
  ASSERT_TRUE(path);
  EXPECT_EQ(path->code, ExitCode::ServerNotListed);
  EXPECT_THAT(path->Text(), HasSubstr("no server \"plm\" is listed; list it with --server plm=URL"));

  const auto uid = RequireListedServer("korvufenloom-vt://plm.example/vt/?id=1", AddressKind::Uid);
  ASSERT_TRUE(uid);
  EXPECT_EQ(uid->code, ExitCode::ServerNotListed);
  EXPECT_THAT(uid->Text(), HasSubstr("--server NICK=https://plm.example/vt/"));
}

TEST(Address, OfAListedServerIsFine) {
  VtDirectManager::UpdateServerList({{"plm", "https://plm.example/vt"}});
  EXPECT_FALSE(RequireListedServer("//plm/x", AddressKind::Path));
  EXPECT_FALSE(RequireListedServer("korvufenloom-vt://plm.example/vt/?id=1", AddressKind::Uid));
}

TEST(Address, NamesAnObjectByItsId) {
  EXPECT_TRUE(IsById("korvufenloom-vt://plm.example/vt/?id=D1", AddressKind::Uid));
  EXPECT_TRUE(IsById("//plm/?id=D1", AddressKind::Path));
  EXPECT_TRUE(IsById("korvufenloom-vfs://plm/?id=D1&x=1", AddressKind::Path));
  EXPECT_FALSE(IsById("//plm", AddressKind::Path));
  EXPECT_FALSE(IsById("//plm/", AddressKind::Path));
  EXPECT_FALSE(IsById("//plm/Products/?id=D1", AddressKind::Path));
}

TEST(Address, OfADirectoryClosesWithASlash) {
  EXPECT_EQ(WithClosingSlash("//plm"), "//plm/");
  EXPECT_EQ(WithClosingSlash("//plm/Products/"), "//plm/Products/");
}

TEST(Address, NamesTheFileEscaped) {
  EXPECT_EQ(FileNameOf("//plm/Products/Bike/Folders/a%7cb.lxz"), "a%7cb.lxz");
  EXPECT_EQ(FileNameOf("korvufenloom-vfs://plm/Products/Bike/Folders/a%7cb.lxz|B.3"), "a%7cb.lxz");
  EXPECT_EQ(FileNameOf("korvufenloom-vt://plm.example/vt/?id=1&file=/a%7Cb"), "a%7cb");
}

}  // namespace vtdirect_cli
