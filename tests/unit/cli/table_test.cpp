#include "hosts/cli/texts/table.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace vtdirect_cli {
namespace {

using Clock = Table::Clock;

const Clock::time_point begin{};
constexpr Screen pipe{false, false};
constexpr Screen terminal{true, false};
constexpr Screen colours{true, true};

[[nodiscard]] TableRow RowOf(std::vector<std::string> keys, std::vector<std::string> cells,
                             const std::string& sortKey = {}) {
  std::string line;
  for (const std::string& cell : cells) line += cell + "|";
  return {std::move(keys), std::move(cells), line + "\n", sortKey};
}

[[nodiscard]] TableRow State(const std::string& state, const std::string& file) {
  return RowOf({"state", "latest_version", "file"}, {state, "", file});
}

}  // namespace

TEST(Table, GivesAPipeItsLinesAsTheyCome) {
  Table table(pipe, false);
  EXPECT_EQ(table.Add(State("new", "fork.lxz"), begin), "new||fork.lxz|\n");
  EXPECT_EQ(table.Add(State("same", "a"), begin), "same||a|\n");
  EXPECT_EQ(table.End(), "");
}

TEST(Table, HasHeadingsAndColumnsOnATerminal) {
  Table table(terminal, false);
  EXPECT_EQ(table.Add(State("modified", "fork.lxz"), begin), "");
  EXPECT_EQ(table.Add(RowOf({"state", "latest_version", "file"}, {"new", "B.1", "a"}), begin), "");
  EXPECT_EQ(table.End(),
            "STATE     LATEST VERSION  FILE\n"
            "modified                  fork.lxz\n"
            "new       B.1             a\n");
}

TEST(Table, LeavesNoBlanksAtTheEndOfALine) {
  Table table(terminal, false);
  EXPECT_EQ(table.Add(RowOf({"name", "title"}, {"a", ""}), begin), "");
  EXPECT_EQ(table.Add(RowOf({"name"}, {"longer"}), begin), "");
  EXPECT_EQ(table.End(), "NAME    TITLE\na\nlonger\n");
}

TEST(Table, ShowsWhatItHoldsWhenASecondIsOverAndKeepsItsColumns) {
  Table table(terminal, false);
  EXPECT_EQ(table.Add(RowOf({"name", "title"}, {"long", "x"}), begin), "");
  EXPECT_EQ(table.Add(RowOf({"name", "title"}, {"a", "y"}), begin + std::chrono::seconds(1)),
            "NAME  TITLE\nlong  x\na     y\n");
  EXPECT_EQ(table.Add(RowOf({"name", "title"}, {"much longer", "z"}), begin), "much longer  z\n");
  EXPECT_EQ(table.End(), "");
}

TEST(Table, HoldsNotAllOfALargeListing) {
  Table table(terminal, false);
  std::string shown;
  for (int row = 0; row < 500; ++row) shown += table.Add(State("new", "a"), begin);
  EXPECT_EQ(std::count(shown.begin(), shown.end(), '\n'), 501);
}

TEST(Table, MakesRoomForWhatIsWrittenBetweenItsRows) {
  Table table(terminal, false);
  EXPECT_EQ(table.Add(State("new", "a"), begin), "");
  EXPECT_EQ(table.ShowHeld(), "STATE  LATEST VERSION  FILE\nnew                    a\n");
  EXPECT_EQ(table.ShowHeld(), "");
}

TEST(Table, HasNoHeadingForAListOfNames) {
  Table table(terminal, false);
  EXPECT_EQ(table.Add(RowOf({"path"}, {"//a/b"}), begin), "//a/b\n");
  EXPECT_EQ(table.End(), "");
}

TEST(Table, SortsAllRowsByTheirKeys) {
  for (const Screen& screen : {pipe, terminal}) {
    Table table(screen, true);
    EXPECT_EQ(table.Add(RowOf({"name"}, {"x"}, "B.10"), begin), "");
    EXPECT_EQ(table.Add(RowOf({"name"}, {"y"}, "B.2"), begin + std::chrono::seconds(9)), "");
    EXPECT_EQ(table.Add(RowOf({"name"}, {"z"}, "B.2"), begin), "");
    EXPECT_EQ(table.ShowHeld(), "");
    EXPECT_EQ(table.End(), screen.isTerminal ? "y\nz\nx\n" : "y|\nz|\nx|\n");
  }
}

TEST(Table, ShowsStatesAndFoldersInColours) {
  Table table(colours, false);
  EXPECT_EQ(table.Add(RowOf({"status", "name"}, {"failed", "frame/"}), begin), "");
  EXPECT_EQ(table.Add(RowOf({"status", "name"}, {"newest", "failed"}), begin), "");
  EXPECT_EQ(table.End(),
            "\x1B[1mSTATUS  NAME\x1B[0m\n"
            "\x1B[31mfailed\x1B[0m  \x1B[34mframe/\x1B[0m\n"
            "newest  failed\n");
}

TEST(ComesBefore, OrdersAsPeopleDo) {
  for (const auto& [one, other] :
       std::vector<std::pair<const char*, const char*>>{{"B.2", "B.10"},
                                                        {"", "a"},
                                                        {"a", "B"},
                                                        {"A", "a"},
                                                        {"file", "file2"},
                                                        {"x007", "x08"},
                                                        {"x07", "x7"},
                                                        {"99999999999999999999", "100000000000000000000"},
                                                        {"z", "\xC3\xA4"}}) {
    EXPECT_TRUE(ComesBefore(one, other)) << one << " " << other;
    EXPECT_FALSE(ComesBefore(other, one)) << one << " " << other;
  }
  EXPECT_FALSE(ComesBefore("x7", "x7"));
}

TEST(WidthOnScreen, CountsWhatATerminalShows) {
  EXPECT_EQ(WidthOnScreen("fork"), 4U);
  EXPECT_EQ(WidthOnScreen("Gr\xC3\xB6\xC3\x9F"), 4U);
  EXPECT_EQ(WidthOnScreen("o\xCC\x88"), 1U) << "a letter and its dots";
  EXPECT_EQ(WidthOnScreen("\xE5\x9B\xBE\xE9\x9D\xA2"), 4U) << "two characters of two columns";
  EXPECT_EQ(WidthOnScreen("\xE5\x9B"), 1U) << "a text that breaks off is read to its end and no further";
}

}  // namespace vtdirect_cli
