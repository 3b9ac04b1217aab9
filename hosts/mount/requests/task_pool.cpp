#include "hosts/mount/requests/task_pool.h"

#include <utility>

namespace vtdirect_mount {

void TaskPool::Add(Task task, std::deque<Task>& queue) {
  const std::lock_guard lock(mutex_);
  if (isStopped_) return;
  queue.push_back(std::move(task));
  if (idle_ < waiting_.size() + later_.size() && threads_.size() < mostThreads_) {
    threads_.emplace_back([this] { Work(); });
  }
  hasWork_.notify_one();
}

void TaskPool::Work() {
  std::unique_lock lock(mutex_);
  while (true) {
    ++idle_;
    hasWork_.wait(lock, [this] { return isStopped_ || !waiting_.empty() || !later_.empty(); });
    --idle_;
    if (isStopped_) return;
    std::deque<Task>& queue = waiting_.empty() ? later_ : waiting_;
    Task task = std::move(queue.front());
    queue.pop_front();
    ++busy_;
    lock.unlock();
    task();
    task = nullptr;  // what it holds goes before the lock is taken
    lock.lock();
    if (--busy_ == 0) isQuiet_.notify_all();
  }
}

void TaskPool::DropTasks() {
  std::deque<Task> dropped;
  std::deque<Task> alsoDropped;
  {
    const std::lock_guard lock(mutex_);
    isStopped_ = true;
    dropped.swap(waiting_);
    alsoDropped.swap(later_);
  }
  hasWork_.notify_all();
}

void TaskPool::Stop() {
  DropTasks();
  std::vector<std::thread> threads;
  {
    const std::lock_guard lock(mutex_);
    threads.swap(threads_);
  }
  for (std::thread& thread : threads) thread.join();
}

bool TaskPool::StopWithin(std::chrono::milliseconds most) {
  DropTasks();
  std::unique_lock lock(mutex_);
  return isQuiet_.wait_for(lock, most, [this] { return busy_ == 0; });
}

}  // namespace vtdirect_mount
