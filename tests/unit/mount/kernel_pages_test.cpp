#include "hosts/mount/tree/kernel_pages.h"

#include <gtest/gtest.h>

namespace vtdirect_mount {
namespace {

using Use = KernelPages::Use;

TEST(KernelPages, AreUsedAsLongAsTheSameBytesAreOpened) {
  KernelPages pages;
  EXPECT_EQ(pages.NoteOpened(7, "one"), Use::Renew);
  EXPECT_EQ(pages.NoteOpened(7, "one"), Use::Keep);
  pages.NoteClosed(7, "one");
  pages.NoteClosed(7, "one");
  EXPECT_EQ(pages.NoteOpened(7, "one"), Use::Keep);
  EXPECT_EQ(pages.NoteOpened(8, "one"), Use::Renew);
  pages.NoteClosed(7, "one");
  EXPECT_EQ(pages.NoteOpened(7, "other"), Use::Renew);
}

TEST(KernelPages, AreBypassedAsLongAsOtherBytesAreOpen) {
  KernelPages pages;
  EXPECT_EQ(pages.NoteOpened(7, "one"), Use::Renew);
  EXPECT_EQ(pages.NoteOpened(7, "other"), Use::Bypass);
  EXPECT_EQ(pages.NoteOpened(7, "other"), Use::Bypass);
  EXPECT_EQ(pages.NoteOpened(7, "one"), Use::Bypass);
  pages.NoteClosed(7, "one");
  EXPECT_EQ(pages.NoteOpened(7, "other"), Use::Bypass);
  pages.NoteClosed(7, "one");
  EXPECT_EQ(pages.NoteOpened(7, "other"), Use::Renew) << "they still hold what was opened first";
  EXPECT_EQ(pages.NoteOpened(7, "other"), Use::Keep);
  EXPECT_EQ(pages.NoteOpened(8, "one"), Use::Renew);
  EXPECT_EQ(pages.NoteOpened(8, "other"), Use::Bypass);
  pages.NoteClosed(8, "other");
  EXPECT_EQ(pages.NoteOpened(8, "one"), Use::Renew) << "the other may have brought in some by a mapping";
}

TEST(KernelPages, AreRenewedAfterTheyWereForgotten) {
  KernelPages pages;
  EXPECT_EQ(pages.NoteOpened(7, "one"), Use::Renew);
  pages.ForgetAll();
  EXPECT_EQ(pages.NoteOpened(7, "one"), Use::Renew);
  pages.Forget(7);
  EXPECT_EQ(pages.NoteOpened(7, "other"), Use::Bypass) << "what is open stays open";
}

}  // namespace
}  // namespace vtdirect_mount
