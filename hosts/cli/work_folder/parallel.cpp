#include "hosts/cli/work_folder/parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

#include "hosts/cli/program/interruption.h"

namespace vtdirect_cli {
namespace {

class Run {
 public:
  Run(std::size_t count, const std::function<void(std::size_t)>& task) : count_(count), task_(task) {}

  // Works until there is nothing left to begin.
  void Work() {
    for (;;) {
      const std::size_t number = next_++;
      if (number >= count_ || Interrupted()) return;
      try {
        task_(number);
      } catch (...) {
        const std::lock_guard lock(mutex_);
        if (!thrown_) thrown_ = std::current_exception();
        next_ = count_;
      }
    }
  }

  void ThrowWhatWasThrown() const {
    if (thrown_) std::rethrow_exception(thrown_);
  }

 private:
  std::size_t count_;
  const std::function<void(std::size_t)>& task_;
  std::atomic<std::size_t> next_{1};
  std::mutex mutex_;
  std::exception_ptr thrown_;
};

}  // namespace

void RunInParallel(std::size_t count, unsigned threads, const std::function<void(std::size_t)>& task) {
  if (count == 0 || Interrupted()) return;
  task(0);
  Run run(count, task);
  {
    std::vector<std::jthread> workers;
    const std::size_t wanted = std::min<std::size_t>(threads, count - 1);
    for (std::size_t number = 1; number < wanted; ++number) workers.emplace_back([&run] { run.Work(); });
    run.Work();
  }
  run.ThrowWhatWasThrown();
}

}  // namespace vtdirect_cli
