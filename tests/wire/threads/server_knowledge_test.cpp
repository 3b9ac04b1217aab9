// The record of what is known of a server, read and written by several threads with nothing else between
// them.

#include "connection/server_knowledge.h"

#include <atomic>

#include "tests/support/together.h"

#include <gtest/gtest.h>

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface::vantry;

constexpr int rounds = 2000;

std::function<void()> Often(const std::function<void()>& action) {
  return [action] {
    for (int round = 0; round < rounds; ++round) action();
  };
}

// Texts that are too long to be written at one stroke.
const std::string one(60, 'a');
const std::string other(90, 'b');
bool IsWhole(const std::string& text) {
  return text.empty() || text == one || text == other;
}

class Knowledge : public testing::Test {
 protected:
  ~Knowledge() override { EXPECT_EQ(wrong, 0); }
  // Touches nothing that the threads share as long as all is well: that would put them into an order.
  void Expect(bool right) {
    if (!right) ++wrong;
  }

  ServerKnowledge knowledge;
  std::atomic<int> wrong = 0;
};

TEST_F(Knowledge, GivesAWholeNonceLine) {
  const auto learn = [&](const std::string& line) {
    return Often([this, &line] { Expect(IsWhole(knowledge.LearnNonceLine(line))); });
  };
  Together({learn(one), learn(other), learn(""), Often([&] { Expect(IsWhole(knowledge.NonceLine())); })});
  EXPECT_NE(knowledge.NonceLine(), "");
}

TEST_F(Knowledge, GivesAWholeVersion) {
  Together({Often([&] { knowledge.LearnAuthAppVersion(one); }),
            Often([&] { knowledge.LearnAuthAppVersion(other); }),
            Often([&] { Expect(IsWhole(knowledge.AuthAppVersion())); })});
}

TEST_F(Knowledge, GivesWholeGroupsOfServices) {
  // A server with all services, and one that could not be asked.
  const ServiceFlags all{true, true, true, true, true, true, true, true, true};
  const auto isWhole = [](const ServiceFlags& flags) {
    return flags.dataAdminChecked == flags.dataAdminPresent &&
           flags.dataAdminChecked == flags.folderContents && flags.dataAdminChecked == flags.dataAdminV5 &&
           flags.dynamicDocChecked == flags.dynamicDocPresent &&
           flags.dynamicDocChecked == flags.dynamicDocV2 && flags.cadDocChecked == flags.cadDocPresent;
  };
  Together({Often([&] { knowledge.LearnServices(ServiceFlags()); }),
            Often([&] { knowledge.LearnServices(all); }),
            Often([&] { Expect(isWhole(knowledge.Services())); })});
  EXPECT_EQ(knowledge.Services(), all);
}

TEST_F(Knowledge, LosesNoYesOfFeatures) {
  const ServerFeatures yes{true, true};
  const auto isWhole = [](const std::optional<ServerFeatures>& features) {
    return !features || features->separatedSources == features->vcsInfo;
  };
  Together({Often([&] { knowledge.LearnFeatures({}); }),
            Often([&] { Expect(knowledge.LearnFeatures(yes) == yes); }),
            Often([&] { Expect(isWhole(knowledge.Features())); })});
  EXPECT_EQ(knowledge.Features(), yes);
}

TEST_F(Knowledge, LosesNoYesOfTranslation) {
  Together({Often([&] { knowledge.LearnTranslates(false); }),
            Often([&] { Expect(knowledge.LearnTranslates(true)); }),
            Often([&] { (void)knowledge.Translates(); })});
  EXPECT_EQ(knowledge.Translates(), true);
}

TEST_F(Knowledge, IsNothingAtFirst) {
  EXPECT_EQ(knowledge.NonceLine(), "");
  EXPECT_EQ(knowledge.AuthAppVersion(), "");
  EXPECT_EQ(knowledge.Services(), ServiceFlags());
  EXPECT_FALSE(knowledge.Features());
  EXPECT_FALSE(knowledge.Translates());
}

// A failed question for the features is an answer: a server that failed once is not asked again.
TEST_F(Knowledge, OfAFailureIsANo) {
  knowledge.LearnFeatures({});
  knowledge.LearnTranslates(false);
  EXPECT_EQ(knowledge.Features(), ServerFeatures());
  EXPECT_EQ(knowledge.Translates(), false);
}

}  // namespace
}  // namespace vtdirect_test
