#include "hosts/cli/texts/network_failures.h"

#include <gtest/gtest.h>

#include <map>
#include <regex>

#include "tests/support/temporary_directory.h"

namespace vtdirect_cli {
namespace {

using du::http::FailureDetail;
using Kind = VtDirectManager::FailureKind;

Reason ReasonOf(FailureDetail detail, const std::string& text) {
  Reason reason;
  reason.kind = Kind::Unreachable;
  reason.platformDetail = static_cast<int>(detail);
  reason.platformText = text;
  return reason;
}

TEST(NetworkFailures, HaveTheAdviceOfThePageThatPeopleRead) {
  const std::string page = vtdirect_test::ReadFile(DOCS_FOLDER "/troubleshooting.md");
  const std::regex row(R"(\n\| (\d+) `\w+` \| [^|\n]+ \| ([^|\n]+) \|)");
  std::map<int, std::string> rows;
  for (std::sregex_iterator found(page.begin(), page.end(), row), end; found != end; ++found) {
    rows.emplace(std::stoi((*found)[1]), (*found)[2]);
  }
  ASSERT_EQ(NetworkAdvices().size(), rows.size());
  for (const NetworkAdvice& advice : NetworkAdvices()) {
    EXPECT_EQ(rows[static_cast<int>(advice.detail)], advice.text);
  }
}

TEST(NetworkFailures, SayThatNobodyWasReachedOnlyWhenThatIsSo) {
  EXPECT_EQ(
      UnusableServer("http://h/", ReasonOf(FailureDetail::PortRefused, "The machine h refuses it")).Text(),
      "cannot connect to http://h/: the machine h refuses it; look whether the server runs, and whether "
      "its address has the right port");
  EXPECT_EQ(UnusableServer("http://h/", ReasonOf(FailureDetail::AnswerStalled, "The server stopped")).Text(),
            "no usable answer from http://h/: the server stopped; try again later, or with a larger "
            "--stall-timeout");
  EXPECT_EQ(UnusableServer("http://h/", std::nullopt).Text(), "cannot connect to http://h/");
}

TEST(NetworkFailures, SayWhatIsKnownWithoutADetail) {
  Reason reason;
  reason.kind = Kind::TimedOut;
  EXPECT_EQ(UnusableServer("http://h/", reason).Text(),
            "no usable answer from http://h/: the server did not answer in time; try again later, or with a "
            "larger --stall-timeout");
  reason.kind = Kind::Unreachable;
  EXPECT_EQ(UnusableServer("http://h/", reason).Text(), "cannot connect to http://h/");
  EXPECT_EQ(NetworkHint(reason), "");
  // Of a platform that is newer than this program.
  reason = ReasonOf(static_cast<FailureDetail>(4711), "The cable is cut");
  EXPECT_EQ(NetworkHint(reason), "the cable is cut");
}

TEST(NetworkFailures, SayWhatAStatusMeans) {
  Reason reason;
  reason.kind = Kind::Refused;
  reason.httpStatus = 503;
  reason.serverText = "closed for\x1b[2J repair";
  EXPECT_EQ(AnswerText(reason),
            "the server is not ready to work (HTTP 503): closed for\\x1B[2J repair; try again later");
  reason.httpStatus = 404;
  reason.serverText = "";
  EXPECT_EQ(AnswerText(reason),
            "the server answers otherwise than it should (HTTP 404); look whether host, port and path of the "
            "server's address are right");
}

}  // namespace
}  // namespace vtdirect_cli
