#include "hosts/mount/tree/document_times.h"

#include <gtest/gtest.h>

namespace vtdirect_mount {
namespace {

// Without a server's list of workspaces any text that is no UID counts as what can change.
Iteration WorkingCopy(std::uint64_t size, std::int64_t since) {
  return {"working copy", "key of the working copy", {size, since}};
}

TEST(DocumentTimes, GiveAWorkingCopyTheTimeAtWhichItFirstHadItsLength) {
  DocumentTimes times;
  EXPECT_EQ(times.WithTime("//plm/F/a", WorkingCopy(5, 100)).facts.since, 100);
  EXPECT_EQ(times.WithTime("//plm/F/a", WorkingCopy(5, 200)).facts.since, 100);
  EXPECT_EQ(times.WithTime("//plm/F/a", WorkingCopy(6, 300)).facts.since, 300);
  EXPECT_EQ(times.WithTime("//plm/F/a", WorkingCopy(5, 400)).facts.since, 400);
  times.Forget();
  EXPECT_EQ(times.WithTime("//plm/F/a", WorkingCopy(5, 500)).facts.since, 500);
}

TEST(DocumentTimes, GiveWhatWasStoredTheTimeAtWhichItWasWritten) {
  DocumentTimes times;
  times.NoteStored("//plm/F/a", {5, 50});
  EXPECT_EQ(times.JustStored("//plm/F/a"), (Facts{5, 50}));
  EXPECT_EQ(times.JustStored("//plm/F/b"), std::nullopt);
  EXPECT_EQ(times.WithTime("//plm/F/b", WorkingCopy(5, 100)).facts.since, 100);
  EXPECT_EQ(times.WithTime("//plm/F/a", WorkingCopy(5, 100)).facts.since, 50);
  EXPECT_EQ(times.WithTime("//plm/F/a", WorkingCopy(5, 200)).facts.since, 50);
  EXPECT_EQ(times.JustStored("//plm/F/a"), std::nullopt) << "it was met";
  const Iteration other{"another checkout", "another key", {5, 300}};
  EXPECT_EQ(times.WithTime("//plm/F/a", other).facts.since, 300);
  times.NoteStored("//plm/F/a", {5, 60});
  EXPECT_EQ(times.WithTime("//plm/F/a", WorkingCopy(7, 400)).facts.since, 400);
}

}  // namespace
}  // namespace vtdirect_mount
