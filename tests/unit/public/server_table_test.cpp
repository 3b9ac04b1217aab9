#include "public/server_table.h"

#include <gtest/gtest.h>

#include "public/manager_state.h"
#include "public/server_list.h"
#include "public/vt_direct_manager.h"
#include "tests/support/scripted_transport.h"
#include "tests/support/server_table_access.h"
#include "tests/support/trace_recorder.h"

namespace {

using namespace VtDirectManager;
using namespace lxservices::cms_interface;
using Lines = std::vector<std::string>;
using vtdirect_test::PutServer;
using vtdirect_test::TableNow;

// Every test also sees that nothing here makes a request or traces.
class ServerList : public testing::Test {
 protected:
  void TearDown() override {
    EXPECT_TRUE(transport.requests().empty());
    EXPECT_TRUE(trace.lines().empty());
  }

  static Lines Nicknames() {
    Lines nicknames;
    ReadRootDirs([](const char* nickname, void* user) { static_cast<Lines*>(user)->emplace_back(nickname); },
                 &nicknames);
    return nicknames;
  }

  vtdirect_test::ScriptedTransport transport;
  vtdirect_test::TraceRecorder trace;
};

TEST_F(ServerList, EntersEachServerUnderItsKey) {
  UpdateServerList({{"plm", "https://plm.example/vt"}, {"lib", "http://lib.example:8080/a/"}});
  const std::map<std::string, std::string> nicknames{{"lib", "korvufenloom-vt://lib.example:8080/a/"},
                                                     {"plm", "korvufenloom-vt://plm.example/vt/"}};
  EXPECT_EQ(TableNow().nicknames, nicknames);
  ASSERT_EQ(TableNow().servers.size(), 2u);
  const auto plm = FindServerByNickname("plm");
  ASSERT_NE(plm, nullptr);
  EXPECT_EQ(plm->GetServerKey(), "korvufenloom-vt://plm.example/vt/");
  EXPECT_EQ(plm->GetServerURL(), "https://plm.example/vt/");
}

TEST_F(ServerList, GivesOneServerToTwoNicknamesOfOneUrl) {
  UpdateServerList({{"b", "https://plm.example/vt"}, {"a", "https://plm.example/vt/"}});
  EXPECT_EQ(Nicknames(), (Lines{"a", "b"}));
  EXPECT_EQ(TableNow().servers.size(), 1u);
  EXPECT_EQ(FindServerByNickname("a"), FindServerByNickname("b"));
  EXPECT_EQ(FindNicknameOfKey(TableNow(), "korvufenloom-vt://plm.example/vt/"), "a");
}

TEST_F(ServerList, KeepsTheServersOfAnUnchangedList) {
  const std::map<std::string, std::string> list{{"plm", "https://plm.example/vt"}};
  UpdateServerList(list);
  const auto before = FindServerByNickname("plm");
  UpdateServerList(list);
  EXPECT_EQ(FindServerByNickname("plm"), before);
  EXPECT_EQ(transport.connections().size(), 1u);
}

TEST_F(ServerList, KeepsAServerUnderANewNickname) {
  UpdateServerList({{"plm", "https://plm.example/vt"}});
  const auto before = FindServerByNickname("plm");
  UpdateServerList({{"other", "https://plm.example/vt/"}});
  EXPECT_EQ(FindServerByNickname("other"), before);
  EXPECT_EQ(FindServerByNickname("plm"), nullptr);
}

TEST_F(ServerList, MakesANewServerWhenHttpBecomesHttps) {
  UpdateServerList({{"plm", "http://plm.example/vt"}});
  const auto before = FindServerByNickname("plm");
  UpdateServerList({{"plm", "https://plm.example/vt"}});
  EXPECT_NE(FindServerByNickname("plm"), before);
  EXPECT_EQ(FindServerByNickname("plm")->GetServerURL(), "https://plm.example/vt/");
}

TEST_F(ServerList, KeepsTheServerWhenHttpsBecomesHttp) {
  UpdateServerList({{"plm", "https://plm.example/vt"}});
  const auto before = FindServerByNickname("plm");
  UpdateServerList({{"plm", "http://plm.example/vt"}});
  EXPECT_EQ(FindServerByNickname("plm"), before);
  EXPECT_EQ(FindServerByNickname("plm")->GetServerURL(), "https://plm.example/vt/");
}

TEST_F(ServerList, KeepsTheServerWhenTheUrlBecomesItsKey) {
  UpdateServerList({{"plm", "https://plm.example/vt"}});
  const auto before = FindServerByNickname("plm");
  UpdateServerList({{"plm", "korvufenloom-vt://plm.example/vt/"}});
  EXPECT_EQ(FindServerByNickname("plm"), before);
}

TEST_F(ServerList, DropsWhatIsNoLongerListedButNotFromUnderItsUsers) {
  UpdateServerList({{"plm", "https://plm.example/vt"}});
  std::shared_ptr<FileServer> held = FindServerByNickname("plm");
  const std::weak_ptr<FileServer> watched = held;
  UpdateServerList({});
  EXPECT_TRUE(TableNow().servers.empty());
  EXPECT_TRUE(TableNow().nicknames.empty());
  EXPECT_EQ(held->GetServerKey(), "korvufenloom-vt://plm.example/vt/");
  held.reset();
  EXPECT_TRUE(watched.expired());
}

TEST_F(ServerList, DropsAServerThatTheLibraryAddedUnlessTheListNamesIt) {
  AddServerWithDerivedNickname("https://one.example/vt");
  AddServerWithDerivedNickname("https://two.example/vt");
  EXPECT_EQ(Nicknames(), (Lines{"one.example", "two.example"}));
  const auto two = FindServerByNickname("two.example");
  UpdateServerList({{"second", "https://two.example/vt"}});
  EXPECT_EQ(Nicknames(), Lines{"second"});
  EXPECT_EQ(FindServerByNickname("second"), two);
}

TEST_F(ServerList, TakesItsOwnNicknamesAsAnArgument) {
  UpdateServerList({{"plm", "https://plm.example/vt"}});
  UpdateServerList(TableNow().nicknames);
  EXPECT_EQ(Nicknames(), Lines{"plm"});
  EXPECT_EQ(FindServerByNickname("plm")->GetServerURL(), "https://plm.example/vt/");
}

TEST_F(ServerList, EntersAnUnreadableUrlUnderTheEmptyKey) {
  UpdateServerList({{"bad", "ftp://plm.example/"}});
  EXPECT_EQ(TableNow().nicknames.at("bad"), "");
  ASSERT_NE(FindServerByNickname("bad"), nullptr);
  EXPECT_EQ(FindServerByNickname("bad")->GetServerKey(), "");
}

// The two forms of a server's URL that give a key are told by lower-case letters.
TEST_F(ServerList, GivesEachUnreadableUrlAServerOfItsOwn) {
  UpdateServerList({{"one", "HTTP://one.example/vt"}, {"two", "HTTP://two.example/vt"}});
  ASSERT_NE(FindServerByNickname("one"), nullptr);
  ASSERT_NE(FindServerByNickname("two"), nullptr);
  EXPECT_EQ(FindServerByNickname("one")->GetServerURL(), "HTTP://one.example/vt/");
  EXPECT_EQ(FindServerByNickname("two")->GetServerURL(), "HTTP://two.example/vt/");
  EXPECT_TRUE(TableNow().servers.empty());
}

TEST_F(ServerList, GivesTwoNicknamesOfOneUnreadableUrlAServerEach) {
  UpdateServerList({{"a", "HTTP://one.example"}, {"b", "HTTP://one.example"}});
  ASSERT_NE(FindServerByNickname("a"), nullptr);
  EXPECT_NE(FindServerByNickname("a"), FindServerByNickname("b"));
}

TEST_F(ServerList, FindsAServerOfAnUnreadableUrlByNoUid) {
  UpdateServerList({{"one", "HTTP://one.example/vt"}});
  for (const char* key : {"", "/", "HTTP://one.example/vt/", "korvufenloom-vt://one.example/vt/"}) {
    EXPECT_EQ(FindServerByKey(key), nullptr) << key;
  }
}

TEST_F(ServerList, KeepsTheServerOfAnUnreadableUrlForItsNicknameAndUrl) {
  UpdateServerList({{"one", "HTTP://one.example"}});
  const auto before = FindServerByNickname("one");
  UpdateServerList({{"one", "HTTP://one.example/"}});
  EXPECT_EQ(FindServerByNickname("one"), before);
  UpdateServerList({{"one", "HTTP://other.example/"}});
  ASSERT_NE(FindServerByNickname("one"), nullptr);
  EXPECT_EQ(FindServerByNickname("one")->GetServerURL(), "HTTP://other.example/");
  UpdateServerList({{"one", "http://one.example/"}});
  EXPECT_EQ(FindServerByNickname("one")->GetServerURL(), "http://one.example/");
  EXPECT_TRUE(TableNow().keylessServers.empty());
}

TEST_F(ServerList, NamesTheServerOfAnUnreadableUrlByItsOwnNickname) {
  UpdateServerList({{"one", "HTTP://one.example"}, {"two", "HTTP://two.example"}});
  EXPECT_EQ(GetVFSPathLatest("//two/Products/a"), "korvufenloom-vfs://two/Products/a");
  EXPECT_EQ(GetServerNickname("//two/"), "two");
}

TEST_F(ServerList, MakesNoConnectionForAnUnreadableUrl) {
  UpdateServerList({{"one", "HTTP://one.example"}});
  EXPECT_FALSE(FindServerByNickname("one")->TestConnection());
  EXPECT_TRUE(transport.connections().empty());
  ASSERT_EQ(trace.lines().size(), 1u);
  EXPECT_EQ(trace.lines().front().text,
            "Failed to get schema info servlet/odata/DynamicDocMgmt/$metadata from server "
            "HTTP://one.example/");
  trace.Clear();
}

TEST_F(ServerList, TakesAnEmptyUrl) {
  UpdateServerList({{"", ""}});
  ASSERT_NE(FindServerByNickname(""), nullptr);
  EXPECT_EQ(FindServerByNickname("")->GetServerURL(), "");
}

TEST_F(ServerList, KeepsItsKeysWhenTheStemChanges) {
  UpdateServerList({{"plm", "https://plm.example/vt"}});
  SetAppConfig(ConfigUriStem, "acme");
  EXPECT_NE(FindServerByNickname("plm"), nullptr);
  EXPECT_EQ(FindServerByKey("acme-vt://plm.example/vt/"), nullptr);
  UpdateServerList({{"plm", "https://plm.example/vt"}});
  EXPECT_NE(FindServerByKey("acme-vt://plm.example/vt/"), nullptr);
}

TEST_F(ServerList, IsReadInTheOrderOfTheNicknames) {
  UpdateServerList({{"b", "https://1.example"}, {"a", "https://2.example"}, {"B", "https://3.example"}});
  EXPECT_EQ(Nicknames(), (Lines{"B", "a", "b"}));
}

TEST_F(ServerList, MayBeReplacedByTheCallbackThatReadsIt) {
  UpdateServerList({{"a", "https://1.example"}, {"b", "https://2.example"}});
  int count = 0;
  ReadRootDirs(
      [](const char*, void* user) {
        UpdateServerList({});
        ++*static_cast<int*>(user);
      },
      &count);
  EXPECT_EQ(count, 2);
}

TEST_F(ServerList, HandsTheUsersDataThroughUntouched) {
  UpdateServerList({{"a", "https://1.example"}});
  int data = 0;
  ReadRootDirs([](const char*, void* user) { *static_cast<int*>(user) = 7; }, &data);
  EXPECT_EQ(data, 7);
  ReadRootDirs([](const char*, void* user) { EXPECT_EQ(user, nullptr); }, nullptr);
}

using NicknameLookUp = ServerList;
using KeyLookUp = ServerList;
using UrlLookUp = ServerList;
using DerivedNickname = ServerList;
using CacheFlag = ServerList;

TEST_F(NicknameLookUp, IsExact) {
  UpdateServerList({{"plm", "https://plm.example/vt"}});
  EXPECT_NE(FindServerByNickname("plm"), nullptr);
  EXPECT_EQ(FindServerByNickname("PLM"), nullptr);
  EXPECT_EQ(FindServerByNickname(""), nullptr);
}

TEST_F(KeyLookUp, AddsTheClosingSlashAndNormalisesNothing) {
  UpdateServerList({{"plm", "https://plm.example/vt"}});
  EXPECT_NE(FindServerByKey("korvufenloom-vt://plm.example/vt/"), nullptr);
  EXPECT_NE(FindServerByKey("korvufenloom-vt://plm.example/vt"), nullptr);
  EXPECT_EQ(FindServerByKey("https://plm.example/vt/"), nullptr);
  EXPECT_EQ(FindServerByKey("korvufenloom-vt://PLM.example/vt/"), nullptr);
  EXPECT_EQ(FindServerByKey(""), nullptr);
}

TEST_F(KeyLookUp, FindsTheNicknameWithOrWithoutTheClosingSlash) {
  UpdateServerList({{"plm", "https://plm.example/vt"}});
  EXPECT_EQ(FindNicknameOfKey(TableNow(), "korvufenloom-vt://plm.example/vt/"), "plm");
  EXPECT_EQ(FindNicknameOfKey(TableNow(), "korvufenloom-vt://plm.example/vt"), "plm");
  EXPECT_EQ(FindNicknameOfKey(TableNow(), "korvufenloom-vt://other/"), "");
  EXPECT_EQ(FindNicknameOfKey(TableNow(), ""), "");
}

TEST_F(UrlLookUp, GivesAServerBuiltForHttpsToEveryScheme) {
  UpdateServerList({{"plm", "https://plm.example/vt"}});
  const auto server = FindServerByNickname("plm");
  EXPECT_EQ(FindServerByUrl("https://plm.example/vt"), server);
  EXPECT_EQ(FindServerByUrl("https://plm.example/vt/"), server);
  EXPECT_EQ(FindServerByUrl("http://plm.example/vt"), server);
  EXPECT_EQ(FindServerByUrl("korvufenloom-vt://plm.example/vt"), server);
}

TEST_F(UrlLookUp, NeverGivesAServerBuiltForHttpToHttps) {
  UpdateServerList({{"plm", "http://plm.example/vt"}});
  const auto server = FindServerByNickname("plm");
  EXPECT_EQ(FindServerByUrl("https://plm.example/vt"), nullptr);
  EXPECT_EQ(FindServerByUrl("http://plm.example/vt"), server);
  EXPECT_EQ(FindServerByUrl("korvufenloom-vt://plm.example/vt/"), server);
}

TEST_F(UrlLookUp, GivesNothingForUnknownAndUnreadableUrls) {
  UpdateServerList({{"plm", "https://plm.example/vt"}});
  for (const char* url : {"https://plm.example/", "https://other/vt", "ftp://plm.example/vt", "plm", ""}) {
    EXPECT_EQ(FindServerByUrl(url), nullptr) << url;
  }
  EXPECT_EQ(FindServerByUrl(nullptr), nullptr);
}

TEST_F(UrlLookUp, GivesNothingForAnEmptyEntry) {
  PutServer("korvufenloom-vt://plm.example/", nullptr);
  EXPECT_EQ(FindServerByUrl("https://plm.example/"), nullptr);
}

TEST_F(ServerList, FillsAnEmptyEntry) {
  PutServer("korvufenloom-vt://plm.example/", nullptr);
  EXPECT_NE(AddServer("plm", "https://plm.example"), nullptr);
  UpdateServerList({{"plm", "https://plm.example"}});
  EXPECT_NE(FindServerByNickname("plm"), nullptr);
}

TEST_F(ServerList, AddsAnotherNicknameToAServerThatIsThere) {
  const auto first = AddServer("a", "http://plm.example");
  EXPECT_EQ(AddServer("b", "https://plm.example/"), first);
  EXPECT_EQ(first->GetServerURL(), "http://plm.example");
}

TEST_F(DerivedNickname, IsTheHost) {
  const auto server = AddServerWithDerivedNickname("https://plm.example:8443/vt");
  EXPECT_EQ(Nicknames(), Lines{"plm.example"});
  EXPECT_EQ(server->GetServerURL(), "https://plm.example:8443/vt/");
  EXPECT_EQ(FindServerByNickname("plm.example"), server);
}

TEST_F(DerivedNickname, GrowsBehindItselfForServersOfOneHost) {
  for (const char* path : {"a", "b", "c", "d"}) {
    AddServerWithDerivedNickname(std::string("https://plm.example/") + path);
  }
  EXPECT_EQ(Nicknames(), (Lines{"plm.example", "plm.example-1", "plm.example-1-2", "plm.example-1-2-3"}));
  EXPECT_EQ(FindServerByNickname("plm.example-1-2")->GetServerURL(), "https://plm.example/c/");
}

TEST_F(DerivedNickname, IsGivenOnceToAnUnreadableUrl) {
  const auto server = AddServerWithDerivedNickname("HTTP://plm.example/vt");
  EXPECT_EQ(AddServerWithDerivedNickname("HTTP://plm.example/vt/"), server);
  EXPECT_EQ(Nicknames(), Lines{"plm.example"});
}

// The series asks for a server and not for a nickname, so the nickname of a server that a session has written
// off is taken over.
TEST_F(DerivedNickname, TakesTheNicknameOfABlockedServer) {
  AddServerWithDerivedNickname("https://plm.example/a");
  const auto session = StartSession();
  TheManagerState().sessions.Block("korvufenloom-vt://plm.example/a/");
  AddServerWithDerivedNickname("https://plm.example/b");
  EXPECT_EQ(Nicknames(), Lines{"plm.example"});
  EXPECT_EQ(TableNow().nicknames.at("plm.example"), "korvufenloom-vt://plm.example/b/");
}

TEST_F(CacheFlag, StartsTrueAndIsClearedOnDemand) {
  EXPECT_TRUE(ShouldInvalidateCache(false));
  EXPECT_TRUE(ShouldInvalidateCache(false));
  EXPECT_TRUE(ShouldInvalidateCache(true));
  EXPECT_FALSE(ShouldInvalidateCache(false));
  EXPECT_FALSE(ShouldInvalidateCache(true));
}

TEST_F(CacheFlag, IsSetByEveryUpdateOfTheList) {
  const std::map<std::string, std::string> list{{"plm", "https://plm.example/vt"}};
  UpdateServerList(list);
  EXPECT_TRUE(ShouldInvalidateCache(true));
  UpdateServerList(list);
  EXPECT_TRUE(ShouldInvalidateCache(true));
  UpdateServerList({});
  EXPECT_TRUE(ShouldInvalidateCache(true));
  EXPECT_FALSE(ShouldInvalidateCache(true));
}

}  // namespace
