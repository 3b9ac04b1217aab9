#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <optional>
#include <thread>

#include "platform_default/exchange_places.h"
#include "platform_default/first_exchange.h"

namespace {

using testing::ElementsAre;
using vtdirect::platform::ExchangePlaces;
using vtdirect::platform::FirstExchange;

constexpr auto now = [] { return std::chrono::steady_clock::now(); };

TEST(ExchangePlaces, AreGivenInTheOrderOfArrival) {
  ExchangePlaces places;
  std::optional<ExchangePlaces::Place> taken;
  taken.emplace(places, 1, true);
  std::mutex mutex;
  std::vector<int> order;
  std::vector<std::thread> threads;
  for (std::size_t number = 1; number <= 5; ++number) {
    threads.emplace_back([&, number] {
      const ExchangePlaces::Place place(places, 1, true);
      const std::lock_guard lock(mutex);
      order.push_back(static_cast<int>(number));
    });
    while (places.Waiting() < number) std::this_thread::yield();
  }
  taken.reset();
  for (std::thread& thread : threads) thread.join();
  EXPECT_THAT(order, ElementsAre(1, 2, 3, 4, 5));
}

TEST(ExchangePlaces, AreThereForWhoeverMayNotWait) {
  ExchangePlaces places;
  const ExchangePlaces::Place first(places, 1, true);
  const ExchangePlaces::Place second(places, 1, false);
  EXPECT_EQ(places.Waiting(), 0u);
}

TEST(ExchangePlaces, AboveTheBoundComeFreeForNobody) {
  ExchangePlaces places;
  std::optional<ExchangePlaces::Place> first;
  first.emplace(places, 1, true);
  std::optional<ExchangePlaces::Place> above;
  above.emplace(places, 1, false);
  std::thread waiter([&] { const ExchangePlaces::Place place(places, 1, true); });
  while (places.Waiting() < 1) std::this_thread::yield();
  above.reset();
  EXPECT_EQ(places.Waiting(), 1u);
  first.reset();
  waiter.join();
}

TEST(FirstExchange, IsWaitedForNoLongerThanItsDeadline) {
  FirstExchange exchange;
  const int first = 0;
  const int second = 0;
  exchange.Enter(&first, true, now());
  // Comes back, although the first one has neither an answer nor gone.
  exchange.Enter(&second, true, now() + std::chrono::milliseconds(10));
  // It went ahead without going first: its answer opens nothing.
  exchange.Answered(&second);
  exchange.Leave(&second);
  exchange.Leave(&first);
}

TEST(FirstExchange, MayBeEnteredAgainByWhoGoesFirst) {
  FirstExchange exchange;
  const int first = 0;
  const auto never = now() + std::chrono::hours(1);
  exchange.Enter(&first, true, never);
  exchange.Enter(&first, true, never);
  exchange.Answered(&first);
  const int second = 0;
  exchange.Enter(&second, true, never);
}

TEST(FirstExchange, IsNoLongerWaitedForOnceItsSessionHasEnded) {
  FirstExchange exchange;
  const int first = 0;
  const int second = 0;
  exchange.Enter(&first, true, now());
  exchange.Open();
  exchange.Enter(&second, true, now() + std::chrono::hours(1));
}

}  // namespace
