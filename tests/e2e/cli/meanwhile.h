#pragma once

#include <atomic>
#include <functional>
#include <thread>

namespace vtdirect_test {

/// Lets a function run all the while that a program does.
class Meanwhile {
 public:
  explicit Meanwhile(std::function<void()> step)
      : thread_([this, step = std::move(step)] {
          while (!done_) step();
        }) {}
  ~Meanwhile() {
    done_ = true;
    thread_.join();
  }

 private:
  std::atomic<bool> done_{false};
  std::thread thread_;
};

}  // namespace vtdirect_test
