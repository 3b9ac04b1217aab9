#include <gmock/gmock.h>

#include <atomic>

#include "tests/e2e/cli/accident_fixture.h"
#include "tests/e2e/cli/meddler.h"

using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;

namespace vtdirect_test {
namespace {

// A command, and its request that comes late.
struct LateChange {
  const char* name;
  bool isCheckedOut;  // before
  std::vector<std::string> words;
  const char* target;  // a part of it
};

void PrintTo(const LateChange& change, std::ostream* stream) {
  *stream << change.name;
}

const LateChange late[] = {
    {"Checkout", false, {"checkout", forkPath}, "/checkout"},
    {"CheckoutOnBench", false, {"checkout", forkOnBench}, "/checkout"},
    {"Checkin", true, {"checkin", forkPath}, "/checkin"},
    {"CheckinOfWhatWasStored", true, {"put", "f", forkPath, "--checkin"}, "/checkin"},
    {"Create", false, {"put", "f", "//sim/Products/Trekking Bike/Folders/Frame/new.lxz"}, "/dkm/documents"},
    {"Iterate", false, {"put", "f", forkPath}, "/dkm/documents"},
};

}  // namespace

/// A change of which the server gets to know only after the program has given it up and has asked what is there.
class CarriedOutLate : public AccidentTest, public testing::WithParamInterface<LateChange> {
 protected:
  void SetUp() override {
    AccidentTest::SetUp();
    WriteFile(Here("f"), "new content");
    if (GetParam().isCheckedOut) CheckOut(forkPath);
  }

  // Runs the command, then lets the request pass that it has waited for in vain.
  void RunTooEarly() {
    std::atomic<bool> hasEnded = false;
    std::atomic<bool> isDone = false;
    Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
      const bool isMeant = request.method == "POST" && request.target.ends_with(GetParam().target);
      if (!isMeant || isDone) return peer.Send(forward());
      EXPECT_TRUE(WaitUntil([&] { return hasEnded.load(); }));
      static_cast<void>(forward());
      isDone = true;
    });
    environment_["http_proxy"] = meddler.Url();
    std::vector<std::string> words = {"--stall-timeout", "1"};
    words.insert(words.end(), GetParam().words.begin(), GetParam().words.end());
    result_ = Run(words);
    hasEnded = true;
    EXPECT_TRUE(WaitUntil([&] { return isDone.load(); }));
    environment_.erase("http_proxy");
  }
};

INSTANTIATE_TEST_SUITE_P(Of, CarriedOutLate, testing::ValuesIn(late),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(CarriedOutLate, IsNeverSaidToHaveChangedNothingAndIsFoundByRecover) {
  RunTooEarly();
  EXPECT_NE(result_.status, 0);
  EXPECT_THAT(result_.err, Not(HasSubstr("nothing was ")));
  EXPECT_THAT(result_.err, HasSubstr("may still be carried out; \"vtdirect recover\" asks again"));
  EXPECT_NE(OpenEntries(), "");
  ExpectRecovery();
  // The temporary workspace of a checkout that had failed is deleted, and so no late one can come into it.
  if (HolderOf("D1001").empty() && GetParam().words.front() == "checkout") {
    EXPECT_THAT(recovered_.out, HasSubstr("was not checked out"));
    return;
  }
  EXPECT_THAT(recovered_.out,
              AnyOf(HasSubstr("its working copy is"), HasSubstr("has ended"), HasSubstr("f is stored in")));
}

}  // namespace vtdirect_test
