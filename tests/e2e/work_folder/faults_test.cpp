#include <gmock/gmock.h>
#include <signal.h>

#include <filesystem>
#include <functional>
#include <map>
#include <sstream>

#include "tests/e2e/cli/accident.h"
#include "tests/e2e/work_folder/work_folder_fixture.h"

namespace vtdirect_test {
namespace {

// A read has no consequence, so of it three ways stand for all.
[[nodiscard]] std::vector<Accident> AccidentsOf(bool isWrite) {
  if (!isWrite) return {Accident::KilledBefore, Accident::Refused, Accident::Cut};
#ifdef __SANITIZE_ADDRESS__
  // A sanitized program takes long to start. The other build knows all of them.
  return {Accident::KilledBefore, Accident::KilledAfter, Accident::Lost};
#else
  return {Accident::KilledBefore, Accident::KilledAfter, Accident::Refused, Accident::Lost,
          Accident::Cut,          Accident::Reset,       Accident::Silent};
#endif
}

}  // namespace

/// Every request of each command that changes a work folder fails in every way, and the program is killed
/// before and after each. Afterwards no modification is gone, `st` agrees with the bytes here and there, and
/// the same work, asked for again, is finished.
class WorkFolderFaults : public WorkFolderTest {
 protected:
  void TearDown() override {
    // A killed program leaves its directory for temporary files.
    std::filesystem::remove_all(Home("../temporary"));
    std::filesystem::create_directory(Home("../temporary"));
    WorkFolderTest::TearDown();
  }

  // Tries each accident at each request, until a run has no such request any more. Gives how many it made.
  int TryAll(const std::string& directory, const std::vector<std::string>& words,
             const std::function<void()>& before, const std::function<void()>& after) {
    const auto start = [&](const std::string& proxy, std::vector<std::string> all) {
      all.insert(all.end(), words.begin(), words.end());
      environment_["http_proxy"] = proxy;
      auto process = StartIn(directory, all);
      environment_.erase("http_proxy");
      return process;
    };
    return MeetEveryAccident({start, AccidentsOf, before, [&](const ProcessResult& result) {
                                result_ = result;
                                after();
                              }});
  }

  // Each of the three documents is told, and as it is.
  void ExpectStIsRight() {
    const ProcessResult st = RunIn("Frame", {"st", "--all"});
    EXPECT_EQ(st.status, 0) << st.err;
    ExpectStateIsRight(st.out, "fork.lxz", ForkOnServer());
    ExpectStateIsRight(st.out, "frame.lxz", frame_);
    ExpectStateIsRight(st.out, "welding manual.xml", manual_);
  }

  void ExpectStateIsRight(const std::string& out, const std::string& name, const std::string& onServer) {
    const std::string path = Here("Frame/" + name);
    const bool isHere = std::filesystem::exists(path);
    const bool isTheServers = isHere && ReadFile(path) == onServer;
    const std::string state = StateOf(out, name);
    const std::map<std::string, bool> rules = {{"same", isTheServers},
                                               {"new", !isHere},
                                               {"missing", !isHere},
                                               {"newer", isHere && !isTheServers},
                                               {"modified", isHere && !isTheServers},
                                               {"both", isHere}};
    ASSERT_TRUE(rules.contains(state)) << name << " is told as: " << state;
    EXPECT_TRUE(rules.at(state)) << name << " is told as: " << state;
  }

  // The first column of a file's line.
  [[nodiscard]] static std::string StateOf(const std::string& out, const std::string& name) {
    std::istringstream lines(out);
    for (std::string line; std::getline(lines, line);) {
      if (line.ends_with("\t" + name)) return line.substr(0, line.find('\t'));
    }
    return "";
  }

  void ExpectAllIsHere() {
    EXPECT_EQ(St("Frame"), "");
    EXPECT_EQ(ReadFile(Fork()), ForkOnServer());
    EXPECT_EQ(ReadFile(Here("Frame/frame.lxz")), frame_);
    EXPECT_TRUE(std::filesystem::is_empty(Here("Frame/.vtdirect/incoming")));
  }

  // What the server has before anything is changed, asked by nothing of the product.
  void ReadServer() {
    frame_ = DocumentOf(server(), "D1002").bytes;
    manual_ = DocumentOf(server(), "D1028").bytes;
  }

  ProcessResult result_;
  std::string frame_;
  std::string manual_;
};

TEST_F(WorkFolderFaults, OfACloneLeaveAWorkFolderThatAPullCompletes) {
  Serve();
  ReadServer();
  const int requests = TryAll(
      "", {"clone", framePath, "--parallel", "2"}, [this] { std::filesystem::remove_all(Here("Frame")); },
      [this] {
        if (std::filesystem::exists(Here("Frame/.vtdirect/files.db"))) {
          ExpectStIsRight();
          EXPECT_EQ(RunIn("Frame", {"pull"}).status, 0);
        } else {
          EXPECT_EQ(Run({"clone", framePath}).status, 0);
        }
        ExpectAllIsHere();
      });
  EXPECT_GE(requests, 9) << "three documents of two requests each, and the listing";
}

TEST_F(WorkFolderFaults, OfAPullLeaveAWorkFolderThatASecondOneCompletes) {
  Clone();
  ReadServer();
  int count = 0;
  const int requests = TryAll(
      "Frame", {"pull", "--parallel", "2"},
      [&] {
        StoreElsewhere("version " + std::to_string(++count));
        std::filesystem::remove(Here("Frame/frame.lxz"));
        WriteFile(Here("Frame/welding manual.xml"), "mine");
      },
      [this] {
        EXPECT_EQ(ReadFile(Here("Frame/welding manual.xml")), "mine");
        ExpectStIsRight();
        EXPECT_EQ(RunIn("Frame", {"pull"}).status, 0);
        EXPECT_EQ(ReadFile(Here("Frame/welding manual.xml")), "mine");
        EXPECT_EQ(St("Frame"), "modified\tA.1\tA.1\t\twelding manual.xml\n");
        EXPECT_EQ(ReadFile(Fork()), ForkOnServer());
        EXPECT_EQ(ReadFile(Here("Frame/frame.lxz")), frame_);
      });
  EXPECT_GE(requests, 7);
}

TEST_F(WorkFolderFaults, OfACommitLoseNothingAndASecondOneFinishesIt) {
  Clone();
  ReadServer();
  int count = 0;
  std::string mine;
  const int requests = TryAll(
      "Frame", {"commit"},
      [&] {
        mine = "edit " + std::to_string(++count);
        WriteFile(Fork(), mine);
      },
      [&] {
        EXPECT_EQ(ReadFile(Fork()), mine);
        ExpectStIsRight();
        // What is told to be done is done.
        if (result_.status == 0) {
          EXPECT_EQ(ForkOnServer(), mine);
        }
        EXPECT_EQ(Run({"recover"}).status, 0);
        const ProcessResult second = RunIn("Frame", {"commit"});
        EXPECT_EQ(second.status, 0) << second.err;
        EXPECT_EQ(ReadFile(Fork()), mine);
        EXPECT_EQ(Book(), bookHead);
        ExpectAllIsHere();
      });
  EXPECT_GE(requests, 15);
}

// Wherever a limit on the size of files meets a clone, what is there is whole, and a pull brings the rest.
TEST_F(WorkFolderFaults, OfAFullDiskLeaveNothingHalf) {
  Serve();
  ReadServer();
  for (const unsigned long limit : {1UL, 2000UL, 4096UL, 20'000UL, 40'000UL}) {
    SCOPED_TRACE(limit);
    std::filesystem::remove_all(Here("Frame"));
    fileSizeLimit_ = limit;
    const ProcessResult result = Run({"clone", framePath});
    fileSizeLimit_ = 0;
    for (const char* name : {"fork.lxz", "frame.lxz"}) {
      const std::string path = Here("Frame/" + std::string(name));
      const char* const id = name[1] == 'o' ? "D1001" : "D1002";
      EXPECT_TRUE(!std::filesystem::exists(path) || ReadFile(path) == DocumentOf(server(), id).bytes);
    }
    const bool isMade = std::filesystem::exists(Here("Frame/fork.lxz"));
    EXPECT_TRUE(result.status != 0 || isMade);
    // A work folder whose making was cut off is none yet, and is made by another clone.
    if (RunIn("Frame", {"pull"}).status != 0) {
      EXPECT_EQ(Run({"clone", framePath}).status, 0);
    }
    ExpectAllIsHere();
  }
}

TEST_F(WorkFolderFaults, OfASizeLimitDuringAPullLeaveTheOldFile) {
  Clone();
  ReadServer();
  const std::string old = ReadFile(Fork());
  StoreElsewhere(std::string(200'000, 'x'));
  fileSizeLimit_ = 100'000;
  const ProcessResult result = RunIn("Frame", {"pull"});
  fileSizeLimit_ = 0;
  EXPECT_EQ(result.status, 8) << result.err;
  EXPECT_EQ(ReadFile(Fork()), old);
  EXPECT_EQ(St("Frame"), "newer\tB.1\tB.2\t\tfork.lxz\n");
  EXPECT_EQ(RunIn("Frame", {"pull"}).status, 0);
  ExpectAllIsHere();
}

// A kill between two requests: where it falls differs from run to run, and what must hold does not.
TEST_F(WorkFolderFaults, OfAKillAtAnyMomentAreMendedByAPull) {
  Serve();
  ReadServer();
  for (int number = 0; number < 20; ++number) {
    SCOPED_TRACE(number);
    std::filesystem::remove_all(Here("Frame"));
    const auto running = StartIn("", {"clone", framePath});
    SleepMilliseconds(2 + number * 2);
    running->Signal(SIGKILL);
    static_cast<void>(running->Wait());
    if (std::filesystem::exists(Here("Frame/.vtdirect/files.db"))) {
      const ProcessResult pulled = RunIn("Frame", {"pull"});
      // Killed while its database was made, it is no work folder yet.
      if (pulled.status != 0) {
        EXPECT_EQ(Run({"clone", framePath}).status, 0) << pulled.err;
      }
    } else {
      EXPECT_EQ(Run({"clone", framePath}).status, 0);
    }
    ExpectAllIsHere();
  }
}

}  // namespace vtdirect_test
