#include <gmock/gmock.h>

#include "tests/e2e/cli/xliff_fixture.h"
#include "tests/e2e/many/many_fixture.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace vtdirect_test {

class DryRunOfGet : public ManyTest {};

TEST_F(DryRunOfGet, TellsTheFileAndFetchesNothing) {
  Serve();
  const ProcessResult result = Run({"get", "--dry-run", forkPath});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, "would write\tfork.lxz\t" + std::string(forkPath) + "\n");
  EXPECT_THAT(HereNames(), IsEmpty());
  EXPECT_EQ(Requests("content/streams/"), 0U);
  EXPECT_EQ(Run({"get", forkPath}).status, 0);
  EXPECT_EQ(Run({"get", "--dry-run", forkPath}).out,
            "would replace\tfork.lxz\t" + std::string(forkPath) + "\n");
  EXPECT_EQ(Run({"get", "--dry-run", forkPath, "-o", "-"}).out,
            "would write\t-\t" + std::string(forkPath) + "\n");
}

TEST_F(DryRunOfGet, RefusesWhatTheCommandWouldRefuse) {
  Serve();
  EXPECT_EQ(Run({"get", "--dry-run", noSuchPath}).status, 6);
  EXPECT_EQ(Run({"get", "--dry-run", "//sim/?id=D4711", "-o", "x"}).status, 6);
  WriteFile(Here("fork.lxz"), "mine");
  EXPECT_EQ(Run({"get", "--dry-run", forkPath}).status, 8);
  EXPECT_EQ(Run({"get", "--dry-run", forkPath, "--force"}).status, 0);
  EXPECT_EQ(ReadFile(Here("fork.lxz")), "mine");
}

TEST_F(DryRunOfGet, MakesNoDirectoryForAFolder) {
  Serve();
  const ProcessResult result = Run({"get", "-r", "--dry-run", framePath, "-o", "into"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, "would write\tinto/Frame/fork.lxz\t" + std::string(forkPath) +
                            "\n"
                            "would write\tinto/Frame/frame.lxz\t" +
                            framePath +
                            "frame.lxz\n"
                            "would write\tinto/Frame/welding manual.xml\t" +
                            weldingPath + "\n");
  EXPECT_EQ(result.err, "vtdirect: 3 of 3 documents would be saved\n");
  EXPECT_THAT(HereNames(), IsEmpty());
  EXPECT_EQ(Requests("content/streams/"), 0U);
}

class DryRunOfXliff : public XliffTest {};

TEST_F(DryRunOfXliff, TellsWhatWouldBeSentAndSendsNothing) {
  Serve();
  const ProcessResult first = Run({"xliff", "put", "--dry-run", bareManual, "chain.xlf", "-l", "en"});
  EXPECT_EQ(first.status, 0) << first.err;
  EXPECT_EQ(first.out, "would create\tchain.xlf\t" + std::string(bareManual) + "\n");
  EXPECT_EQ(Run({"xliff", "put", "--dry-run", manual, "chain.xlf", "-l", "en"}).out,
            "would update\tchain.xlf\t" + std::string(manual) + "\n");
  EXPECT_EQ(Run({"xliff", "put", "--dry-run", manual, "chain.xlf", "-l", "fr"}).status, 8);
  EXPECT_EQ(Run({"xliff", "publish", "--dry-run", "//sim/?id=D1031"}).out,
            "would publish\t//sim/?id=D1031\n");
  EXPECT_EQ(Writes(), "");
  EXPECT_EQ(LinkOf("D1032"), "");
  EXPECT_EQ(LinkOf("D1028"), "D1029");
}

TEST_F(DryRunOfXliff, TellsWhereATranslationWouldGo) {
  Serve();
  const ProcessResult result = Run({"xliff", "get", "--dry-run", manual, "-l", "de", "-o", "copy"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("would write\tcopy\t"));
  EXPECT_THAT(HereNames(), ElementsAre("chain.xlf"));
}

class DryRunOfRecover : public ManyTest {};

TEST_F(DryRunOfRecover, TellsWhereThingsStandAndLeavesTheJournal) {
  Serve();
  const std::string uid = CheckOut(forkPath);
  const std::string journal = "vtdirect-journal 1\n1:1\t2026-01-31T09:00:00Z\tcheckin\t" +
                              std::string(forkPath) + "\t" + uid + "\t\t\n";
  WriteHome(".local/state/vtdirect/journal", journal, 0600);
  const ProcessResult result = Run({"recover", "--dry-run"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("\tyes\tyou still have " + std::string(forkPath) + " checked out"));
  EXPECT_EQ(ReadFile(Home(".local/state/vtdirect/journal")), journal);
  EXPECT_EQ(Run({"recover"}).out, result.out);
  EXPECT_EQ(Run({"recover"}).out, "");
}

}  // namespace vtdirect_test
