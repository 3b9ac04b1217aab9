#include "hosts/cli/checkouts/kept_checkout.h"

#include <gtest/gtest.h>

namespace vtdirect_cli {
namespace {

const std::string serverUrl = "korvufenloom-vt://plm.example/vt/";

std::string Uid(const std::string& id) {
  return serverUrl + "?id=" + id + "&file=/fork.lxz";
}

KeptCheckout Temporary() {
  return {Uid("D1"), Uid("D1|W7|D2|T"), "fork.lxz", "anna", "2026-01-31T09:00:00Z"};
}

KeptCheckout InWorkspace() {
  return {Uid("D1|W3"), Uid("D2|W3"), "fork.lxz", "anna", "2026-01-31T09:00:00Z"};
}

}  // namespace

TEST(KeptCheckout, IsFiveFieldsPartedByTabs) {
  EXPECT_EQ(LineOfCheckout(Temporary()),
            "korvufenloom-vt://plm.example/vt/?id=D1&file=/fork.lxz\t"
            "korvufenloom-vt://plm.example/vt/?id=D1|W7|D2|T&file=/fork.lxz\t"
            "fork.lxz\tanna\t2026-01-31T09:00:00Z");
}

TEST(KeptCheckout, EscapesWhatWouldBreakALine) {
  KeptCheckout checkout = Temporary();
  checkout.name = "a\tb\nc\\d\re\x7F";
  checkout.user = "x";
  EXPECT_NE(LineOfCheckout(checkout).find("\ta\\x09b\\x0Ac\\x5Cd\\x0De\\x7F\tx\t"), std::string::npos);
}

TEST(KeptCheckout, ComesBackWithEveryByte) {
  KeptCheckout checkout = Temporary();
  checkout.name.clear();
  for (int byte = 0; byte < 256; ++byte) checkout.name += static_cast<char>(byte);
  checkout.user = "\xFF\xFE";
  const auto read = CheckoutOfLine(LineOfCheckout(checkout));
  ASSERT_TRUE(read);
  EXPECT_EQ(read->document, checkout.document);
  EXPECT_EQ(read->uid, checkout.uid);
  EXPECT_EQ(read->name, checkout.name);
  EXPECT_EQ(read->user, checkout.user);
  EXPECT_EQ(read->since, checkout.since);
}

TEST(KeptCheckout, IsNotReadFromABrokenLine) {
  const std::string uid = Uid("D1|W7|D2|T");
  EXPECT_TRUE(CheckoutOfLine("d\t" + uid + "\tn\tu\ts"));
  for (const std::string& line :
       {std::string(), std::string("#"), "d\t" + uid + "\tn\tu", "d\t" + uid + "\tn\tu\ts\tmore",
        std::string("d\t\tn\tu\ts"), std::string("d\tno uid\tn\tu\ts"), "d\t" + Uid("") + "\tn\tu\ts",
        "d\t" + uid + "\t\\n\tu\ts", "d\t" + uid + "\t\\x4\tu\ts", "d\t" + uid + "\t\\xZZ\tu\ts",
        "d\t" + uid + "\tn\tu\t\\", "d\t" + uid + "\tn\tu\ts\r"}) {
    EXPECT_FALSE(CheckoutOfLine(line)) << line;
  }
}

TEST(KeptCheckout, IsFoundByItsDocumentAndByItsWorkingCopy) {
  for (const KeptCheckout& checkout : {Temporary(), InWorkspace()}) {
    EXPECT_TRUE(LeadsTo(checkout, checkout.uid));
    EXPECT_TRUE(LeadsTo(checkout, checkout.document));
    EXPECT_TRUE(LeadsTo(checkout, serverUrl + "?id=D1")) << "without a file name";
    EXPECT_TRUE(LeadsTo(checkout, serverUrl + "?id=D2")) << "the working copy by its own id";
    EXPECT_TRUE(LeadsTo(checkout, serverUrl + "?x=1&id=D1"));
  }
}

TEST(KeptCheckout, IsNotFoundByAnotherDocumentOrServer) {
  for (const KeptCheckout& checkout : {Temporary(), InWorkspace()}) {
    for (const std::string& uid :
         {Uid("D3"), Uid("W7"), Uid("W3"), Uid(""), std::string(), std::string("//plm/Products/fork.lxz"),
          std::string("korvufenloom-vt://other.example/vt/?id=D1")}) {
      EXPECT_FALSE(LeadsTo(checkout, uid)) << uid;
    }
  }
}

TEST(KeptCheckout, IsNotFoundByAnotherWorkingCopyOfItsDocument) {
  EXPECT_FALSE(LeadsTo(Temporary(), Uid("D1|W8|D9|T")));
}

TEST(WorkingCopies, AreToldByTheFormOfTheirUids) {
  EXPECT_TRUE(IsTemporaryCopy(Uid("D1|W7|D2|T")));
  EXPECT_FALSE(IsTemporaryCopy(Uid("D2|W3")));
  EXPECT_FALSE(IsTemporaryCopy(Uid("D2")));
  EXPECT_TRUE(HasWorkspace(Uid("D1|W7|D2|T")));
  EXPECT_TRUE(HasWorkspace(Uid("D2|W3")));
  EXPECT_FALSE(HasWorkspace(Uid("D2")));
  EXPECT_EQ(DocumentIdOf(Uid("D1|W7|D2|T")), "D1");
  EXPECT_EQ(DocumentIdOf(Uid("D2|W3")), "D2");
  EXPECT_EQ(DocumentIdOf("//plm/fork.lxz"), "");
  EXPECT_TRUE(HasObjectId(Uid("D2|W3")));
  EXPECT_FALSE(HasObjectId(Uid("|W3")));
  EXPECT_FALSE(HasObjectId(Uid("")));
  EXPECT_FALSE(HasObjectId(""));
}

TEST(WorkingCopies, HaveTheirOwnIdAndTheirWorkspaceInAnyForm) {
  EXPECT_EQ(ByOwnId(Uid("D1|W7|D2|T")), Uid("D2|W7"));
  EXPECT_EQ(ByOwnId(serverUrl + "?file=/a%7Cb&id=D1|W7|D2|T&x=1"), serverUrl + "?id=D2|W7&file=/a%7Cb");
  EXPECT_EQ(ByOwnId(Uid("D2|W3")), Uid("D2|W3"));
  EXPECT_EQ(ByOwnId(Uid("D1")), Uid("D1"));
  EXPECT_EQ(ByOwnId("//plm/fork.lxz"), "//plm/fork.lxz");
}

TEST(WorkingCopies, HaveADocument) {
  EXPECT_EQ(ByDocumentId(Uid("D1|W7|D2|T")), Uid("D1"));
  EXPECT_EQ(ByDocumentId(serverUrl + "?id=D1|W7|D2|T&file=/gr%C3%BC%20b.lxz"),
            serverUrl + "?id=D1&file=/gr%C3%BC%20b.lxz");
  EXPECT_EQ(ByDocumentId(serverUrl + "?id=D1|W7|D2|T"), serverUrl + "?id=D1");
  EXPECT_EQ(ByDocumentId(Uid("D2|W3")), Uid("D2|W3"));
}

TEST(Uids, AreTheSameWhenServerAndIdAre) {
  EXPECT_TRUE(AreSameUid(Uid("D1"), serverUrl + "?id=D1"));
  EXPECT_FALSE(AreSameUid(Uid("D1"), Uid("D2")));
  EXPECT_FALSE(AreSameUid("", ""));
  EXPECT_FALSE(AreSameUid("a", "a"));
}

}  // namespace vtdirect_cli
