#include <gtest/gtest.h>

#include "public/vt_direct_manager.h"

namespace {

using namespace VtDirectManager;

constexpr const char* server = "korvufenloom-vt://plm.example/vt/";

TEST(ParsingAUid, OfADocumentGivesServerDocumentAndName) {
  const auto uid = ParseUID("korvufenloom-vt://plm.example/vt/?id=D1&file=/fork%201%25.lxz");
  ASSERT_TRUE(uid.has_value());
  EXPECT_EQ(uid->server, server);
  EXPECT_EQ(uid->document, "D1");
  EXPECT_EQ(uid->workspace, "");
  EXPECT_EQ(uid->workingCopy, "");
  EXPECT_EQ(uid->fileName, "fork 1%.lxz");
  EXPECT_FALSE(uid->isTemporaryCheckout);
}

TEST(ParsingAUid, OfADocumentInAWorkspaceGivesItAsTheWorkingCopyToo) {
  const auto uid = ParseUID("korvufenloom-vt://plm.example/vt/?x=1&id=D3|W1");
  ASSERT_TRUE(uid.has_value());
  EXPECT_EQ(uid->document, "D3");
  EXPECT_EQ(uid->workspace, "W1");
  EXPECT_EQ(uid->workingCopy, "D3");
  EXPECT_EQ(uid->fileName, "");
  EXPECT_FALSE(uid->isTemporaryCheckout);
}

TEST(ParsingAUid, OfATemporaryCheckoutTellsBothDocuments) {
  const auto uid = ParseUID("korvufenloom-vt://plm.example/vt/?id=D1|W2|D3|T&file=/a");
  ASSERT_TRUE(uid.has_value());
  EXPECT_EQ(uid->document, "D1");
  EXPECT_EQ(uid->workspace, "W2");
  EXPECT_EQ(uid->workingCopy, "D3");
  EXPECT_EQ(uid->fileName, "a");
  EXPECT_TRUE(uid->isTemporaryCheckout);
}

TEST(ParsingAUid, GivesNothingForWhatIsNone) {
  EXPECT_FALSE(ParseUID(nullptr).has_value());
  EXPECT_FALSE(ParseUID("").has_value());
  EXPECT_FALSE(ParseUID("//plm/Products/").has_value());
  EXPECT_FALSE(ParseUID("korvufenloom-vt://plm.example/vt/").has_value());
  EXPECT_FALSE(ParseUID("korvufenloom-vt://plm.example/vt/?id=").has_value());
  EXPECT_FALSE(ParseUID("korvufenloom-vt://plm.example/vt/?id=&file=/a").has_value());
}

TEST(ParsingAUid, GoesByTheConfiguredScheme) {
  SetAppConfig(ConfigUriStem, "acme");
  EXPECT_FALSE(ParseUID("korvufenloom-vt://plm.example/vt/?id=D1").has_value());
  EXPECT_TRUE(ParseUID("acme-vt://plm.example/vt/?id=D1").has_value());
}

TEST(WorkingCopy, HasAUidOfItsOwn) {
  EXPECT_EQ(WorkingCopyUID("korvufenloom-vt://plm.example/vt/?id=D1|W2|D3|T&file=/a%20b"),
            "korvufenloom-vt://plm.example/vt/?id=D3|W2&file=/a%20b");
  EXPECT_EQ(WorkingCopyUID("korvufenloom-vt://plm.example/vt/?id=D3|W1"),
            "korvufenloom-vt://plm.example/vt/?id=D3|W1");
}

TEST(WorkingCopy, HasNoUidWithoutAWorkspaceOrACopy) {
  EXPECT_EQ(WorkingCopyUID("korvufenloom-vt://plm.example/vt/?id=D1"), "");
  EXPECT_EQ(WorkingCopyUID("korvufenloom-vt://plm.example/vt/?id=D1|W2||T"), "");
  EXPECT_EQ(WorkingCopyUID("fork.lxz"), "");
  EXPECT_EQ(WorkingCopyUID(nullptr), "");
}

}  // namespace
