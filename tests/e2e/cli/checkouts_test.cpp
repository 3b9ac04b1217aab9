#include <gmock/gmock.h>

#include <filesystem>
#include <set>

#include "tests/e2e/cli/checkout_fixture.h"

using testing::HasSubstr;
using testing::IsEmpty;

namespace vtdirect_test {
namespace {

std::string UidOf(int number) {
  return "korvufenloom-vt://plm.example/vt/?id=D" + std::to_string(number);
}

std::string WorkingCopyOf(int number) {
  return UidOf(number) + "|W" + std::to_string(number) + "|C" + std::to_string(number) + "|T";
}

std::string LineOf(int number) {
  return UidOf(number) + "\t" + WorkingCopyOf(number) + "\tn" + std::to_string(number) +
         ".lxz\tanna\t2026-01-31T09:00:00Z\n";
}

}  // namespace

/// What is kept, with all that can go wrong with it.
class Checkouts : public CheckoutTest {
 protected:
  void WriteBook(const std::string& lines) {
    WriteHome(".local/state/vtdirect/checkouts", bookHead + lines, 0600);
  }

  [[nodiscard]] std::string NamesBesideTheBook() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(Home(".local/state/vtdirect"))) {
      names.insert(entry.path().filename());
    }
    std::string all;
    for (const std::string& name : names) all += name + " ";
    return all;
  }

  // A checkout is one all the same when it can't be kept; its UID is told twice.
  std::string ExpectUnkept(const std::string& why) {
    const ProcessResult result = Run({"checkout", forkPath});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, testing::MatchesRegex(TemporaryUid("D1001", "fork.lxz") + "\n"));
    const std::string uid = result.out.substr(0, result.out.find('\n'));
    EXPECT_THAT(result.err, HasSubstr("vtdirect: warning: the UID of the working copy is not kept: "));
    EXPECT_THAT(result.err, HasSubstr(why));
    EXPECT_THAT(result.err, HasSubstr("; give it yourself from now on: " + uid + "\n"));
    EXPECT_EQ(HolderOf("D1001"), "anna");
    const ProcessResult undone = Run({"undo", uid});
    EXPECT_EQ(undone.status, 0) << undone.err;
    EXPECT_EQ(HolderOf("D1001"), "");
    return uid;
  }
};

TEST_F(Checkouts, AreListedWithoutARequest) {
  Serve();
  WriteBook(LineOf(1) + LineOf(2));
  const ProcessResult result = Run({"checkouts"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, "2026-01-31T09:00:00Z\tanna\tn1.lxz\t" + WorkingCopyOf(1) +
                            "\n2026-01-31T09:00:00Z\tanna\tn2.lxz\t" + WorkingCopyOf(2) + "\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(Run({"checkouts", "--json"}).out.substr(0, Run({"checkouts", "--json"}).out.find('\n')),
            "{\"schema\":2,\"command\":\"checkouts\",\"since\":\"2026-01-31T09:00:00Z\",\"user\":\"anna\","
            "\"name\":\"n1.lxz\",\"uid\":\"" +
                WorkingCopyOf(1) + "\",\"document\":\"" + UidOf(1) + "\"}");
  EXPECT_EQ(server().Log(), "");
}

TEST_F(Checkouts, AreNoneAtFirst) {
  const ProcessResult result = Run({"checkouts"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out + result.err, "");
  EXPECT_FALSE(std::filesystem::exists(Home(".local")));
}

TEST_F(Checkouts, AreFoundInTheStateDirectoryThatTheEnvironmentNames) {
  Serve();
  environment_["XDG_STATE_HOME"] = Home("state");
  CheckOut(forkPath);
  EXPECT_THAT(ReadFile(Home("state/vtdirect/checkouts")), HasSubstr("D1001"));
  EXPECT_FALSE(std::filesystem::exists(Home(".local")));
}

TEST_F(Checkouts, AreForgottenByEitherUidWithoutTheServer) {
  WriteBook(LineOf(1) + LineOf(2) + LineOf(3));
  const ProcessResult result = Run({"checkouts", "--forget", UidOf(1)});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, WorkingCopyOf(1) + "\n");
  EXPECT_EQ(result.err, "vtdirect: forgotten; the server was not told of it, and a checkout there stays\n");
  EXPECT_EQ(Run({"checkouts", "--forget", WorkingCopyOf(3)}).status, 0);
  EXPECT_EQ(Book(), bookHead + LineOf(2));
  const ProcessResult missing = Run({"checkouts", "--forget", UidOf(4)});
  EXPECT_EQ(missing.status, 6);
  EXPECT_THAT(missing.err, HasSubstr("no checkout of " + UidOf(4) + " is kept"));
  EXPECT_EQ(Book(), bookHead + LineOf(2));
}

TEST_F(Checkouts, LoseNothingToManyRunsAtOnce) {
  constexpr int checkoutCount = 16;
  std::string lines;
  for (int i = 1; i <= checkoutCount; ++i) lines += LineOf(i);
  WriteBook(lines);
  std::vector<std::unique_ptr<Process>> runs;
  for (int i = 1; i <= checkoutCount; i += 2) runs.push_back(Start({"checkouts", "--forget", UidOf(i)}));
  for (const auto& run : runs) EXPECT_EQ(run->Wait().status, 0);
  std::string rest = bookHead;
  for (int i = 2; i <= checkoutCount; i += 2) rest += LineOf(i);
  EXPECT_EQ(Book(), rest);
}

TEST_F(Checkouts, ShowOddBytesSafely) {
  WriteBook(UidOf(1) + "\t" + WorkingCopyOf(1) + "\ta\\x1B[31mb\\x0Ac\xFF\tu\ts\n");
  EXPECT_EQ(Run({"checkouts"}).out, "s\tu\ta\\x1B[31mb\\x0Ac\\xFF\t" + WorkingCopyOf(1) + "\n");
  EXPECT_THAT(Run({"checkouts", "--json"}).out, HasSubstr("\"name\":\"a\\u001B[31mb\\nc\\uFFFD\""));
}

TEST_F(Checkouts, KeepBrokenLinesAndSaySo) {
  Serve();
  WriteBook("not a checkout\n" + LineOf(1));
  const ProcessResult listed = Run({"checkouts"});
  EXPECT_EQ(listed.status, 0);
  EXPECT_THAT(listed.out, HasSubstr(WorkingCopyOf(1)));
  EXPECT_EQ(listed.err, "vtdirect: warning: " + BookPath() +
                            " holds lines that are no checkouts, and stay as they are: 2\n");
  const std::string uid = CheckOut(forkPath);
  EXPECT_THAT(Book(), testing::StartsWith(bookHead + ("not a checkout\n" + LineOf(1))));
  const ProcessResult undone = Run({"undo", forkPath});
  EXPECT_EQ(undone.status, 0);
  EXPECT_THAT(undone.err, HasSubstr("warning: " + BookPath() + " holds lines that are no checkouts"));
  EXPECT_EQ(Book(), bookHead + ("not a checkout\n" + LineOf(1)));
}

TEST_F(Checkouts, OfAnotherReleaseAreLeftAlone) {
  Serve();
  const std::string text = "vtdirect-checkouts 2\n" + LineOf(1);
  WriteHome(".local/state/vtdirect/checkouts", text, 0600);
  const std::string why = BookPath() + " was written by another release of vtdirect, and is left as it is; " +
                          "go on with that release, or move the file away";
  ExpectUnkept(why);
  EXPECT_EQ(Book(), text);
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{"checkouts"}, std::vector<std::string>{"checkouts", "--forget", UidOf(1)}}) {
    const ProcessResult result = Run(words);
    EXPECT_EQ(result.status, 8);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "vtdirect: " + why + "\n");
  }
  EXPECT_EQ(Book(), text);
}

TEST_F(Checkouts, ThatCannotBeWrittenFailNoCheckout) {
  Serve();
  WriteHome(".local/state", "a file where a directory has to be", 0600);
  ExpectUnkept("cannot make the directory " + Home(".local/state/vtdirect"));
  environment_["XDG_STATE_HOME"] = "/proc";
  ExpectUnkept("cannot make the directory /proc/vtdirect");
  environment_.erase("XDG_STATE_HOME");
  environment_.erase("HOME");
  ExpectUnkept("there is no home directory");
}

TEST_F(Checkouts, OnAFullDiskStayAsTheyWere) {
  Serve();
  std::string lines;
  for (int i = 1; i <= 40; ++i) lines += LineOf(i);
  WriteBook(lines);
  // What is printed fits, and the book doesn't.
  fileSizeLimit_ = lines.size() - 1000;
  ExpectUnkept("cannot write " + BookPath() + ": File too large");
  EXPECT_EQ(Book(), bookHead + lines);
  EXPECT_EQ(NamesBesideTheBook(), "checkouts checkouts.lock journal journal.lock ");
}

TEST_F(Checkouts, ThatCannotBeReadAreNotReplaced) {
  Serve();
  std::filesystem::create_directories(BookPath());
  ExpectUnkept("cannot read " + BookPath());
  EXPECT_TRUE(std::filesystem::is_directory(BookPath()));
  EXPECT_EQ(Run({"checkouts"}).status, 8);
}

TEST_F(Checkouts, LeaveNothingBesideTheirFile) {
  Serve();
  CheckOut(forkPath);
  ASSERT_EQ(Run({"undo", forkPath}).status, 0);
  EXPECT_EQ(NamesBesideTheBook(), "checkouts checkouts.lock journal journal.lock ");
  EXPECT_THAT(HereNames(), IsEmpty());
}

}  // namespace vtdirect_test
