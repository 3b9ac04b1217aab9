#include "hosts/cli/storing/put_request.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/temporary_directory.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;
using vtdirect_test::TemporaryDirectory;
using vtdirect_test::WriteFile;

namespace vtdirect_cli {
namespace {

class PutRequestTest : public testing::Test {
 protected:
  PutRequestTest() {
    VtDirectManager::UpdateServerList({{"plm", "http://plm.example/vt"}});
    WriteFile(file_, "content");
    WriteFile(directory_.File("view"), "viewable");
    arguments_.Set("FILE", {file_});
    arguments_.Set("ADDRESS", {"//plm/Products/Bike/Folders/"});
  }

  std::string Fault(ExitCode code = ExitCode::Usage) {
    const auto request = ReadPutRequest(arguments_);
    EXPECT_TRUE(!request && request.failure().code == code);
    return request ? "" : request.failure().Text();
  }

  TemporaryDirectory directory_;
  std::string file_ = directory_.File("fork.lxz");
  Arguments arguments_;
};

}  // namespace

TEST_F(PutRequestTest, HoldsWhatWasGiven) {
  arguments_.Set("viewable", {directory_.File("view")});
  arguments_.Set("language", {"de"});
  arguments_.Set("checkin", {"true"});
  arguments_.Set("link", {"a=//plm/?id=D1", "b="});
  const auto read = ReadPutRequest(arguments_);
  ASSERT_TRUE(read) << read.failure().message;
  const PutRequest& request = *read;
  EXPECT_EQ(request.address, "//plm/Products/Bike/Folders/");
  EXPECT_EQ(request.kind, AddressKind::Path);
  EXPECT_EQ(request.type, VtDirectManager::FileTypeFenlet);
  EXPECT_EQ(request.content.path, file_);
  EXPECT_EQ(request.content.size(), 7U);
  ASSERT_TRUE(request.viewable);
  EXPECT_EQ(request.viewable->size(), 8U);
  EXPECT_FALSE(request.metadata);
  EXPECT_EQ(request.language, "de");
  EXPECT_TRUE(request.checkIn);
  EXPECT_THAT(request.links, ElementsAre(Pair("a", "//plm/?id=D1"), Pair("b", "")));
  EXPECT_EQ(request.Sources().size(), 2U);
}

TEST_F(PutRequestTest, KnowsThreeKinds) {
  for (const auto& [name, type] : {std::pair("fenlet", VtDirectManager::FileTypeFenlet),
                                   std::pair("general", VtDirectManager::FileTypeGeneral),
                                   std::pair("ugc", VtDirectManager::FileTypeUgc)}) {
    arguments_.Set("kind", {name});
    const auto request = ReadPutRequest(arguments_);
    ASSERT_TRUE(request) << name;
    EXPECT_EQ(request->type, type) << name;
  }
  for (const char* name : {"", "Fenlet", "text"}) {
    arguments_.Set("kind", {name});
    EXPECT_EQ(Fault(), "--kind takes fenlet, general or ugc");
  }
}

TEST_F(PutRequestTest, LetsNothingBeLeftOutOfAKindThatCannotHaveIt) {
  arguments_.Set("kind", {"general"});
  for (const ArgumentName option :
       {ArgumentName("viewable"), ArgumentName("metadata"), ArgumentName("language"), ArgumentName("link")}) {
    Arguments arguments = arguments_;
    arguments.Set(option, {"x"});
    const auto request = ReadPutRequest(arguments);
    ASSERT_FALSE(request) << option.text();
    EXPECT_EQ(request.failure().message,
              std::string("--") + option.text() + " is for Fenlet documents alone, not for general ones");
  }
}

TEST_F(PutRequestTest, LooksAtEachFile) {
  arguments_.Set("metadata", {directory_.File("none")});
  EXPECT_THAT(Fault(ExitCode::LocalFile), HasSubstr("none: No such file"));
  arguments_.Set("metadata", {""});
  EXPECT_EQ(Fault(), "--metadata takes a file name");
}

TEST_F(PutRequestTest, WantsAListedServer) {
  arguments_.Set("ADDRESS", {"//other/Products/Bike/Folders/"});
  EXPECT_THAT(Fault(ExitCode::ServerNotListed), HasSubstr("no server \"other\""));
}

TEST_F(PutRequestTest, PartsALinkWhereAnAddressBegins) {
  const std::string uid = "korvufenloom-vt://plm.example/vt/?id=D1&file=/a%3Db";
  arguments_.Set(
      "link", {"plain=" + uid, "a=b=//plm/Products/Bike/Folders/c=d", "gone=", "x==", "pipe|=//plm/?id=D2"});
  const auto request = ReadPutRequest(arguments_);
  ASSERT_TRUE(request) << request.failure().message;
  EXPECT_THAT(request->links,
              ElementsAre(Pair("a=b", "//plm/Products/Bike/Folders/c=d"), Pair("gone", ""),
                          Pair("pipe%7c", "//plm/?id=D2"), Pair("plain", uid), Pair("x=", "")));
}

TEST_F(PutRequestTest, RefusesALinkWithoutNameOrAddressOrTwice) {
  for (const char* argument : {"", "name", "=", "=//plm/?id=D1", "name=fork.lxz"}) {
    const auto link = ReadLink(argument);
    ASSERT_FALSE(link) << argument;
    EXPECT_THAT(link.failure().message, HasSubstr("is no link: --link takes NAME=ADDRESS")) << argument;
  }
  EXPECT_FALSE(ReadLink("name=//other/?id=D1"));
  arguments_.Set("link", {"pipe%7C=//plm/?id=D1", "pipe|="});
  EXPECT_EQ(Fault(), "--link names \"pipe%7c\" twice");
}

}  // namespace vtdirect_cli
