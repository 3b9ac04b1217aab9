#include "hosts/cli/texts/output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <sstream>

namespace vtdirect_cli {
namespace {

// Counts how often what was written is handed on.
class CountingBuffer : public std::stringbuf {
 public:
  int handedOn = 0;

 protected:
  int sync() override {
    ++handedOn;
    return 0;
  }
};

// Standard output that is no terminal, while it lives.
class NoTerminal {
 public:
  NoTerminal() : before_(dup(STDOUT_FILENO)) {
    const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(null, STDOUT_FILENO);
    close(null);
  }
  ~NoTerminal() {
    dup2(before_, STDOUT_FILENO);
    close(before_);
  }
  NoTerminal(const NoTerminal&) = delete;
  NoTerminal& operator=(const NoTerminal&) = delete;

 private:
  int before_;
};

class OutputTest : public testing::Test {
 protected:
  std::ostringstream out_;
  std::ostringstream err_;
  Output output_{out_, err_};
};

}  // namespace

TEST_F(OutputTest, ShowsARecordAsLines) {
  output_.Configure("info", false, false);
  output_.Lines(
      {{"name", std::string("a\x1B")}, {"exists", true}, {"there", false}, {"bytes", std::uint64_t{7}}});
  EXPECT_EQ(out_.str(), "name: a\\x1B\nexists: yes\nthere: no\nbytes: 7\n");
  EXPECT_EQ(err_.str(), "");
}

TEST_F(OutputTest, ShowsARowWithTabs) {
  output_.Configure("servers", false, false);
  output_.Row({{"nickname", std::string("plm\t")}, {"url", std::string("http://h/")}});
  EXPECT_EQ(out_.str(), "plm\\x09\thttp://h/\n");
}

TEST_F(OutputTest, WritesOneJsonObjectALineInAscii) {
  output_.Configure("info", true, false);
  output_.Lines(
      {{"name", std::string("gr\xC3\xBC\xC3\x9F \"\\\n\x1B\xFF\xC2\x9B")}, {"n", std::uint64_t{1}}});
  output_.Row({{"b", true}});
  EXPECT_EQ(
      out_.str(),
      "{\"schema\":2,\"command\":\"info\",\"name\":\"gr\\u00FC\\u00DF \\\"\\\\\\n\\u001B\\uFFFD\\u009B\","
      "\"n\":1}\n{\"schema\":2,\"command\":\"info\",\"b\":true}\n");
}

TEST(JsonLine, HoldsNoControlCharacterOfATerminal) {
  EXPECT_EQ(JsonLine("get", {{"file", std::string("a\x7F"
                                                  "b\x1B"
                                                  "c\xC2\x9B"
                                                  "d")}}),
            R"({"schema":2,"command":"get","file":"a\u007Fb\u001Bc\u009Bd"})");
}

TEST_F(OutputTest, ShowsTextsPartedByBlanks) {
  output_.Configure("ls", false, false);
  output_.Row({{"name", std::string("a")}, {"versions", std::vector<std::string>{"A.2", "A.1\x1B"}}});
  output_.Row({{"versions", std::vector<std::string>{}}, {"name", std::string("b")}});
  EXPECT_EQ(out_.str(), "a\tA.2 A.1\\x1B\n\tb\n");
}

TEST_F(OutputTest, HandsTheRowsOfAListingOnInLargePieces) {
  const NoTerminal noTerminal;
  CountingBuffer buffer;
  std::ostream out(&buffer);
  Output output(out, err_);
  for (int row = 0; row < 20'000; ++row) {
    output.Row({{"name", std::string("document")}});
    EXPECT_TRUE(output.FlushRow());
  }
  EXPECT_GT(buffer.handedOn, 0);
  EXPECT_LT(buffer.handedOn, 200);
}

TEST_F(OutputTest, WritesTextsAsAnArray) {
  output_.Configure("ls", true, false);
  output_.Row(
      {{"versions", std::vector<std::string>{"A.2", "\xFF"}}, {"version_ids", std::vector<std::string>{}}});
  EXPECT_EQ(out_.str(),
            "{\"schema\":2,\"command\":\"ls\",\"versions\":[\"A.2\",\"\\uFFFD\"],\"version_ids\":[]}\n");
}

TEST_F(OutputTest, ShowsARowInAnotherWayThanJsonDoes) {
  output_.Configure("ls", false, false);
  output_.Row({{"name", std::string("a/")}}, {{"name", std::string("a")}, {"folder", true}});
  EXPECT_EQ(out_.str(), "a/\n");
  out_.str("");
  output_.Configure("ls", true, false);
  output_.Row({{"name", std::string("a/")}}, {{"name", std::string("a")}, {"folder", true}});
  EXPECT_EQ(out_.str(), "{\"schema\":2,\"command\":\"ls\",\"name\":\"a\",\"folder\":true}\n");
}

TEST_F(OutputTest, KeepsNotesAndFailuresFromStandardOutput) {
  output_.Configure("get", false, false);
  output_.Note("saved x");
  output_.JsonOnly({{"a", true}});
  EXPECT_EQ(output_.Fail({ExitCode::NotFound, "not found: x\n"}), ExitCode::NotFound);
  EXPECT_EQ(out_.str(), "");
  EXPECT_EQ(err_.str(), "vtdirect: saved x\nvtdirect: not found: x\\x0A\n");
}

TEST_F(OutputTest, IsQuietOfNotesAndNotOfFailures) {
  output_.Configure("get", false, true);
  output_.Note("saved x");
  static_cast<void>(output_.Fail({ExitCode::Usage, "wrong"}));
  EXPECT_EQ(err_.str(), "vtdirect: wrong\n");
}

TEST_F(OutputTest, WritesAFailureAsJsonOnStandardError) {
  output_.Configure("get", true, false);
  static_cast<void>(output_.Fail({ExitCode::DownloadFailed, "broke off"}));
  EXPECT_EQ(out_.str(), "");
  EXPECT_EQ(err_.str(),
            "{\"schema\":2,\"command\":\"get\",\"error\":\"download-failed\",\"exit\":7,\"message\":\"broke "
            "off\",\"retryable\":true}\n");
}

TEST_F(OutputTest, WritesTheReasonOfAFailureAsJson) {
  output_.Configure("checkin", true, false);
  Reason reason;
  reason.kind = VtDirectManager::FailureKind::Refused;
  reason.step = "check in";
  reason.httpStatus = 503;
  reason.serverText = "later";
  reason.mayHaveHappened = true;
  static_cast<void>(output_.Fail({ExitCode::Failure, "the check-in failed", "look", reason}));
  EXPECT_EQ(err_.str(),
            "{\"schema\":2,\"command\":\"checkin\",\"error\":\"lost-answer\",\"exit\":1,"
            "\"message\":\"the check-in failed; look\",\"retryable\":false,\"advice\":\"look\","
            "\"kind\":\"refused\",\"step\":\"check in\",\"http_status\":503,\"server_text\":\"later\","
            "\"may_have_happened\":true}\n");
}

TEST_F(OutputTest, LeavesOutWhatAServerDidNotTell) {
  output_.Configure("get", true, false);
  Reason reason;
  reason.kind = VtDirectManager::FailureKind::Unreachable;
  reason.step = "download";
  static_cast<void>(output_.Fail({ExitCode::CannotConnect, "cannot connect", {}, reason}));
  EXPECT_EQ(err_.str(),
            "{\"schema\":2,\"command\":\"get\",\"error\":\"cannot-connect\",\"exit\":3,"
            "\"message\":\"cannot connect\",\"retryable\":true,\"kind\":\"unreachable\","
            "\"step\":\"download\",\"may_have_happened\":false}\n");
}

TEST_F(OutputTest, WritesWhetherAChangeIsOpenThatWasInterrupted) {
  output_.Configure("checkin", true, false);
  Failure failure{ExitCode::Interrupted, "interrupted"};
  failure.changeIsOpen = true;
  static_cast<void>(output_.Fail(failure));
  EXPECT_EQ(err_.str(),
            "{\"schema\":2,\"command\":\"checkin\",\"error\":\"interrupted\",\"exit\":130,"
            "\"message\":\"interrupted\",\"retryable\":false,\"may_have_happened\":true}\n");
}

TEST_F(OutputTest, WritesAWarningAsJsonToo) {
  output_.Warning("left behind\x1B");
  output_.Configure("undo", true, true);
  output_.Warning("left behind\x1B");
  EXPECT_EQ(out_.str(), "");
  EXPECT_EQ(err_.str(),
            "vtdirect: warning: left behind\\x1B\n"
            "{\"schema\":2,\"command\":\"undo\",\"warning\":\"left behind\\u001B\"}\n");
}

TEST_F(OutputTest, TellsWhenResultsCouldNotBeWritten) {
  EXPECT_TRUE(output_.Flush());
  out_.setstate(std::ios::badbit);
  EXPECT_FALSE(output_.Flush());
}

TEST_F(OutputTest, SortsAListingByAColumnThatItsJsonAloneHas) {
  output_.Configure("find", false, false);
  output_.BeginListing({}, "number");
  output_.Row({{"path", std::string("//a/x")}}, {{"number", std::string("10")}});
  output_.Row({{"path", std::string("//a/y")}}, {{"number", std::string("9")}});
  output_.EndListing();
  EXPECT_EQ(out_.str(), "//a/y\n//a/x\n");
}

TEST_F(OutputTest, SortsTheObjectsOfAListingToo) {
  output_.Configure("servers", true, false);
  output_.BeginListing({true, true}, "nickname");
  output_.Row({{"nickname", std::string("b")}});
  output_.Row({{"nickname", std::string("a")}});
  output_.EndListing();
  EXPECT_EQ(out_.str(),
            "{\"schema\":2,\"command\":\"servers\",\"nickname\":\"a\"}\n"
            "{\"schema\":2,\"command\":\"servers\",\"nickname\":\"b\"}\n");
}

TEST_F(OutputTest, ShowsTheRowsOfItsTasksInOneTable) {
  output_.Configure("status", false, false);
  output_.BeginListing({true, false}, "");
  for (const char* address : {"//a/x", "//a/longer"}) {
    std::ostringstream out;
    std::ostringstream err;
    Output task(out, err, output_);
    task.Row({{"status", std::string("failed")}, {"address", std::string(address)}});
    EXPECT_TRUE(output_.Pass(out.str(), err.str(), task.TakeRows()));
  }
  EXPECT_EQ(out_.str(), "");
  // A failure is read after the row that it is about.
  output_.Warning("something");
  EXPECT_EQ(out_.str(), "STATUS  ADDRESS\nfailed  //a/x\nfailed  //a/longer\n");
}

}  // namespace vtdirect_cli
