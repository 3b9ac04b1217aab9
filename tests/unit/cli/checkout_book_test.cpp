#include "hosts/cli/checkouts/checkout_book.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "tests/support/temporary_directory.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using vtdirect_test::ReadFile;
using vtdirect_test::WriteFile;

namespace vtdirect_cli {
namespace {

std::string Uid(const std::string& id) {
  return "korvufenloom-vt://plm.example/vt/?id=" + id;
}

KeptCheckout Checkout(const std::string& document, const std::string& since = "2026-01-31T09:00:00Z") {
  return {Uid(document), Uid(document + "|W" + document + "|C" + document + "|T"), document + ".lxz", "anna",
          since};
}

std::string LineOf(const std::string& document) {
  return Uid(document) + "\t" + Uid(document + "|W" + document + "|C" + document + "|T") + "\t" + document +
         ".lxz\tanna\t2026-01-31T09:00:00Z\n";
}

constexpr const char* bookHead = "vtdirect-checkouts 1\n";

unsigned ModeOf(const std::string& path) {
  struct stat facts = {};
  EXPECT_EQ(stat(path.c_str(), &facts), 0) << path;
  return facts.st_mode & 07777U;
}

}  // namespace

class Book : public testing::Test {
 protected:
  void WriteBook(const std::string& text) {
    std::filesystem::create_directories(directory_.File("state/vtdirect"));
    WriteFile(path_, text);
  }

  std::vector<std::string> Documents() {
    std::vector<std::string> out;
    for (const KeptCheckout& kept : book_.Read().checkouts) out.push_back(kept.document);
    return out;
  }

  // Everything that a change may have left beside the file.
  std::vector<std::string> Names() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory_.File("state/vtdirect"))) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  vtdirect_test::TemporaryDirectory directory_;
  std::string path_ = directory_.File("state/vtdirect/checkouts");
  CheckoutBook book_{path_};
};

TEST_F(Book, IsEmptyWithoutAFile) {
  const BookContents contents = book_.Read();
  EXPECT_THAT(contents.checkouts, IsEmpty());
  EXPECT_TRUE(contents.readable);
  EXPECT_EQ(contents.fault, "");
  EXPECT_FALSE(book_.Find(Uid("D1")));
  EXPECT_FALSE(std::filesystem::exists(directory_.File("state")));
}

TEST_F(Book, KeepsForTheUserAlone) {
  EXPECT_EQ(book_.Keep(Checkout("D1")), "");
  EXPECT_EQ(book_.Keep(Checkout("D2")), "");
  EXPECT_EQ(ReadFile(path_), bookHead + LineOf("D1") + LineOf("D2"));
  EXPECT_EQ(ModeOf(path_), 0600U);
  EXPECT_EQ(ModeOf(path_ + ".lock"), 0600U);
  EXPECT_EQ(ModeOf(directory_.File("state/vtdirect")), 0700U);
  EXPECT_EQ(ModeOf(directory_.File("state")), 0700U);
  EXPECT_THAT(Names(), ElementsAre("checkouts", "checkouts.lock"));
}

TEST_F(Book, TakesAFileFromOthersThatTheyCouldRead) {
  WriteBook(bookHead + LineOf("D1"));
  ASSERT_EQ(chmod(path_.c_str(), 0666), 0);
  EXPECT_EQ(book_.Keep(Checkout("D2")), "");
  EXPECT_EQ(ModeOf(path_), 0600U);
}

TEST_F(Book, ReplacesWhatWasKeptOfTheSameDocument) {
  WriteBook(bookHead + LineOf("D1") + LineOf("D2") + LineOf("D1"));
  KeptCheckout renewed = Checkout("D1", "2026-02-01T00:00:00Z");
  renewed.uid = Uid("D1|W9|D9|T");
  EXPECT_EQ(book_.Keep(renewed), "");
  EXPECT_EQ(ReadFile(path_), bookHead + Uid("D1") + "\t" + Uid("D1|W9|D9|T") +
                                 "\tD1.lxz\tanna\t2026-02-01T00:00:00Z\n" + LineOf("D2"));
}

TEST_F(Book, ForgetsByDocumentAndByWorkingCopy) {
  WriteBook(bookHead + LineOf("D1") + LineOf("D2") + LineOf("D3"));
  EXPECT_EQ(book_.Forget(Uid("D1")), "");
  EXPECT_EQ(book_.Forget(Uid("D3|WD3|CD3|T")), "");
  EXPECT_EQ(ReadFile(path_), bookHead + LineOf("D2"));
}

TEST_F(Book, IsNotWrittenWhenNothingIsForgotten) {
  WriteBook(bookHead + LineOf("D1"));
  struct stat before = {};
  struct stat after = {};
  ASSERT_EQ(stat(path_.c_str(), &before), 0);
  EXPECT_EQ(book_.Forget(Uid("D2")), "");
  ASSERT_EQ(stat(path_.c_str(), &after), 0);
  EXPECT_EQ(before.st_ino, after.st_ino);
}

TEST_F(Book, LeavesBrokenLinesWhereTheyAre) {
  WriteBook(bookHead + std::string("# mine\n") + LineOf("D1") + "\nD\tx\n" + LineOf("D2"));
  const BookContents contents = book_.Read();
  EXPECT_THAT(Documents(), ElementsAre(Uid("D1"), Uid("D2")));
  EXPECT_TRUE(contents.readable);
  EXPECT_EQ(contents.fault, path_ + " holds lines that are no checkouts, and stay as they are: 2, 4, 5");
  EXPECT_EQ(book_.Forget(Uid("D1")), "");
  EXPECT_EQ(book_.Keep(Checkout("D3")), "");
  EXPECT_EQ(ReadFile(path_), bookHead + std::string("# mine\n\nD\tx\n") + LineOf("D2") + LineOf("D3"));
}

TEST_F(Book, ReadsALastLineWithoutItsEnd) {
  std::string text = bookHead + LineOf("D1");
  text.pop_back();
  WriteBook(text);
  EXPECT_THAT(Documents(), ElementsAre(Uid("D1")));
  EXPECT_EQ(book_.Keep(Checkout("D2")), "");
  EXPECT_EQ(ReadFile(path_), bookHead + LineOf("D1") + LineOf("D2"));
}

TEST_F(Book, TakesAnEmptyFileForAnEmptyBook) {
  WriteBook("");
  EXPECT_EQ(book_.Read().fault, "");
  EXPECT_EQ(book_.Keep(Checkout("D1")), "");
  EXPECT_EQ(ReadFile(path_), bookHead + LineOf("D1"));
}

TEST_F(Book, NeverWritesToAFileOfAnotherForm) {
  for (const std::string& text :
       {"vtdirect-checkouts 2\n" + LineOf("D1"), std::string("vtdirect-checkouts 10\n"),
        std::string("nonsense"), LineOf("D1"), std::string("\n"), std::string(2, '\0')}) {
    WriteBook(text);
    const BookContents contents = book_.Read();
    EXPECT_FALSE(contents.readable);
    EXPECT_THAT(contents.fault, HasSubstr("left as it is"));
    EXPECT_THAT(contents.checkouts, IsEmpty());
    EXPECT_EQ(book_.Keep(Checkout("D3")), contents.fault);
    EXPECT_EQ(book_.Forget(Uid("D1")), contents.fault);
    EXPECT_EQ(ReadFile(path_), text);
  }
}

TEST_F(Book, NeverReplacesAFileThatCannotBeRead) {
  std::filesystem::create_directories(path_);
  EXPECT_FALSE(book_.Read().readable);
  EXPECT_THAT(book_.Read().fault, HasSubstr("cannot read " + path_));
  EXPECT_THAT(book_.Keep(Checkout("D1")), HasSubstr("cannot read " + path_));
  EXPECT_TRUE(std::filesystem::is_directory(path_));
}

TEST_F(Book, DoesNotGrowBeyondWhatCanBeRead) {
  KeptCheckout large = Checkout("D1");
  large.name = std::string(std::size_t{1} << 20U, 'x');
  WriteBook(bookHead + LineOf("D2"));
  EXPECT_THAT(book_.Keep(large), HasSubstr("File too large"));
  EXPECT_EQ(ReadFile(path_), bookHead + LineOf("D2"));
}

TEST_F(Book, TellsWhyItCannotBeWritten) {
  WriteFile(directory_.File("state"), "a file where the directory has to be");
  EXPECT_THAT(book_.Keep(Checkout("D1")), HasSubstr("cannot make the directory"));
  EXPECT_THAT(CheckoutBook("").Keep(Checkout("D1")), HasSubstr("no home directory"));
  EXPECT_THAT(CheckoutBook("").Read().checkouts, IsEmpty());
}

TEST_F(Book, ThatIsALinkStaysOne) {
  WriteBook("");
  WriteFile(directory_.File("elsewhere"), bookHead + LineOf("D1"));
  std::filesystem::remove(path_);
  std::filesystem::create_symlink(directory_.File("elsewhere"), path_);
  EXPECT_EQ(book_.Keep(Checkout("D2")), "");
  EXPECT_TRUE(std::filesystem::is_symlink(path_));
  EXPECT_EQ(ReadFile(directory_.File("elsewhere")), bookHead + LineOf("D1") + LineOf("D2"));
}

TEST_F(Book, LosesNothingToManyRunsAtOnce) {
  constexpr int runs = 12;
  constexpr int callsOfEach = 5;
  std::vector<pid_t> children;
  for (int run = 0; run < runs; ++run) {
    const pid_t child = fork();
    if (child == 0) {
      int failures = 0;
      for (int i = 0; i < callsOfEach; ++i) {
        const std::string document = "D" + std::to_string(run * callsOfEach + i);
        if (!book_.Keep(Checkout(document)).empty()) ++failures;
        if (i == 0 && !book_.Forget(Uid(document)).empty()) ++failures;
      }
      _exit(failures);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  EXPECT_EQ(Documents().size(), static_cast<std::size_t>(runs * (callsOfEach - 1)));
  EXPECT_EQ(book_.Read().fault, "");
  EXPECT_THAT(Names(), ElementsAre("checkouts", "checkouts.lock"));
}

TEST(BookLocation, IsTheStateDirectoryOfTheUser) {
  setenv("HOME", "/home/anna", 1);
  setenv("XDG_STATE_HOME", "/state", 1);
  EXPECT_EQ(CheckoutBook::Location(), "/state/vtdirect/checkouts");
  setenv("XDG_STATE_HOME", "relative", 1);
  EXPECT_EQ(CheckoutBook::Location(), "/home/anna/.local/state/vtdirect/checkouts");
  unsetenv("XDG_STATE_HOME");
  EXPECT_EQ(CheckoutBook::Location(), "/home/anna/.local/state/vtdirect/checkouts");
  unsetenv("HOME");
  EXPECT_EQ(CheckoutBook::Location(), "");
}

}  // namespace vtdirect_cli
