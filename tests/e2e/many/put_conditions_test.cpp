#include <gmock/gmock.h>

#include "tests/e2e/many/many_fixture.h"

using testing::HasSubstr;

namespace vtdirect_test {

class PutConditions : public ManyTest {
 protected:
  PutConditions() { WriteFile(Home("edited"), "edited"); }

  [[nodiscard]] std::string ForkOnServer() {
    return RunElsewhere({"get", forkPath, "--base", "-o", "-"}).out;
  }
  /// Requests of the log that change something.
  [[nodiscard]] std::size_t Changes() const {
    return Requests("\"method\":\"POST\"") + Requests("\"method\":\"PATCH\"");
  }
};

TEST_F(PutConditions, StoresOverTheVersionThatIsExpected) {
  Serve();
  const ProcessResult result = Run({"put", Home("edited"), forkPath, "--expect", "B.1"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(ForkOnServer(), "edited");
}

TEST_F(PutConditions, StoresNothingOverSomebodyElsesWork) {
  Serve();
  WriteFile(Home("theirs"), "theirs");
  ASSERT_EQ(RunElsewhere({"put", Home("theirs"), forkPath}).status, 0);
  const std::size_t before = Changes();
  const ProcessResult result = Run({"put", Home("edited"), forkPath, "--expect", "B.1", "--json"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("\"error\":\"conflict\""));
  EXPECT_THAT(result.err, HasSubstr("is version B.2 now, and B.1 is expected; nothing was sent"));
  EXPECT_EQ(Changes(), before);
  EXPECT_EQ(ForkOnServer(), "theirs");
}

TEST_F(PutConditions, CreatesNothingWhereAVersionIsExpected) {
  Serve();
  EXPECT_EQ(Run({"put", Home("edited"), noSuchPath, "--expect", "A.1"}).status, 1);
  EXPECT_EQ(Changes(), 0U);
  EXPECT_EQ(Run({"put", Home("edited"), noSuchPath, "--expect", ""}).status, 2);
}

TEST_F(PutConditions, SendsNothingThatIsTheSame) {
  Serve();
  WriteFile(Home("same"), BytesOf("D1001"));
  const ProcessResult result = Run({"put", Home("same"), forkPath, "--if-changed", "--json"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("\"action\":\"unchanged\",\"uid\":\"" + server().Uid("D1001")));
  EXPECT_EQ(Changes(), 0U);
}

TEST_F(PutConditions, SendsOtherBytesOfTheSameLength) {
  Serve();
  std::string other = BytesOf("D1001");
  other.back() = static_cast<char>(other.back() + 1);
  WriteFile(Home("other"), other);
  EXPECT_EQ(Run({"put", Home("other"), forkPath, "--if-changed"}).status, 0);
  EXPECT_EQ(ForkOnServer(), other);
  EXPECT_EQ(Run({"put", Home("edited"), forkPath, "--if-changed"}).status, 0);
  EXPECT_EQ(ForkOnServer(), "edited");
}

// Not to know is no reason to store the same once more, nor to say that it is the same.
TEST_F(PutConditions, SendsNothingWhenItCannotBeCompared) {
  Serve({"--fault", "GET *content/streams/*=503"});
  // As long as the document is, which the server's record of it tells.
  std::filesystem::create_directory(Home("other"));
  const Simulator other(Home("other"), {});
  WriteFile(Home("same"), DocumentOf(other, "D1001").bytes);
  const ProcessResult result = Run({"put", Home("same"), forkPath, "--if-changed"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("nothing was sent"));
  EXPECT_EQ(Changes(), 0U);
}

TEST_F(PutConditions, ComparesTheContentAlone) {
  Serve();
  EXPECT_EQ(Run({"put", Home("edited"), forkPath, "--if-changed", "--viewable", Home("edited")}).status, 2);
  EXPECT_EQ(server().Log(), "");
}

TEST_F(PutConditions, SayWhatWouldBeDone) {
  Serve();
  EXPECT_EQ(Run({"put", Home("edited"), forkPath, "--dry-run"}).out,
            "would iterate\t" + Home("edited") + "\t" + server().Uid("D1001") + "&file=/fork.lxz\n");
  EXPECT_EQ(Run({"put", Home("edited"), noSuchPath, "--dry-run"}).out,
            "would create\t" + Home("edited") + "\t" + noSuchPath + "\n");
  EXPECT_EQ(Run({"checkout", forkPath, "--dry-run"}).out, "would check out\t" + std::string(forkPath) + "\n");
  EXPECT_THAT(Run({"checkout", forkPath, "--dry-run", "--json"}).out, HasSubstr("\"dry_run\":true"));
  EXPECT_EQ(Changes(), 0U);
  EXPECT_EQ(HolderOf("D1001"), "");
  EXPECT_EQ(Book(), "");
}

TEST_F(PutConditions, SayWhatWouldBecomeOfAWorkingCopy) {
  Serve();
  ASSERT_EQ(Run({"checkout", forkPath}).status, 0);
  const std::string book = Book();
  const std::size_t before = Changes();
  EXPECT_EQ(Run({"checkin", forkPath, "--dry-run"}).out, "would check in\t" + std::string(forkPath) + "\n");
  EXPECT_EQ(Run({"undo", forkPath, "--dry-run"}).out, "would undo\t" + std::string(forkPath) + "\n");
  EXPECT_THAT(Run({"put", Home("edited"), forkPath, "--dry-run"}).out, testing::StartsWith("would store\t"));
  EXPECT_EQ(Changes(), before);
  EXPECT_EQ(HolderOf("D1001"), "anna");
  EXPECT_EQ(Book(), book);
}

// What could not be done is no success of a trial either.
TEST_F(PutConditions, FailWhereTheChangeWouldFail) {
  Serve();
  EXPECT_EQ(Run({"checkout", noSuchPath, "--dry-run"}).status, 6);
  EXPECT_NE(Run({"checkin", forkPath, "--dry-run"}).status, 0);
  EXPECT_EQ(Run({"put", Home("none"), forkPath, "--dry-run"}).status, 8);
}

}  // namespace vtdirect_test
