#include "public/host_callbacks.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "public/vt_direct_manager.h"

namespace {

using namespace VtDirectManager;
using namespace lxservices::cms_interface;

std::vector<std::function<void()>> queue;
std::string askedFor;

bool Enqueue(std::function<void()> task) {
  queue.push_back(std::move(task));
  return true;
}

bool Refuse(std::function<void()>) {
  return false;
}

bool Allow(const char* url) {
  askedFor = url;
  return true;
}

bool Deny(const char*) {
  return false;
}

TEST(TaskRunning, FinishesTheTaskWithinTheCallWithoutARunner) {
  int runs = 0;
  EXPECT_TRUE(RunTask([&runs] { ++runs; }));
  EXPECT_EQ(runs, 1);
}

TEST(TaskRunning, HandsTheTaskToTheRunnerWhichRunsItWhenItLikes) {
  RegisterTaskRunner(Enqueue);
  int runs = 0;
  EXPECT_TRUE(RunTask([&runs] { ++runs; }));
  EXPECT_EQ(runs, 0);
  ASSERT_EQ(queue.size(), 1u);
  queue.front()();
  EXPECT_EQ(runs, 1);
}

TEST(TaskRunning, GivesTheRunnersResult) {
  RegisterTaskRunner(Refuse);
  int runs = 0;
  EXPECT_FALSE(RunTask([&runs] { ++runs; }));
  EXPECT_EQ(runs, 0);
}

TEST(TaskRunning, GoesBackToTheCallersThreadForANullRunner) {
  RegisterTaskRunner(Refuse);
  RegisterTaskRunner(nullptr);
  int runs = 0;
  EXPECT_TRUE(RunTask([&runs] { ++runs; }));
  EXPECT_EQ(runs, 1);
}

TEST(TaskRunning, RaisesForAnEmptyTaskWithoutARunner) {
  EXPECT_THROW((void)RunTask({}), std::bad_function_call);
}

TEST(TaskRunning, HandsEvenAnEmptyTaskToARunner) {
  RegisterTaskRunner(Enqueue);
  EXPECT_TRUE(RunTask({}));
  EXPECT_EQ(queue.size(), 1u);
}

TEST(AuthForwarding, SaysNoWithoutACallback) {
  EXPECT_FALSE(ForwardAuth("https://plm.example"));
}

TEST(AuthForwarding, AsksTheCallbackOfTheMoment) {
  RegisterAuth(Allow);
  EXPECT_TRUE(ForwardAuth("https://plm.example"));
  EXPECT_EQ(askedFor, "https://plm.example");
  RegisterAuth(Deny);
  EXPECT_FALSE(ForwardAuth("https://plm.example"));
  RegisterAuth(nullptr);
  EXPECT_FALSE(ForwardAuth("https://plm.example"));
}

}  // namespace
