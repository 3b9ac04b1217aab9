// The library called from inside its own callbacks, on the server that the callback is about.

#include <atomic>
#include <filesystem>
#include <mutex>
#include <thread>

#include "public/vt_direct_manager.h"
#include "tests/support/temporary_directory.h"
#include "tests/wire/threads/threaded_host.h"

namespace vtdirect_test {
namespace {

using namespace VtDirectManager;
using testing::ElementsAre;
using testing::IsEmpty;

// Questions to the same server, and to the same document, that cost requests; and every function that changes
// what the operation around them goes by.
bool AskAndChangeAll() {
  std::string current;
  std::string latest;
  bool right = FileExists(uidOfD1) && FileExists(pathOfD1);
  right = right && GetStatus(uidOfD1, current, latest, nullptr) == 0 && SupportsVCSMetadata(uidOfD1);
  for (const Writer& writer : Writers()) writer.write();
  return right && GetUID(pathOfD1) == uidWithName && !Checkout(uidOfD1).empty();
}

class InsideACallback : public testing::Test {
 protected:
  ~InsideACallback() override {
    EXPECT_THAT(directory.Entries(), testing::AnyOf(IsEmpty(), ElementsAre("copy")));
  }

  ThreadedHost host;
  TemporaryDirectory directory;
  std::string file = directory.File("copy");
};

using Callbacks = InsideACallback;

TEST_F(InsideACallback, OfADownloadsProgressTheServerAnswers) {
  int told = 0;
  std::string uid;
  const auto progress = [&](std::size_t, std::size_t) {
    ++told;
    EXPECT_TRUE(AskAndChangeAll());
    return true;
  };
  EXPECT_TRUE(GetFile(uidOfD1, file.c_str(), uid, {}, progress));
  EXPECT_EQ(uid, uidWithName);
  EXPECT_EQ(ReadFile(file), "bytes");
  EXPECT_GT(told, 0);
}

TEST_F(InsideACallback, OfAnUploadsProgressTheServerAnswers) {
  WriteFile(file, "bytes");
  int told = 0;
  const auto progress = [&](std::size_t, std::size_t) {
    ++told;
    EXPECT_TRUE(AskAndChangeAll());
    return true;
  };
  EXPECT_TRUE(Upload(uidOfD1, file.c_str(), "", {}, {}, progress, nullptr, false));
  EXPECT_GT(told, 0);
}

TEST_F(InsideACallback, OfAStatusTheServerAnswers) {
  int told = 0;
  std::string uid;
  const auto status = [&](StatusCode code, const char* text) {
    ++told;
    EXPECT_TRUE(AskAndChangeAll());
    EXPECT_EQ(code, StatusOk);
    EXPECT_STREQ(text, uidWithName);
  };
  EXPECT_TRUE(GetFile(uidOfD1, file.c_str(), uid, status, {}));
  EXPECT_EQ(told, 1);
}

constexpr auto everything = ReadDirFiles | ReadDirFolders | ReadDirDetails | ReadDirVersions;

void AskForEach(const char*, bool, void* user) {
  ++*static_cast<int*>(user);
  EXPECT_TRUE(AskAndChangeAll());
}

void AskForEachExt(DirEntryExt& entry, void* user) {
  const std::string before = entry.name;
  AskForEach(entry.name, entry.isFolder, user);
  EXPECT_EQ(entry.name, before);
}

TEST_F(InsideACallback, OfAListingTheServerAnswers) {
  for (const char* path : {"//plm/", "//plm/Products/", "//plm/Products/Bike/", framesFolder,
                           "//plm/Products/Bike/Workspaces/", "//plm/Products/Bike/Workspaces/Mine/"}) {
    int entries = 0;
    EXPECT_TRUE(ReadDir(path, AskForEach, &entries)) << path;
    EXPECT_GT(entries, 0) << path;
    EXPECT_TRUE(ReadDirExt(path, AskForEachExt, &entries, everything)) << path;
    const DirHandle handle = OpenDir(path);
    EXPECT_TRUE(ReadDir(handle, AskForEachExt, &entries, everything)) << path;
  }
}

TEST_F(InsideACallback, OfAListingTheSameDirectoryIsListed) {
  const DirHandle handle = OpenDir(framesFolder);
  static const DirHandle* opened = nullptr;
  opened = &handle;
  int entries = 0;
  const auto listAgain = [](DirEntryExt& entry, void* user) {
    const std::string name = entry.name;
    int inner = 0;
    const auto count = [](DirEntryExt&, void* counter) { ++*static_cast<int*>(counter); };
    EXPECT_TRUE(ReadDir(*opened, count, &inner, ReadDirFiles));
    EXPECT_GT(inner, 0);
    EXPECT_EQ(entry.name, name);
    ++*static_cast<int*>(user);
  };
  EXPECT_TRUE(ReadDir(handle, listAgain, &entries, ReadDirFiles));
  EXPECT_GT(entries, 0);
}

// A folder's own folders come first, so that its documents are asked for when the handle is gone.
TEST_F(InsideACallback, OfAListingItsHandleMayBeClosed) {
  host.transport.AnswerBy([this](const SentRequest& request) {
    const bool folders = request.line.ends_with("/Folders?$select=Name");
    return folders ? Answer{200, R"({"value":[{"Name":"Wheels"}]})"} : host.AnswerOfServers(request);
  });
  static DirHandle handle(nullptr, nullptr);
  handle = OpenDir(framesFolder);
  std::vector<std::string> names;
  const auto close = [](DirEntryExt& entry, void* user) {
    handle.reset();
    static_cast<std::vector<std::string>*>(user)->emplace_back(entry.name);
  };
  EXPECT_TRUE(ReadDir(handle, close, &names, everything));
  EXPECT_THAT(names, ElementsAre("Wheels", "fork.lxz"));
}

TEST_F(InsideACallback, OfTheRootDirectoriesTheServersAreListedAnew) {
  std::vector<std::string> names;
  const auto collect = [](const char* nickname, void* user) {
    UpdateServerList({{"plm", plmUrl}});
    static_cast<std::vector<std::string>*>(user)->emplace_back(nickname);
  };
  ReadRootDirs(collect, &names);
  EXPECT_THAT(names, ElementsAre("down", "plm"));
}

// What a login needs to know it may ask of the server that demands it; that question is demanded a login for
// as well, and answered by it.
TEST_F(InsideACallback, OfAuthenticationTheServerAnswers) {
  static thread_local int depth = 0;
  static int logins = 0;
  logins = 0;
  host.transport.AnswerBy([this](const SentRequest& request) {
    Answer answer = host.AnswerOfServers(request);
    answer.demands = 1;
    return answer;
  });
  RegisterAuth([](const char* url) {
    EXPECT_STREQ(url, plmUrl);
    ++logins;
    if (depth > 0) return true;
    ++depth;
    EXPECT_TRUE(FileExists(uidOfD1));
    UpdateServerList({{"plm", plmUrl}});
    --depth;
    return true;
  });
  EXPECT_TRUE(FileExists(uidOfD1));
  EXPECT_EQ(logins, 2);
  for (const bool answer : host.transport.authResults()) EXPECT_TRUE(answer);
}

TEST_F(InsideACallback, OfTheTaskRunnerTheServerAnswers) {
  static bool answered = false;
  answered = false;
  RegisterTaskRunner([](std::function<void()> task) {
    answered = FileExists(uidOfD1);
    task();
    return true;
  });
  EXPECT_TRUE(GetFileAsync(uidOfD1, file.c_str(), {}, {}));
  EXPECT_TRUE(answered);
  EXPECT_EQ(ReadFile(file), "bytes");
}

// A runner with three threads, which take the tasks as they come.
TEST_F(Callbacks, OfManyTasksOnTheThreadsOfARunnerAllTellOfASuccess) {
  constexpr int downloads = 60;
  static std::mutex mutex;
  static std::vector<std::function<void()>> tasks;
  RegisterTaskRunner([](std::function<void()> task) {
    const std::lock_guard lock(mutex);
    tasks.push_back(std::move(task));
    return true;
  });
  std::atomic<int> succeeded = 0;
  const auto status = [&](StatusCode code, const char*) { succeeded += code == StatusOk ? 1 : 0; };
  for (int number = 0; number < downloads; ++number) {
    const std::string copy = directory.File("copy" + std::to_string(number));
    EXPECT_TRUE(GetFileAsync(uidOfD1, copy.c_str(), status, {}));
  }
  std::atomic<std::size_t> next = 0;
  const auto run = [&] {
    for (std::size_t task = next++; task < tasks.size(); task = next++) tasks[task]();
  };
  Together({run, run, run});
  tasks.clear();
  EXPECT_EQ(succeeded, downloads);
  for (int number = 0; number < downloads; ++number) {
    const std::string copy = directory.File("copy" + std::to_string(number));
    EXPECT_EQ(ReadFile(copy), "bytes");
    std::filesystem::remove(copy);
  }
}

TEST_F(InsideACallback, OfATraceHandlerTheServerAnswers) {
  static thread_local bool inside = false;
  int lines = 0;
  dp::SetTraceHandler([&lines](const char*, const char*, dp::TraceType, const std::string&) {
    if (inside) return;
    inside = true;
    ++lines;
    EXPECT_TRUE(AskAndChangeAll());
    inside = false;
  });
  EXPECT_FALSE(FileExists("//nobody/a"));
  dp::SetTraceHandler({});
  EXPECT_EQ(lines, 1);
}

TEST_F(Callbacks, RunOnTheThreadOfTheirOperation) {
  const auto here = std::this_thread::get_id();
  std::vector<std::thread::id> threads;
  std::string uid;
  EXPECT_TRUE(GetFile(
      uidOfD1, file.c_str(), uid,
      [&](StatusCode, const char*) { threads.push_back(std::this_thread::get_id()); },
      [&](std::size_t, std::size_t) {
        threads.push_back(std::this_thread::get_id());
        return true;
      }));
  EXPECT_GE(threads.size(), 2u);
  EXPECT_THAT(threads, testing::Each(here));
}

}  // namespace
}  // namespace vtdirect_test
