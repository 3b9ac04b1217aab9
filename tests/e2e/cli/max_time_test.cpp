#include <gmock/gmock.h>

#include "tests/e2e/cli/checkout_fixture.h"

using testing::HasSubstr;
using testing::IsEmpty;

namespace vtdirect_test {

/// A command is ended when its time is over, whatever it waits for.
class MaxTime : public CheckoutTest {};

TEST_F(MaxTime, EndsACommandThatWaitsForASilentServer) {
  Serve({"--fault", "* *=stall"});
  for (const auto& words : {std::vector<std::string>{"check", "sim"},
                            {"get", forkPath},
                            {"--stall-timeout", "60", "info", forkPath}}) {
    std::vector<std::string> all = {"--max-time", "1"};
    all.insert(all.end(), words.begin(), words.end());
    const ProcessResult result = Run(all);
    EXPECT_EQ(result.status, 12) << words[0];
    EXPECT_EQ(result.err, "vtdirect: the time for the command is over (1 s, by --max-time or max_time)\n");
  }
  EXPECT_THAT(HereNames(), IsEmpty());
}

TEST_F(MaxTime, TellsTheStateOnTheServerAfterAChangeThatWasNotAnswered) {
  Serve({"--fault", "POST *checkout=stall"});
  const ProcessResult result = Run({"--json", "--max-time", "1", "checkout", forkPath});
  EXPECT_EQ(result.status, 12);
  EXPECT_THAT(result.err,
              HasSubstr("\"error\":\"timed-out\",\"exit\":12,\"message\":\"the time for the command "
                        "is over; whether "));
  EXPECT_THAT(result.err, HasSubstr("\"may_have_happened\":true}\n"));
  EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1);
}

TEST_F(MaxTime, OfAServerIsThatOfItsSection) {
  Serve({"--fault", "* *=stall"});
  WriteHome(".config/vtdirect/config", "[server slow]\nurl = " + server().url() + "\nmax_time = 1\n", 0600);
  EXPECT_EQ(Run({"info", forkPath}).status, 12);
  EXPECT_EQ(Run({"check", server().url()}).status, 12);
}

TEST_F(MaxTime, IsANumberOfSeconds) {
  for (const char* text : {"0", "-1", "1s", "86401", ""}) {
    const ProcessResult result = Run({"--max-time", text, "check", "http://127.0.0.1/"});
    EXPECT_EQ(result.status, 2) << text;
    EXPECT_THAT(result.err, HasSubstr("--max-time takes a number of seconds from 1 to 86400"));
  }
}

}  // namespace vtdirect_test
