#include <filesystem>

#include "tests/wire/documents/flow_fixture.h"
#include "tests/wire/public/listed_server.h"

namespace vtdirect_test {
namespace {

using namespace VtDirectManager;
using testing::IsEmpty;

const std::string uidStem = "korvufenloom-vt://plm.example/vt/?id=";
const std::string temporaryUid = uidStem + "D1001|W77|D1002|T";
constexpr const char* vfsPath = "//plm/Products/Gadget/Folders/pump.fnl";

// A document with flags of its state, in the context C5.
std::string Document(const std::string& state) {
  return R"({"id":"D1001","revision":"B","iteration":"3","context":{"id":"C5"},)"
         R"("epmMaster":{"number":"0042","cadName":"pump.fnl"},"pdmIterationState":{)" +
         state + "}}";
}

class CheckoutFront : public ListedServerTest {
 protected:
  ~CheckoutFront() override {
    EXPECT_EQ(transport.unanswered(), 0u) << "answers that nobody asked for";
    EXPECT_THAT(directory.Entries(), IsEmpty()) << "files left behind";
  }
  [[nodiscard]] Traces Traced() const {
    Traces lines;
    for (const TraceLine& line : trace.lines()) {
      if (line.name != "CmsInterface") lines.push_back(line);
    }
    return lines;
  }
  void ThenNonce() { transport.Then(200, nonceAnswer); }
};

TEST_F(CheckoutFront, ChecksOutAndGivesTheUidOfTheCopy) {
  transport.Then(200, Document(""));
  ThenNonce();
  transport.Then(200, R"({"id":"W77"})").Then(200, R"([{"id":"D1002","epmMaster":{"cadName":"a b.fnl"}}])");
  EXPECT_EQ(Checkout((uidStem + "D1001").c_str()), temporaryUid + "&file=/a%20b.fnl");
  EXPECT_EQ(trace.lines(), Traces{Miss("Created temporary workspace W77\n")});
}

TEST_F(CheckoutFront, ChecksOutByPath) {
  setenv("FENLOOM_LANGUAGE", "en", 1);
  transport.Then(404).Then(404).Then(404);
  transport.Then(200, R"([{"id":"D1001","attributes":{"number":"0042"}}])").Then(200, Document(""));
  transport.Then(200, Document(""));
  ThenNonce();
  transport.Then(200, R"({"id":"W77"})").Then(200, R"([{"id":"D1002"}])");
  EXPECT_EQ(Checkout(vfsPath), temporaryUid);
}

TEST_F(CheckoutFront, TracesACheckoutThatFailed) {
  transport.Then(404);
  EXPECT_EQ(Checkout((uidStem + "D1001").c_str()), "");
  EXPECT_EQ(trace.lines(), (Traces{Error("Failed to find document id D1001\n"),
                                   Error("Failed to checkout file " + uidStem + "D1001")}));
}

TEST_F(CheckoutFront, ChecksInAndGivesTheUidToGoOnWith) {
  ThenNonce();
  transport.Then(200, R"([{"id":"D1003","epmMaster":{"cadName":"pump.fnl"}}])").Then(200);
  EXPECT_EQ(Checkin(temporaryUid.c_str()), uidStem + "D1003&file=/pump.fnl");
}

TEST_F(CheckoutFront, GivesTheUidThatWentInForACheckinWithoutADocument) {
  ThenNonce();
  transport.Then(200, "[]").Then(200).Then(200, R"({"epmMaster":{"cadName":"pump.fnl"}})");
  EXPECT_EQ(Checkin(temporaryUid.c_str()), temporaryUid + "&file=/pump.fnl");
  EXPECT_EQ(transport.lines().back(), DocumentLine("D1001"));
  transport.Then(200, "[]").Then(200).Then(404);
  EXPECT_EQ(Checkin(temporaryUid.c_str()), "");
  // In a workspace of the user's the id is not empty, however little it names.
  transport.Then(200, "[]");
  EXPECT_EQ(Checkin((uidStem + "D2|W12").c_str()), uidStem + "|W12");
}

TEST_F(CheckoutFront, TracesACheckinThatFailed) {
  ThenNonce();
  transport.Then(409, "stale");
  EXPECT_EQ(Checkin(temporaryUid.c_str()), "");
  EXPECT_EQ(Checkin((uidStem + "D1").c_str()), "");
  EXPECT_EQ(trace.lines(),
            (Traces{Error("Failed to check-in document with error 409 : stale\n"),
                    Error("Failed to check-in document id D1002 on workspace W77\n"),
                    Error("Failed to check-in file " + temporaryUid), Error("Bad id data for checkout D1\n"),
                    Error("Failed to check-in file " + uidStem + "D1")}));
}

TEST_F(CheckoutFront, UndoesAndGivesTheUidToGoOnWith) {
  transport.Then(200, R"([{"id":"D1002"}])");
  ThenNonce();
  transport.Then(200, R"([{"id":"D1001","epmMaster":{"cadName":"pump.fnl"}}])").Then(200);
  EXPECT_EQ(UndoCheckout(temporaryUid.c_str()), uidStem + "D1001&file=/pump.fnl");
}

TEST_F(CheckoutFront, GivesTheUidThatWentInForAnUndoWithoutADocument) {
  transport.Then(200, "[]");
  ThenNonce();
  transport.Then(200).Then(200, "{}").Then(200, R"({"epmMaster":{"cadName":"pump.fnl"}})");
  EXPECT_EQ(UndoCheckout(temporaryUid.c_str()), temporaryUid + "&file=/pump.fnl");
}

TEST_F(CheckoutFront, TracesAnUndoThatFailed) {
  EXPECT_EQ(UndoCheckout((uidStem + "D1").c_str()), "");
  EXPECT_EQ(trace.lines(), (Traces{Error("Bad id data for checkout D1\n"),
                                   Error("Failed to undo checkout of file " + uidStem + "D1")}));
}

TEST_F(CheckoutFront, EndsNothingByPathAndSaysNothing) {
  std::string uid = "before";
  EXPECT_EQ(Checkin(vfsPath), "");
  EXPECT_EQ(UndoCheckout(vfsPath), "");
  EXPECT_EQ(VerifyCheckout(vfsPath, uid), CheckoutStatusFailed);
  EXPECT_EQ(uid, "");
  EXPECT_EQ(VantryEditAttributesURL(vfsPath), "");
  EXPECT_THAT(transport.lines(), IsEmpty());
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(CheckoutFront, OfNoServerGivesNothing) {
  std::string uid = "before";
  EXPECT_EQ(Checkout("nowhere"), "");
  EXPECT_EQ(Checkin("nowhere"), "");
  EXPECT_EQ(UndoCheckout("nowhere"), "");
  EXPECT_EQ(VerifyCheckout("nowhere", uid), CheckoutStatusFailed);
  EXPECT_EQ(trace.lines(), Traces(4, Error("Failed to connect to server path nowhere\n")));
  trace.Clear();
  EXPECT_EQ(GetCheckoutStatus("nowhere", nullptr), CheckoutStatusFailed);
  EXPECT_EQ(trace.lines(), Traces{Miss("Failed to connect to server path nowhere\n")});
  EXPECT_EQ(uid, "");
  trace.Clear();
  EXPECT_EQ(Checkout(nullptr), "");
  EXPECT_EQ(Checkin(nullptr), "");
  EXPECT_EQ(UndoCheckout(nullptr), "");
  EXPECT_EQ(GetCheckoutStatus(nullptr, nullptr), CheckoutStatusFailed);
  uid = "before";
  EXPECT_EQ(VerifyCheckout(nullptr, uid), CheckoutStatusFailed);
  EXPECT_EQ(uid, "");
  EXPECT_THAT(trace.lines(), IsEmpty());
}

struct StateRow {
  const char* id;
  const char* state;
  const char* second;  ///< the answer to the request that tells a working copy
  VtCheckoutStatus status;
};

// The copy of which "D1001" is the original.
constexpr const char* original = R"([{"id":"D1","revision":"B","iteration":"3"}])";
constexpr StateRow stateTable[] = {
    {"D1001", R"("isLatest":true)", "[]", CheckoutNone},
    {"D1001", "", "[]", CheckoutNotPossible},
    {"D1001", R"("isCheckout":true)", "[]", CheckoutByOther},
    {"D1001", R"("isCheckout":true,"isLatest":true)", "[]", CheckoutByOther},
    {"D1001", R"("isCheckout":true,"isCheckoutByYou":true)", original, CheckoutInWorkspace},
    {"D1001", R"("isCheckout":true,"isCheckoutByYou":true)", "[]", CheckoutByUserUnrecorded},
    {"D1|W77|D2|T", R"("isCheckout":true,"isCheckoutByYou":true)", nullptr, CheckoutInTempWorkspace},
    {"D1|W77|D2|T", R"("isCheckout":true)", nullptr, CheckoutByOther},
    {"D1|W77|D2|T", "", nullptr, CheckoutNotPossible},
    {"D1|W77|D2|T", R"("isLatest":true)", nullptr, CheckoutNone},
};

TEST_F(CheckoutFront, MapsEachStateToAStatus) {
  for (const StateRow& row : stateTable) {
    for (int times = 0; times < 2; ++times) {
      transport.Then(200, Document(row.state));
      if (row.second != nullptr) transport.Then(200, row.second);
    }
    std::string user;
    EXPECT_EQ(GetCheckoutStatus((uidStem + row.id).c_str(), nullptr), row.status) << row.id << row.state;
    EXPECT_EQ(GetCheckoutStatus((uidStem + row.id).c_str(), &user), row.status) << row.id << row.state;
  }
  EXPECT_EQ(static_cast<int>(CheckoutNotPossible), 0xA000);
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(CheckoutFront, TellsTheUserOnlyOfACheckout) {
  std::string user = "before";
  transport.Then(200, Document(R"("checkoutByUser":"eve")"));
  (void)GetCheckoutStatus(temporaryUid.c_str(), &user);
  EXPECT_EQ(user, "before");
  transport.Then(200, Document(R"("isCheckout":true,"checkoutByUser":"eve")"));
  (void)GetCheckoutStatus(temporaryUid.c_str(), &user);
  EXPECT_EQ(user, "eve");
}

// The server tells of no checkout of it, and so of nobody who holds it.
TEST_F(CheckoutFront, ADocumentThatWasNeverCheckedInIsCheckedOutByNobodyNamed) {
  const std::string document = Document(R"("isLatest":true)");
  const char* onlyVersion = R"([{"id":"D1001"}])";
  std::string user = "before";
  transport.Then(200, document).Then(200, onlyVersion);
  EXPECT_EQ(GetCheckoutStatus((uidStem + "D1001|W12").c_str(), &user), CheckoutInWorkspace);
  EXPECT_EQ(user, "");
  transport.Then(200, document)
      .Then(200, onlyVersion)
      .Then(200, R"([{"id":"D1001"}])")
      .Then(200, document)
      .Then(200, document)
      .Then(200, onlyVersion);
  std::string uid;
  EXPECT_EQ(VerifyCheckout((uidStem + "D1001|W12").c_str(), uid), CheckoutInWorkspace);
  EXPECT_EQ(uid, uidStem + "D1001|W12&file=/pump.fnl");
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(CheckoutFront, HasNoStatusOfADocumentThatCannotBeRead) {
  transport.Then(404);
  EXPECT_EQ(GetCheckoutStatus((uidStem + "D1").c_str(), nullptr), CheckoutStatusFailed);
  EXPECT_EQ(trace.lines(), Traces{Error("Failed to locate document D1 on server\n")});
}

TEST_F(CheckoutFront, VerifiesWithTheSameStatusAndTracesAnythingButAnIntactCheckout) {
  const std::string uid = uidStem + "D1001";
  struct Row {
    const char* state;
    const char* second;
    VtCheckoutStatus status;
    const char* reason;  ///< null: no trace
  };
  constexpr Row table[] = {
      {R"("isCheckout":true,"isCheckoutByYou":true)", original, CheckoutInWorkspace, nullptr},
      {R"("isCheckout":true,"isCheckoutByYou":true)", "[]", CheckoutByUserUnrecorded,
       " : checkout details differ from records"},
      {R"("isCheckout":true)", "[]", CheckoutByOther, " : file not checked out by user"},
      {R"("isLatest":true)", "[]", CheckoutNone, " : file not checked out"},
      {"", "[]", CheckoutNotPossible, ""},
  };
  for (const Row& row : table) {
    trace.Clear();
    transport.Then(200, Document(row.state)).Then(200, Document(row.state)).Then(200, row.second);
    std::string result;
    EXPECT_EQ(VerifyCheckout(uid.c_str(), result), row.status);
    EXPECT_EQ(result, uid + "&file=/pump.fnl");
    Traces expected;
    if (row.reason != nullptr)
      expected.push_back(Error("Failed to confirm checkout of " + uid + row.reason + "\n"));
    EXPECT_EQ(trace.lines(), expected);
  }
}

TEST_F(CheckoutFront, VerifiesATemporaryCheckout) {
  const std::string state = Document(R"("isCheckout":true,"isCheckoutByYou":true)");
  transport.Then(200, state)
      .Then(200, original)
      .Then(200, R"([{"id":"D1002"}])")
      .Then(200, state)
      .Then(200, state);
  std::string uid = "before";
  EXPECT_EQ(VerifyCheckout(temporaryUid.c_str(), uid), CheckoutInTempWorkspace);
  EXPECT_EQ(uid, temporaryUid + "&file=/pump.fnl");
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(CheckoutFront, EmptiesTheUidOfACheckoutThatCannotBeVerified) {
  transport.Then(404);
  std::string uid = "before";
  EXPECT_EQ(VerifyCheckout((uidStem + "D2|W12").c_str(), uid), CheckoutStatusFailed);
  EXPECT_EQ(uid, "");
  EXPECT_EQ(trace.lines(), Traces{Error("Failed to confirm checkout of " + uidStem + "D2|W12\n")});
}

TEST_F(CheckoutFront, VerifiesACheckoutIntoTheTextThatNamesIt) {
  const std::string document = Document(R"("isLatest":true)");
  transport.Then(200, document).Then(200, document).Then(200, "[]");
  std::string uid = uidStem + "D1001";
  EXPECT_EQ(VerifyCheckout(uid.c_str(), uid), CheckoutNone);
  EXPECT_EQ(uid, uidStem + "D1001&file=/pump.fnl");
}

TEST_F(CheckoutFront, ConvertsACheckoutOfTheOlderForm) {
  const std::string uid = uidStem + "D1&file=/a%7Cb.fnl";
  EXPECT_EQ(ConvertLegacyCheckout(uid.c_str(), "W2|D3"), uidStem + "D1|W2|D3|T&file=/a%7Cb.fnl");
  EXPECT_EQ(ConvertLegacyCheckout(uid.c_str(), "W2|D3|x"), uidStem + "D1|W2|D3|x|T&file=/a%7Cb.fnl");
  EXPECT_EQ(ConvertLegacyCheckout(uid.c_str(), "W2"), uidStem + "&file=/a%7Cb.fnl");
  EXPECT_EQ(ConvertLegacyCheckout(uid.c_str(), "W2|"), uidStem + "&file=/a%7Cb.fnl");
  EXPECT_EQ(ConvertLegacyCheckout(uid.c_str(), "|D3"), uidStem + "&file=/a%7Cb.fnl");
  EXPECT_THAT(transport.lines(), IsEmpty());
}

TEST_F(CheckoutFront, ConvertsNothingWithoutAUidOrACheckout) {
  EXPECT_EQ(ConvertLegacyCheckout(nullptr, "W2|D3"), "");
  EXPECT_EQ(ConvertLegacyCheckout("", "W2|D3"), "");
  EXPECT_EQ(ConvertLegacyCheckout("any", nullptr), "any");
  EXPECT_EQ(ConvertLegacyCheckout("any", ""), "any");
  EXPECT_EQ(ConvertLegacyCheckout("any", "W2|D3"), "any");
  EXPECT_EQ(ConvertLegacyCheckout(uidStem.c_str(), "W2|D3"), uidStem);
  EXPECT_THAT(transport.lines(), IsEmpty());
}

TEST_F(CheckoutFront, GivesThePagesOfADocument) {
  std::string url = "before";
  EXPECT_TRUE(BrowserInfo(temporaryUid.c_str(), url));
  EXPECT_EQ(url, "https://plm.example/vt/app/#zvk1/tcomp/infoPage?oid=D1001");
  url = "before";
  EXPECT_FALSE(BrowserInfo("nowhere", url));
  EXPECT_EQ(url, "before");
  transport.Then(200, Document("")).Then(200, R"([{"id":"W77","name":"mine & yours"}])");
  EXPECT_EQ(VantryEditAttributesURL(temporaryUid.c_str()),
            "https://plm.example/vt/servlet/VantryAuthGW/vn.enterprise.URLProcessor/URLTemplateAction?u8"
            "&action=MULTIEDITATTR&oid=D1001&wsName=mine%20%26%20yours&wscontext=1");
}

}  // namespace
}  // namespace vtdirect_test
