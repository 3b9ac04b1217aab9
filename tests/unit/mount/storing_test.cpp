#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vtdirect/vt_direct_manager.h>

#include <cerrno>
#include <future>

#include "hosts/cli/storing/unstored_files.h"
#include "hosts/mount/writing/writing.h"
#include "tests/support/temporary_directory.h"

namespace vtdirect_mount {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* address = "//plm/Products/Bike/Folders/new.lxz";

// What becomes of a file that is no document before, with a server that takes everything or nothing.
class Storing : public testing::Test {
 protected:
  Storing() {
    setenv("XDG_STATE_HOME", directory_.path().c_str(), 1);
    VtDirectManager::UpdateServerList({{"plm", url}});
    mounted_.uidOf = mounted_.uidNow = [this](const std::string&) {
      return uid_.empty() ? Answer<std::string>{ENOENT} : Found(std::string(uid_));
    };
    mounted_.uidStored = [this](const std::string&) {
      uid_ = UidOf(++stores_);
      if (duringLastQuestion_) duringLastQuestion_();
      return uid_;
    };
    mounted_.outdate = [](const std::string&) {};
    mounted_.outdateStored = [](const std::string&, const Facts&) {};
    mounted_.log = [this](const std::string&) {
      ++failures_;
      if (duringFailure_) duringFailure_();
    };
  }
  [[nodiscard]] static std::string UidOf(int iteration) {
    return "korvufenloom-vt://plm.example/Vantry/?id=D100" + std::to_string(iteration);
  }
  // What "/bin/true" stores succeeds, what "/bin/false" stores waits.
  [[nodiscard]] std::unique_ptr<Writing> MakeWriting(const std::string& command) const {
    return std::make_unique<Writing>(Writing::Settings{{}, false, {command}, "/tmp"}, mounted_);
  }
  [[nodiscard]] std::vector<vtdirect_cli::UnstoredFile> Entries() const { return unstored().All(); }
  [[nodiscard]] static vtdirect_cli::UnstoredFiles unstored() { return vtdirect_cli::UnstoredFiles(); }
  static void Write(Writing& writing, LocalFile& file, const std::string& text) {
    ASSERT_EQ(writing.NoteChange(file, Due::AtNextClose), 0);
    const auto end = static_cast<off_t>(file.size());
    ASSERT_EQ(pwrite(file.file().descriptor(), text.data(), text.size(), end),
              static_cast<ssize_t>(text.size()));
  }
  // A command that stores once, and nothing after that.
  [[nodiscard]] std::string StoresOnce() const {
    const std::string command = directory_.File("stores-once");
    vtdirect_test::WriteFile(command, "#!/bin/sh\nmkdir '" + directory_.File("stored") + "'\n");
    chmod(command.c_str(), 0700);
    return command;
  }
  // A file that a document was made of, with bytes that are not stored yet; the test has it open.
  [[nodiscard]] static std::shared_ptr<LocalFile> MakeCreated(Writing& writing) {
    EXPECT_EQ(writing.Prepare("//plm/"), "");
    const Writable made = writing.Create(address, "cp");
    EXPECT_NE(made.file, nullptr) << made.error;
    if (made.file == nullptr) return nullptr;
    EXPECT_EQ(writing.Store(made.file), 0);
    Write(writing, *made.file, "one");
    return made.file;
  }
  // Another program, which has the document checked out, opens what is there, writes to it and closes it.
  static void Append(Writing& writing, const std::string& text) {
    const auto file = writing.overlay().FindToWrite(address);
    ASSERT_NE(file, nullptr);
    Write(writing, *file, text);
    writing.Close(file);
  }
  // Waits until what was posted before is carried out.
  static void Finish(Writing& writing) {
    std::promise<void> end;
    writing.Post([&end] { end.set_value(); });
    end.get_future().wait();
  }

  static constexpr const char* url = "http://plm.example/Vantry/";
  const vtdirect_test::TemporaryDirectory directory_;
  Mounted mounted_;
  std::string uid_;
  int stores_ = 0;
  int failures_ = 0;
  std::function<void()> duringLastQuestion_;
  std::function<void()> duringFailure_;
};

TEST_F(Storing, OfAFileThatWasRemovedWhileItIsOpenIsNotDone) {
  const auto writing = MakeWriting("/bin/true");
  ASSERT_EQ(writing->Prepare("//plm/"), "");
  const Writable made = writing->Create(address, "cp");
  ASSERT_NE(made.file, nullptr) << made.error;
  Write(*writing, *made.file, "one");
  ASSERT_EQ(writing->Remove(address), 0);
  EXPECT_THAT(Entries(), IsEmpty());
  Write(*writing, *made.file, "two");
  EXPECT_EQ(writing->Store(made.file), 0);
  EXPECT_EQ(stores_, 0);
  EXPECT_THAT(Entries(), IsEmpty());
}

TEST_F(Storing, KeepsTheEntryOfWhatIsWrittenWhileItsEndIsAskedFor) {
  const auto writing = MakeWriting("/bin/true");
  ASSERT_EQ(writing->Prepare("//plm/"), "");
  const Writable made = writing->Create(address, "cp");
  ASSERT_NE(made.file, nullptr) << made.error;
  Write(*writing, *made.file, "one");
  duringLastQuestion_ = [&] { Write(*writing, *made.file, "two"); };
  EXPECT_EQ(writing->Store(made.file), 0);
  ASSERT_THAT(Entries(), SizeIs(1));
  EXPECT_FALSE(Entries()[0].isWhole);
  const std::string content = unstored().ContentOf(made.file->name());
  duringLastQuestion_ = {};
  EXPECT_EQ(access(content.c_str(), F_OK), 0);
  EXPECT_EQ(writing->Store(made.file), 0);
  EXPECT_THAT(Entries(), IsEmpty());
}

TEST_F(Storing, GoesOnAfterEachIterationThatWasMadeOfANewFile) {
  const auto writing = MakeWriting("/bin/true");
  ASSERT_EQ(writing->Prepare("//plm/"), "");
  const Writable made = writing->Create(address, "cp");
  ASSERT_NE(made.file, nullptr) << made.error;
  for (const int iteration : {1, 2, 3}) {
    Write(*writing, *made.file, "more");
    EXPECT_EQ(writing->Store(made.file), 0);
    EXPECT_EQ(made.file->base(), UidOf(iteration));
  }
  EXPECT_THAT(Entries(), IsEmpty());
}

TEST_F(Storing, OfADocumentThatWasJustMadeIsLeftToTheLastWhoWritesToIt) {
  const auto writing = MakeWriting("/bin/true");
  ASSERT_EQ(writing->Prepare("//plm/"), "");
  const Writable made = writing->Create(address, "cp");
  ASSERT_NE(made.file, nullptr) << made.error;
  Write(*writing, *made.file, "one");
  ASSERT_EQ(writing->EditKnown(address), made.file);
  ASSERT_EQ(writing->EditKnown(address), made.file);
  EXPECT_EQ(writing->Store(made.file), 0);
  writing->Close(made.file);
  EXPECT_EQ(made.file->writers(), 2U);
  Write(*writing, *made.file, "two");
  writing->Close(made.file);
  EXPECT_EQ(made.file->writers(), 1U);
  Write(*writing, *made.file, "three");
  writing->Close(made.file);
  Finish(*writing);
  EXPECT_EQ(stores_, 2);
  EXPECT_THAT(Entries(), IsEmpty());
}

TEST_F(Storing, OfADocumentThatWasJustMadeGoesOnWithWhatIsClosedMeanwhile) {
  const auto writing = MakeWriting("/bin/true");
  const auto file = MakeCreated(*writing);
  ASSERT_NE(file, nullptr);
  duringLastQuestion_ = [&] {
    if (stores_ == 2) Append(*writing, "two");
  };
  writing->Close(file);
  Finish(*writing);
  Finish(*writing);
  EXPECT_EQ(stores_, 3);
  EXPECT_FALSE(file->isDirty());
  EXPECT_FALSE(file->hasWriters());
  EXPECT_THAT(Entries(), IsEmpty());
}

TEST_F(Storing, OfADocumentThatWasJustMadeIsDoneForOneWhoGetsNothing) {
  const auto writing = MakeWriting("/bin/true");
  const auto file = MakeCreated(*writing);
  ASSERT_NE(file, nullptr);
  ASSERT_EQ(writing->overlay().FindToWrite(address), file);
  writing->Close(file);
  Finish(*writing);
  EXPECT_EQ(stores_, 1);
  writing->LetGo(file);
  Finish(*writing);
  EXPECT_EQ(stores_, 2);
  EXPECT_THAT(Entries(), IsEmpty());
}

TEST_F(Storing, ThatFailsMakesWhatIsClosedMeanwhileWait) {
  const auto writing = MakeWriting(StoresOnce());
  const auto file = MakeCreated(*writing);
  ASSERT_NE(file, nullptr);
  duringFailure_ = [&] {
    if (failures_ == 1) Append(*writing, "two");
  };
  writing->Close(file);
  Finish(*writing);
  Finish(*writing);
  EXPECT_EQ(failures_, 1);
  EXPECT_TRUE(writing->IsWaiting(address));
  ASSERT_THAT(Entries(), SizeIs(1));
  EXPECT_TRUE(Entries()[0].isWhole);
}

TEST_F(Storing, OfHalfAFileIsNotTriedForEver) {
  const auto writing = MakeWriting("/bin/true");
  const auto file = MakeCreated(*writing);
  ASSERT_NE(file, nullptr);
  file->NoteFailedWrite(ENOSPC);
  writing->Close(file);
  Finish(*writing);
  Finish(*writing);
  EXPECT_EQ(failures_, 1);
  EXPECT_EQ(stores_, 1);
  ASSERT_THAT(Entries(), SizeIs(1));
  EXPECT_FALSE(Entries()[0].isWhole);
}

TEST_F(Storing, OfAWaitingFileGoesOnWithWhatIsClosedMeanwhile) {
  ASSERT_EQ(MakeWriting("/bin/false")->Prepare("//plm/"), "");
  const vtdirect_cli::UnstoredFile waiting{"9-0-1", address, "2020-01-31T09:00:00Z", true, "refused",
                                           url,     "new"};
  ASSERT_EQ(unstored().Write(waiting), 0);
  vtdirect_test::WriteFile(unstored().ContentOf(waiting.name), "FENLET new\n");
  const auto writing = MakeWriting("/bin/true");
  std::promise<void> retried;
  duringLastQuestion_ = [&] {
    if (stores_ != 1) return;
    Append(*writing, "two");
    retried.set_value();
  };
  ASSERT_EQ(writing->Prepare("//plm/"), "");
  retried.get_future().wait();
  Finish(*writing);
  Finish(*writing);
  EXPECT_EQ(stores_, 2);
  EXPECT_FALSE(writing->IsWaiting(address));
  EXPECT_THAT(Entries(), IsEmpty());
}

TEST_F(Storing, ThatFailsLeavesTheTimeOfTheLastChange) {
  ASSERT_EQ(MakeWriting("/bin/false")->Prepare("//plm/"), "");
  const vtdirect_cli::UnstoredFile waiting{"9-0-1", address, "2020-01-31T09:00:00Z", true, "refused",
                                           url,     "new"};
  ASSERT_EQ(unstored().Write(waiting), 0);
  vtdirect_test::WriteFile(unstored().ContentOf(waiting.name), "FENLET new\n");
  const auto writing = MakeWriting("/bin/false");
  ASSERT_EQ(writing->Prepare("//plm/"), "");
  const auto file = writing->overlay().Find(address);
  ASSERT_NE(file, nullptr) << Entries()[0].fault;
  writing->Post([&] { EXPECT_EQ(writing->Store(file), EIO); });
  Finish(*writing);
  ASSERT_THAT(Entries(), SizeIs(1));
  EXPECT_NE(Entries()[0].fault, waiting.fault);
  EXPECT_EQ(Entries()[0].since, waiting.since);
  // Who writes to it again changes it now.
  Write(*writing, *file, "more");
  EXPECT_GT(Entries()[0].since, waiting.since);
}

}  // namespace
}  // namespace vtdirect_mount
