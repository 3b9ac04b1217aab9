// A day's work of a host: all functions in random order from eight threads, while the host changes its
// servers, its settings, its callbacks and its sessions.

#include <atomic>
#include <cstdlib>
#include <iostream>
#include <random>

#include "tests/wire/threads/threaded_host.h"

namespace vtdirect_test {
namespace {

constexpr int threads = 8;
constexpr int stepsOfAThread = 150;
/// One step in so many changes something.
constexpr int stepsOfAWriter = 5;

// The seed of this run: the one that VTDIRECT_TEST_SEED names, else another one each time.
std::uint32_t Seed() {
  const char* named = std::getenv("VTDIRECT_TEST_SEED");
  return named != nullptr ? static_cast<std::uint32_t>(std::strtoul(named, nullptr, 10))
                          : std::random_device()();
}

struct Step {
  std::string name;
  std::function<bool()> run;
};

std::vector<Step> StepsOf(Generation generation) {
  std::vector<Step> steps;
  for (const auto& [key, call] : CountedCalls()) {
    if (call.needsOData && generation == Generation::Gateway) continue;
    steps.push_back({key.first + " of " + key.second, call.run});
  }
  for (const SilentQuestion& question : SilentQuestions()) {
    steps.push_back({question.function, question.isAnswered});
  }
  return steps;
}

// The steps of one thread, drawn from a seed of its own; gives the names of those that gave a wrong answer.
std::vector<std::string> Work(const std::vector<Step>& steps, std::uint32_t seed) {
  std::mt19937 random(seed);
  const auto draw = [&random](std::size_t count) {
    return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
  };
  std::vector<std::string> wrong;
  for (int number = 0; number < stepsOfAThread; ++number) {
    if (draw(stepsOfAWriter) == 0) {
      Writers()[draw(Writers().size())].write();
      continue;
    }
    const Step& step = steps[draw(steps.size())];
    if (!step.run()) wrong.push_back(step.name);
  }
  return wrong;
}

class DayOfAHost : public testing::TestWithParam<Generation> {};

TEST_P(DayOfAHost, GivesEveryThreadTheRightAnswers) {
  const std::uint32_t seed = Seed();
  std::cout << "VTDIRECT_TEST_SEED=" << seed << std::endl;
  const ThreadedHost host(GetParam());
  // The one handle and the one folder of a walk that all threads read are opened before they start.
  CountedCalls().at({"ReadDir", "handle of a folder"}).prepare();
  CountedCalls().at({"ReadWalkedDir", "folder that a walk comes to"}).prepare();
  const std::vector<Step> steps = StepsOf(GetParam());
  std::vector<std::vector<std::string>> wrong(threads);
  std::vector<std::function<void()>> actions;
  for (std::size_t thread = 0; thread < wrong.size(); ++thread) {
    actions.emplace_back(
        [&, thread] { wrong[thread] = Work(steps, seed + static_cast<std::uint32_t>(thread)); });
  }
  Together(actions);
  for (const auto& names : wrong) EXPECT_THAT(names, testing::IsEmpty()) << "VTDIRECT_TEST_SEED=" << seed;
}

INSTANTIATE_TEST_SUITE_P(OnEachGeneration, DayOfAHost,
                         testing::Values(Generation::Gateway, Generation::Schema1, Generation::Schema4,
                                         Generation::Schema5),
                         [](const auto& test) {
                           return "Generation" + std::to_string(static_cast<int>(test.param));
                         });

}  // namespace
}  // namespace vtdirect_test
