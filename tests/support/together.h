#pragma once

#include <barrier>
#include <functional>
#include <thread>
#include <vector>

namespace vtdirect_test {

/// Runs each action on a thread of its own, all from the same moment on. Gives when all are done.
inline void Together(const std::vector<std::function<void()>>& actions) {
  std::barrier start(static_cast<std::ptrdiff_t>(actions.size()));
  std::vector<std::jthread> threads;
  for (const auto& action : actions) {
    threads.emplace_back([&start, &action] {
      start.arrive_and_wait();
      action();
    });
  }
}

}  // namespace vtdirect_test
