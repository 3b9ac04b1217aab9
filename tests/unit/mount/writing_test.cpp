#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "hosts/cli/storing/unstored_files.h"
#include "hosts/mount/writing/command_runner.h"
#include "hosts/mount/writing/document_checkouts.h"
#include "hosts/mount/writing/overlay.h"
#include "hosts/mount/writing/scratch_names.h"
#include "tests/support/temporary_directory.h"

namespace vtdirect_mount {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::chrono_literals;

TEST(ScratchNames, KnowTheFilesOfEditors) {
  const ScratchNames names;
  for (const char* name : {"fork.lxz~", ".fork.lxz.swp", ".fork.lxz.swo", ".fork.lxz.swpx", ".fork.lxz.swx",
                           "#fork.lxz#", ".#fork.lxz", ".~lock.fork.odt#", "lu12ab.tmp"}) {
    EXPECT_TRUE(names.Has(name)) << name;
  }
  for (const char* name : {"fork.lxz", "4914", "sediment.lxz", "swp", "note.bak", ".hidden"}) {
    EXPECT_FALSE(names.Has(name)) << name;
  }
}

// Users give such names to documents, too.
TEST(ScratchNames, BelieveSomeNamesOnlyOfTheirProgram) {
  const ScratchNames names;
  EXPECT_TRUE(names.HasNewOf("sedAbc123", "sed"));
  EXPECT_TRUE(names.HasNewOf(".fork.lxz.Xy12Zz", "rsync"));
  for (const char* program : {"vim", "nvim", "view", "vim.basic", "ex"}) {
    EXPECT_TRUE(names.HasNewOf("4913", program)) << program;
  }
  for (const char* name : {"sedAbc123", "sediments", ".fork.lxz.Xy12Zz", ".project.config", "4913"}) {
    EXPECT_FALSE(names.Has(name)) << name;
    EXPECT_FALSE(names.HasNewOf(name, "cp")) << name;
  }
  EXPECT_FALSE(names.HasNewOf("sedition.lxz", "sed"));
  EXPECT_FALSE(names.HasNewOf("fork.lxz", "rsync"));
}

TEST(ScratchNames, KnowWhatProgramsRenameOntoADocument) {
  const ScratchNames names;
  EXPECT_TRUE(names.HasNewOf("fork.lxz.oA1b2C3", "patch"));
  EXPECT_TRUE(names.HasNewOf("fork.lxz.orig", "patch"));
  EXPECT_TRUE(names.HasNewOf("fork.lxz.rej", "patch"));
  EXPECT_TRUE(names.HasNewOf("XXA1b2C3", "perl"));
  EXPECT_TRUE(names.HasNewOf("fork.lxz.A1b2C3", "kate"));
  EXPECT_TRUE(names.HasNewOf("fork.lxz.A1b2C3", "kwrite"));
  for (const char* name :
       {"fork.lxz.oA1b2C3", "fork.lxz.orig", "fork.lxz.rej", "XXA1b2C3", "fork.lxz.A1b2C3"}) {
    EXPECT_FALSE(names.HasNewOf(name, "cp")) << name;
  }
}

TEST(ScratchNames, TakeMorePatterns) {
  ScratchNames names;
  names.Add("*.wip");
  EXPECT_TRUE(names.Has("a.wip"));
  names.Clear();
  EXPECT_FALSE(names.Has("a.wip"));
  EXPECT_FALSE(names.Has("a~"));
}

class OverlayTest : public testing::Test {
 protected:
  [[nodiscard]] std::shared_ptr<LocalFile> NewFile(const std::string& name) const {
    const std::string path = directory_.File(name);
    vtdirect_test::WriteFile(path, name);
    return std::make_shared<LocalFile>(name, path, open(path.c_str(), O_RDWR | O_CLOEXEC));
  }

  vtdirect_test::TemporaryDirectory directory_;
  Overlay overlay_;
};

TEST_F(OverlayTest, LaysFilesOverAddresses) {
  const auto file = NewFile("a");
  overlay_.Lay("//plm/F/a", file);
  overlay_.Lay("//plm/F/G/b", NewFile("b"));
  EXPECT_EQ(overlay_.Find("//plm/F/a"), file);
  EXPECT_EQ(overlay_.Find("//plm/F/c"), nullptr);
  EXPECT_THAT(overlay_.NamesIn("//plm/F/"), ElementsAre("a"));
  overlay_.Take("//plm/F/a", NewFile("another"));
  EXPECT_EQ(overlay_.Find("//plm/F/a"), file);
  overlay_.Take("//plm/F/a", file);
  EXPECT_THAT(overlay_.NamesIn("//plm/F/"), IsEmpty());
}

TEST_F(OverlayTest, BringsBackWhatNothingTookTheNameOf) {
  const auto now = Overlay::Clock::now();
  overlay_.PutAside("//plm/F/a", "base", now);
  EXPECT_EQ(overlay_.BaseOfAside("//plm/F/a"), "base");
  EXPECT_TRUE(overlay_.IsAside("//plm/F/a", now + 59s));
  EXPECT_FALSE(overlay_.IsAside("//plm/F/a", now + 60s));
  overlay_.Lay("//plm/F/a", NewFile("a"));
  EXPECT_FALSE(overlay_.IsAside("//plm/F/a", now));
  EXPECT_EQ(overlay_.BaseOfAside("//plm/F/a"), "");
  overlay_.PutAside("//plm/F/b", "base", now);
  overlay_.BringBack();
  EXPECT_FALSE(overlay_.IsAside("//plm/F/b", now));
}

TEST_F(OverlayTest, RemovesContentsThatNobodyWaitsFor) {
  auto gone = NewFile("gone");
  auto waiting = NewFile("waiting");
  waiting->KeepContent();
  gone.reset();
  waiting.reset();
  EXPECT_THAT(directory_.Entries(), ElementsAre("waiting"));
}

TEST(LocalFile, IsDirtyUntilItsLastChangeIsStored) {
  LocalFile file("a", "/nowhere/a", -1);
  EXPECT_FALSE(file.isDirty());
  file.NoteChange(Due::AfterNextChange);
  EXPECT_FALSE(file.isDue());
  const auto changes = file.changes();
  file.NoteChange(Due::AtNextClose);
  file.NoteStored(changes);
  EXPECT_TRUE(file.isDirty());
  EXPECT_TRUE(file.isDue());
  file.NoteStored(file.changes());
  EXPECT_FALSE(file.isDirty());
  EXPECT_FALSE(file.isDue());
}

TEST_F(OverlayTest, KnowsOfAFileWhetherAnotherHasIt) {
  const auto file = NewFile("a");
  EXPECT_TRUE(file->Claim());
  auto another =
      std::make_shared<LocalFile>("a", file->path(), open(file->path().c_str(), O_RDWR | O_CLOEXEC));
  another->KeepContent();
  EXPECT_FALSE(another->Claim());
}

TEST_F(OverlayTest, KeepsAFileWhileSomebodyWritesToItOrTheServerDoesNotHaveIt) {
  EXPECT_EQ(overlay_.FindToWrite("//plm/F/a"), nullptr);
  const auto file = NewFile("a");
  EXPECT_EQ(overlay_.LayToWrite("//plm/F/a", file), file);
  EXPECT_EQ(overlay_.LayToWrite("//plm/F/a", NewFile("other")), file);
  EXPECT_EQ(overlay_.FindToWrite("//plm/F/a"), file);
  EXPECT_EQ(file->writers(), 3U);
  while (file->hasWriters()) {
    overlay_.TakeIfIdle("//plm/F/a", file);
    EXPECT_EQ(overlay_.Find("//plm/F/a"), file);
    file->NoteWriterGone();
  }
  file->NoteChange(Due::AtNextClose);
  overlay_.TakeIfIdle("//plm/F/a", file);
  EXPECT_EQ(overlay_.Find("//plm/F/a"), file);
  file->NoteStored(file->changes());
  file->SetScratch(true);
  overlay_.TakeIfIdle("//plm/F/a", file);
  EXPECT_EQ(overlay_.Find("//plm/F/a"), file);
  file->SetScratch(false);
  overlay_.TakeIfIdle("//plm/F/a", file);
  EXPECT_EQ(overlay_.Find("//plm/F/a"), nullptr);
}

TEST(UnstoredFiles, AreKeptWithAllThatIsKnown) {
  const vtdirect_test::TemporaryDirectory directory;
  const vtdirect_cli::UnstoredFiles files(directory.path());
  ASSERT_EQ(files.Write({"1-0-5", "//plm/F/a b.lxz", "2026-01-31T09:00:00Z", true, "refused\nby it",
                         "https://plm.example/", "new"}),
            0);
  ASSERT_EQ(files.Write({"1-1-5", "//plm/F/b.lxz", "2026-01-31T09:00:00Z", false, ""}), 0);
  vtdirect_test::WriteFile(directory.File("1-2-5.entry"), "something else\n");
  auto all = files.All();
  ASSERT_EQ(all.size(), 3U);
  EXPECT_EQ(all[0].name, "1-0-5");
  EXPECT_EQ(all[0].address, "//plm/F/a b.lxz");
  EXPECT_EQ(all[0].since, "2026-01-31T09:00:00Z");
  EXPECT_TRUE(all[0].isWhole);
  EXPECT_EQ(all[0].fault, "refused?by it");
  EXPECT_EQ(all[0].server, "https://plm.example/");
  EXPECT_EQ(all[0].base, "new");
  EXPECT_FALSE(all[1].isWhole);
  EXPECT_THAT(all[2].fault, testing::HasSubstr("can't be read"));
  files.Strike("1-0-5");
  EXPECT_EQ(files.All().size(), 2U);
}

// The listing of before says that the document is not there, and a colleague may have made it since.
TEST(DocumentCheckouts, LetNothingBeStoredByWhatWasKnownBeforeTheServerWentAway) {
  Mounted mounted;
  mounted.uidOf = [](const std::string&) { return Answer<std::string>{ENOENT}; };
  mounted.uidNow = [](const std::string&) { return Answer<std::string>{EIO}; };
  mounted.uidStored = [](const std::string&) { return std::string(); };
  mounted.outdate = [](const std::string&) {};
  mounted.outdateStored = [](const std::string&, const Facts&) {};
  mounted.log = [](const std::string&) {};
  const CommandRunner runner({"/bin/false"}, "/tmp");
  DocumentCheckouts checkouts(mounted, runner, false);
  EXPECT_THAT(checkouts.WhyNotNow("//plm/F/a.lxz", vtdirect_cli::baseOfNewDocument),
              testing::HasSubstr(std::strerror(EIO)));
}

TEST(CommandRunner, GivesWhatAFailedCommandSaid) {
  const CommandRunner runner({"/bin/sh", "-c"}, "/tmp");
  EXPECT_EQ(runner.Run({"exit 0"}), "");
  EXPECT_EQ(runner.Run({"echo no >&2; exit 3"}), "no");
  EXPECT_EQ(runner.Run({"exit 3"}), "/bin/sh failed");
  EXPECT_EQ(runner.Run({"pwd >&2; exit 1"}), "/tmp");
  EXPECT_NE(CommandRunner({"/nowhere/program"}, "/tmp").Run({}), "");
}

}  // namespace
}  // namespace vtdirect_mount
