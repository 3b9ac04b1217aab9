// The list of servers, the sessions and the settings, written by several threads at once.

#include <algorithm>
#include <atomic>
#include <set>

#include "base/settings.h"
#include "public/vt_direct_manager.h"
#include "tests/support/gate.h"
#include "tests/support/server_table_access.h"
#include "tests/wire/threads/threaded_host.h"

namespace vtdirect_test {
namespace {

using namespace VtDirectManager;

std::vector<std::string> Nicknames() {
  std::vector<std::string> names;
  ReadRootDirs([](const char* nickname,
                  void* user) { static_cast<std::vector<std::string>*>(user)->emplace_back(nickname); },
               &names);
  return names;
}

int StatusOf(const char* uid) {
  std::string current;
  std::string latest;
  return GetStatus(uid, current, latest, nullptr);
}

constexpr const char* uidOnDown = "korvufenloom-vt://down.example/?id=D1";

TEST(ServerList, IsSeenAsOneOfThoseThatWereWritten) {
  const ThreadedHost host;
  const std::map<std::string, std::string> one{{"a", "https://one.example"}, {"b", "https://one.example"}};
  const std::map<std::string, std::string> other{{"c", "https://two.example"}, {"d", "https://two.example"}};
  UpdateServerList(one);
  std::atomic<bool> done = false;
  std::atomic<int> torn = 0;
  const auto read = [&] {
    while (!done) {
      const auto names = Nicknames();
      const bool whole =
          names == std::vector<std::string>{"a", "b"} || names == std::vector<std::string>{"c", "d"};
      if (!whole) ++torn;
    }
  };
  const auto write = [&] {
    for (int number = 0; number < 300; ++number) UpdateServerList(number % 2 == 0 ? other : one);
    done = true;
  };
  Together({read, read, write});
  EXPECT_EQ(torn, 0);
}

TEST(ServerList, LosesNoServerThatTwoThreadsEnterAtOnce) {
  const ThreadedHost host;
  for (int round = 0; round < 20; ++round) {
    ThreadedHost::ListServers();
    std::atomic<int> found = 0;
    const auto look = [&](const char* url) {
      return [&found, url] { found += UIDFromVantryParams(url, "D1", nullptr, true).empty() ? 0 : 1; };
    };
    Together({look("https://first.example/vt/"), look("https://second.example/vt/"),
              look("https://third.example/vt/"), look("https://first.example/vt/")});
    EXPECT_EQ(found, 4);
    EXPECT_EQ(Nicknames(),
              (std::vector<std::string>{"down", "first.example", "plm", "second.example", "third.example"}));
  }
}

TEST(ServerList, KeepsAServerObjectThatAllThreadsListAgain) {
  const ThreadedHost host;
  const auto before = TableNow().servers.at("korvufenloom-vt://plm.example/vt/");
  const auto list = [] {
    for (int number = 0; number < 100; ++number) UpdateServerList({{"plm", plmUrl}});
  };
  Together({list, list, list});
  EXPECT_EQ(TableNow().servers.at("korvufenloom-vt://plm.example/vt/"), before);
}

// A platform of a host's own may call the library while it makes a connection, and so may another thread
// meanwhile.
TEST(ServerList, IsBuiltAgainWhenItChangedMeanwhile) {
  ThreadedHost host;
  std::atomic<int> connections = 0;
  std::shared_ptr<lxservices::cms_interface::FileServer> inner;
  host.transport.OnConnect([&](const std::string& url) {
    if (url != "https://new.example/" || ++connections != 1) return;
    UpdateServerList({{"inner", "https://inner.example/"}, {"plm", plmUrl}});
    inner = TableNow().servers.at("korvufenloom-vt://inner.example/");
  });
  UpdateServerList({{"new", "https://new.example"}, {"inner", "https://inner.example"}});
  EXPECT_EQ(Nicknames(), (std::vector<std::string>{"inner", "new"}));
  // The server of the list in between is kept, as it would be if that had been written before.
  EXPECT_EQ(TableNow().servers.at("korvufenloom-vt://inner.example/"), inner);
  // What the first try made serves the second.
  EXPECT_EQ(connections, 1);
}

TEST(ServerList, LosesNoServerThatIsEnteredWhileAnotherOneIs) {
  ThreadedHost host;
  std::atomic<bool> entered = false;
  host.transport.OnConnect([&](const std::string& url) {
    // The URL as it is entered; the check before that uses it as it was given.
    if (url != "https://first.example/vt/" || entered.exchange(true)) return;
    EXPECT_NE(UIDFromVantryParams("https://second.example/vt", "D1", nullptr, true), "");
  });
  EXPECT_NE(UIDFromVantryParams("https://first.example/vt", "D1", nullptr, true), "");
  EXPECT_TRUE(entered);
  EXPECT_EQ(Nicknames(), (std::vector<std::string>{"down", "first.example", "plm", "second.example"}));
}

TEST(CacheFlag, IsTakenByOneThreadAlone) {
  const ThreadedHost host;
  for (int round = 0; round < 200; ++round) {
    UpdateServerList({{"plm", plmUrl}});
    std::atomic<int> taken = 0;
    const auto take = [&] { taken += ShouldInvalidateCache(true) ? 1 : 0; };
    Together({take, take, take});
    EXPECT_EQ(taken, 1);
  }
}

TEST(Sessions, GiveTheirServersBackAtOnce) {
  const ThreadedHost host;
  std::atomic<bool> done = false;
  std::atomic<int> stillBlocked = 0;
  const auto look = [&] {
    while (!done) (void)GetServerURL(uidOnDown);
  };
  const auto keep = [&] {
    for (int number = 0; number < 200; ++number) {
      auto session = StartSession();
      (void)StatusOf(uidOnDown);
      if (!GetServerURL(uidOnDown).empty()) ++stillBlocked;
      session.reset();
      if (GetServerURL(uidOnDown).empty()) ++stillBlocked;
    }
    done = true;
  };
  Together({look, look, keep});
  EXPECT_EQ(stillBlocked, 0);
}

TEST(Sessions, OfSeveralThreadsKeepAServerWrittenOffUntilTheLastGoes) {
  const ThreadedHost host;
  for (int round = 0; round < 50; ++round) {
    std::vector<std::shared_ptr<Session>> sessions(4);
    std::vector<std::function<void()>> starts;
    for (auto& session : sessions) starts.emplace_back([&session] { session = StartSession(); });
    Together(starts);
    EXPECT_EQ(StatusOf(uidOnDown), -1);
    EXPECT_EQ(GetServerURL(uidOnDown), "");
    std::vector<std::function<void()>> releases;
    for (std::size_t index = 1; index < sessions.size(); ++index) {
      releases.emplace_back([&sessions, index] { sessions[index].reset(); });
    }
    Together(releases);
    EXPECT_EQ(GetServerURL(uidOnDown), "");
    sessions.front().reset();
    EXPECT_NE(GetServerURL(uidOnDown), "");
  }
}

TEST(UriStem, IsSeenWholeAndItsTextLasts) {
  const ThreadedHost host;
  std::atomic<bool> done = false;
  std::atomic<int> wrong = 0;
  const std::vector<std::string> stems{"korvufenloom", "acme", "a-rather-longer-stem-than-the-others"};
  const auto isAStem = [&](const std::string& text, const std::string& end) {
    return std::any_of(stems.begin(), stems.end(), [&](const auto& stem) { return text == stem + end; });
  };
  const auto read = [&] {
    std::set<const char*> kept;
    while (!done) {
      kept.insert(GetVFSLocationPrefix());
      const auto settings = lxservices::cms_interface::CurrentSettings();
      const std::string stem = settings->vfsScheme.substr(0, settings->vfsScheme.size() - 4);
      if (!isAStem(stem, "") || settings->uidScheme != stem + "-vt") ++wrong;
    }
    for (const char* prefix : kept) wrong += isAStem(prefix, "-vfs") ? 0 : 1;
  };
  const auto write = [&] {
    for (std::size_t number = 0; number < 500; ++number) {
      SetAppConfig(ConfigUriStem, stems[number % stems.size()].c_str());
    }
    SetAppConfig(ConfigUriStem, nullptr);
    done = true;
  };
  Together({read, read, write});
  EXPECT_EQ(wrong, 0);
}

TEST(UriStem, IsHandedOutAtOneAddressForEachText) {
  const char* before = GetVFSLocationPrefix();
  SetAppConfig(ConfigUriStem, "acme");
  const char* changed = GetVFSLocationPrefix();
  SetAppConfig(ConfigUriStem, nullptr);
  EXPECT_STREQ(changed, "acme-vfs");
  EXPECT_EQ(GetVFSLocationPrefix(), before);
}

// An older server's answer is kept as it came, here in a temporary file, and read again at each listing.
TEST(DirectoryHandle, IsReadByManyThreadsAtOnce) {
  ThreadedHost host(Generation::Gateway);
  std::string elements;
  for (int index = 0; index < 20'000; ++index) {
    elements +=
        (index > 0 ? ",\"x/a-file-with-a-name-" : "\"x/a-file-with-a-name-") + std::to_string(index) + "\"";
  }
  host.transport.AnswerBy([&](const SentRequest& request) {
    if (request.line.find("/snx_gw/") == std::string::npos) return host.AnswerOfServers(request);
    return Answer{200, R"({"folderContent":[)" + elements + "]}"};
  });
  const DirHandle handle = OpenDir(framesFolder);
  ASSERT_NE(handle, nullptr);
  std::atomic<int> wrong = 0;
  const auto read = [&] {
    int count = 0;
    const auto callback = [](DirEntryExt& entry, void* user) {
      auto& number = *static_cast<int*>(user);
      if (entry.name == "a-file-with-a-name-" + std::to_string(number)) ++number;
    };
    if (!ReadDir(handle, callback, &count, ReadDirFiles) || count != 20'000) ++wrong;
  };
  Together({read, read, read});
  EXPECT_EQ(wrong, 0);
}

// What the listing above told of a folder is used once, and by one thread.
TEST(WalkedDirectory, IsReadByManyThreadsAtOnce) {
  ThreadedHost host(Generation::Schema5);
  std::atomic<int> questions = 0;
  host.transport.AnswerBy([&](const SentRequest& request) {
    const bool isOfFolders = request.line.find("/Folders?$select=ID,Name&$expand=") != std::string::npos;
    if (!isOfFolders) return host.AnswerOfServers(request);
    ++questions;
    return Answer{200, R"({"value":[{"ID":"F2","Name":"Sub","Folders":[{"ID":"F3","Name":"Deep"}]}]})"};
  });
  WalkedDir folder;
  const auto keep = [](DirEntryExt& /*entry*/, const WalkedDir& walked, void* user) {
    if (walked != nullptr) *static_cast<WalkedDir*>(user) = walked;
  };
  ASSERT_TRUE(ReadWalkedDir(OpenWalk(framesFolder), keep, &folder, ReadDirFolders));
  ASSERT_NE(folder, nullptr);
  std::atomic<int> wrong = 0;
  const auto read = [&] {
    int count = 0;
    const auto callback = [](DirEntryExt& /*entry*/, const WalkedDir& walked, void* user) {
      if (walked != nullptr) ++*static_cast<int*>(user);
    };
    if (!ReadWalkedDir(folder, callback, &count, ReadDirFolders) || count != 1) ++wrong;
  };
  Together({read, read, read});
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(questions, 3);  // one for the folder above, and one for each but the first that came
}

// Of two threads that send before there is a connection each may make one, and one of them stays.
TEST(Connection, ThatCouldNotBeMadeIsMadeByWhoeverSendsNext) {
  ThreadedHost host;
  host.transport.RefuseConnections(2);  // those of the two servers
  ThreadedHost::ListServers();
  std::atomic<int> found = 0;
  const auto ask = [&] { found += FileExists(uidOfD1) ? 1 : 0; };
  Together({ask, ask, ask, ask});
  EXPECT_EQ(found, 4);
  const std::size_t connections = host.transport.connections().size();
  Together({ask, ask});
  EXPECT_EQ(host.transport.connections().size(), connections);
}

}  // namespace
}  // namespace vtdirect_test
