#include <gmock/gmock.h>

#include "tests/e2e/cli/terminal_session.h"
#include "tests/e2e/many/many_fixture.h"

using testing::HasSubstr;
using testing::Not;

namespace vtdirect_test {

/// Listings where people read them, and where programs do.
class ListingOnTerminal : public ManyTest {
 protected:
  /// What a terminal shows.
  [[nodiscard]] std::string Screen(std::vector<std::string> words, int status = 0) {
    TerminalSession session(std::move(words), environment_, Here(""));
    EXPECT_EQ(session.Wait(), status) << session.screen();
    return session.screen();
  }
  [[nodiscard]] std::string Sim() const { return "sim=" + server().url(); }

  const std::vector<std::string> servers_ = {"servers", "-s", "b=http://127.0.0.1:1/", "-s",
                                             "longer=http://127.0.0.1:2/"};
};

TEST_F(ListingOnTerminal, HasHeadingsAndColumns) {
  EXPECT_EQ(Screen(servers_),
            "NICKNAME  URL\r\n"
            "b         http://127.0.0.1:1/\r\n"
            "longer    http://127.0.0.1:2/\r\n");
}

TEST_F(ListingOnTerminal, HasPlainRowsInAPipe) {
  environment_["TERM"] = "xterm";
  EXPECT_EQ(Run(servers_).out, "b\thttp://127.0.0.1:1/\nlonger\thttp://127.0.0.1:2/\n");
}

TEST_F(ListingOnTerminal, HasColoursUnlessSomebodyWantsNone) {
  environment_["TERM"] = "xterm";
  EXPECT_THAT(Screen(servers_), HasSubstr("\x1B[1mNICKNAME  URL\x1B[0m\r\n"));
  environment_["NO_COLOR"] = "1";
  EXPECT_THAT(Screen(servers_), Not(HasSubstr("\x1B")));
  environment_.erase("NO_COLOR");
  environment_["TERM"] = "dumb";
  EXPECT_THAT(Screen(servers_), Not(HasSubstr("\x1B")));
}

TEST_F(ListingOnTerminal, ShowsSeveralDocumentsInOneTable) {
  Serve();
  const std::string screen = Screen({"status", "-s", Sim(), forkPath, weldingPath});
  EXPECT_THAT(screen, testing::StartsWith("STATUS      VERSION  LATEST VERSION  CHECKOUT  ADDRESS\r\n"
                                          "up-to-date  B.1      B.1             none      " +
                                          std::string(forkPath) + "\r\nup-to-date  "));
}

TEST_F(ListingOnTerminal, TellsAFailureAfterTheRowThatItIsAbout) {
  Serve();
  const std::string screen = Screen({"status", "-s", Sim(), noSuchPath, forkPath}, 6);
  const std::size_t row = screen.find("failed ");
  const std::size_t failure = screen.find("vtdirect: ");
  const std::size_t next = screen.find("up-to-date");
  ASSERT_NE(next, std::string::npos) << screen;
  EXPECT_LT(row, failure) << screen;
  EXPECT_LT(failure, next) << screen;
}

TEST_F(ListingOnTerminal, SortsByTheColumnThatIsAskedFor) {
  Serve();
  EXPECT_EQ(Run({"ls", framePath, "--sort", "name"}).out, "fork.lxz\nframe.lxz\nwelding manual.xml\n");
  const ProcessResult status =
      Run({"status", "--sort", "address", weldingPath, std::string(framePath) + "frame.lxz"});
  EXPECT_LT(status.out.find("frame.lxz"), status.out.find("welding manual.xml")) << status.out;
  EXPECT_EQ(Run({"servers", "--sort", "url", "-s", "z=http://127.0.0.1:1/", "-s", "a=http://127.0.0.1:2/"})
                .out.substr(0, 2),
            "z\t");
  const ProcessResult wrong = Run({"ls", framePath, "--sort", "nam"});
  EXPECT_EQ(wrong.status, 2);
  EXPECT_EQ(
      wrong.err,
      "vtdirect: there is no column \"nam\" to sort by; there are name, kind, number, title, versions; did "
      "you mean name?\n");
}

TEST_F(ListingOnTerminal, TellsSizesForPeople) {
  Serve();
  WriteFile(Here("large"), std::string(3U << 20U, 'x'));
  const std::string folder = framePath;
  EXPECT_THAT(Screen({"put", "-s", Sim(), "large", folder}),
              HasSubstr("created " + folder + "large from large, 3.0 MiB\r\n"));
  EXPECT_THAT(Run({"get", folder + "large", "-o", "copy"}).err, HasSubstr("saved copy, 3145728 bytes\n"));
}

}  // namespace vtdirect_test
